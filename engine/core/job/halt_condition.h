/// When a render has enough samples, and what happens then.
#pragma once

#include <cmath>
#include <cstdint>

#include "module/flat/nemra_types.h"

namespace nemra::core {

/// Time and samples per pixel may both be set: the one reached first counts. Zero, a negative number and NaN switch one off.
struct HaltCondition {
    double time = 0.0;  ///< s of rendering, pauses left out
    double spp = 0.0;   ///< samples per pixel; a fraction is rounded up, since a pixel takes whole samples
    nemra_renderer_halt_cond_t action = NEMRA_HALT_STOPS;

    bool hasTime() const noexcept { return time > 0.0; }
    bool hasSpp() const noexcept { return spp > 0.0; }

    /// Sample index at which the schedule ends; kEndOfSamples if the condition has none.
    static constexpr std::uint32_t kEndOfSamples = 0xFFFFFF00U;
    std::uint32_t sampleLimit() const noexcept {
        if (!hasSpp() || spp >= static_cast<double>(kEndOfSamples)) return kEndOfSamples;
        return static_cast<std::uint32_t>(std::ceil(spp));
    }
};

}  // namespace nemra::core
