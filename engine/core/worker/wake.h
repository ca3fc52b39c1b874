/// Wakes a thread that waits on a network.
#pragma once

namespace nemra::core::worker {

/// An eventfd. Any thread may call wake().
class Wake {
public:
    /// Throws std::system_error.
    Wake();
    ~Wake();
    Wake(const Wake&) = delete;
    Wake& operator=(const Wake&) = delete;

    int descriptor() const noexcept { return descriptor_; }
    void wake() const noexcept;
    void clear() const noexcept;

private:
    const int descriptor_;
};

}  // namespace nemra::core::worker
