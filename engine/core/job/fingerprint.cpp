#include "engine/core/job/fingerprint.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "engine/core/api/version.h"

namespace nemra::core {

namespace {

/// Multiplying carries digits upwards, the shift brings them down again. Each step can be undone, so that texts which differ in
/// one word never meet.
class Mix {
public:
    void word(std::uint64_t word) noexcept {
        state_ = (state_ ^ word) * 0x9E3779B97F4A7C15U;  // 2^64 over the golden ratio
        state_ ^= state_ >> 29;
    }
    void text(std::string_view text) noexcept {
        word(text.size());
        for (std::size_t at = 0; at < text.size(); at += sizeof(std::uint64_t)) {
            std::uint64_t next = 0;
            std::memcpy(&next, text.data() + at, std::min(sizeof next, text.size() - at));
            word(next);
        }
    }
    std::uint64_t value() const noexcept { return std::max<std::uint64_t>(1, state_); }

private:
    std::uint64_t state_ = 0;
};

}  // namespace

std::uint64_t fingerprintOf(const SceneContent& content, const std::string& setup) {
    Mix mix;
    mix.text(kVersionText);
    mix.text(setup);
    mix.text(content.scene.text());
    mix.text(content.library.text());
    return mix.value();
}

}  // namespace nemra::core
