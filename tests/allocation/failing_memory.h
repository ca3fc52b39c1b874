/// Memory that runs out once, at a chosen allocation.
#pragma once

namespace nemra::test {

/// Whose allocations are counted: this thread's, or those of the whole process.
enum class Counted { here, everywhere };

/// While it lives, the n-th allocation from its beginning fails, and no other.
class FailingMemory {
public:
    FailingMemory(Counted counted, long n) noexcept;
    ~FailingMemory() { end(); }
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    /// True if it came to that.
    bool end() noexcept;

private:
    Counted counted_;
};

}  // namespace nemra::test
