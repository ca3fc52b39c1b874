/// Results of pieces, one behind the other, as a worker sends them. Messages are cut from the stream without regard to where a
/// result ends, so that small ones share a message and large ones take several.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>

#include "engine/common/byte_reader.h"

namespace nemra::core::worker {

struct ResultHead {
    std::uint64_t id = 0;
    std::uint64_t samples = 0;
    std::uint64_t wrong = 0;
    std::uint64_t size = 0;  ///< bytes that follow
};

inline void appendResult(std::string& stream, const ResultHead& head, std::span<const char> bytes) {
    for (const std::uint64_t number : {head.id, head.samples, head.wrong, head.size}) appendNumber(stream, number);
    stream.append(bytes.data(), bytes.size());
}

/// The receiving end. Keeps no more than what has come and isn't taken yet.
class ResultStream {
public:
    void append(std::span<const char> bytes) {
        if (taken_ > 0) bytes_.erase(0, taken_);
        taken_ = 0;
        bytes_.append(bytes.data(), bytes.size());
    }
    /// Of the next result, as soon as its head is there.
    std::optional<ResultHead> head() const {
        ByteReader reader(rest());
        ResultHead head;
        for (std::uint64_t* const number : {&head.id, &head.samples, &head.wrong, &head.size})
            *number = reader.value<std::uint64_t>();
        return reader.ok() ? std::optional(head) : std::nullopt;
    }
    /// The bytes of the result with that head, once they are all there; they stay until the next append().
    std::optional<std::span<const char>> take(const ResultHead& head) {
        const auto bytes = rest();
        if (bytes.size() < kHeadBytes || bytes.size() - kHeadBytes < head.size) return std::nullopt;
        taken_ += kHeadBytes + static_cast<std::size_t>(head.size);
        return bytes.subspan(kHeadBytes, static_cast<std::size_t>(head.size));
    }

private:
    static constexpr std::size_t kHeadBytes = 4 * sizeof(std::uint64_t);
    std::span<const char> rest() const { return std::span<const char>(bytes_).subspan(taken_); }

    std::string bytes_;
    std::size_t taken_ = 0;
};

}  // namespace nemra::core::worker
