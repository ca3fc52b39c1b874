/// The numbers of a result as its readers walk them.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "engine/core/film/film.h"
#include "module/flat/nemra_types.h"

namespace nemra::core {

inline constexpr int kQuantityCount = 7;  ///< enumerators of nemra_quantity_t

/// What a result has beside its sensor's channels, per pixel. They come behind the channels in this order.
enum class MetaChannel {
    variance,  ///< sample variance (n - 1) of luminance, energy or band mean, in its unit squared; 0 with fewer than two samples.
               ///< The standard error of a pixel is sqrt(variance / spp).
    spp,       ///< samples of the pixel
    depth,     ///< m, mean distance from the camera to the first surface over the samples that met one; 0 if none did
    snr        ///< mean over its standard error; 0 where the standard error is 0. Made on demand.
};
inline constexpr int kMetaChannelCount = 4;
inline constexpr std::array<const char*, kMetaChannelCount> kMetaChannelNames{"variance", "spp", "depth", "snr"};

/// Means per pixel and channel in the order in which `pixels` walks them: x, then y, then channel. Immutable once made.
struct LightView {
    int width = 0;
    int height = 0;
    int channels = 0;
    int metaChannels = 0;
    PagedVector<double> values;                    ///< like those of `meta`, pageable if the film is
    std::array<double, kQuantityCount> factors{};  ///< a quantity is value times factor (times offAxis); 0: not provided
    std::vector<float> offAxis;                    ///< per pixel, for the sensor's quantities; empty counts as 1
    std::array<PagedVector<double>, kMetaChannelCount> meta;

    /// 0 out of bounds and for a quantity that isn't provided. Meta channels have no quantities: they answer the same to each.
    double at(int channel, int x, int y, int quantity) const noexcept {
        if (static_cast<unsigned>(x) >= static_cast<unsigned>(width) ||
            static_cast<unsigned>(y) >= static_cast<unsigned>(height)) {
            return 0.0;
        }
        const std::size_t pixel = static_cast<std::size_t>(x) * static_cast<std::size_t>(height) + static_cast<std::size_t>(y);
        if (static_cast<unsigned>(channel) < static_cast<unsigned>(channels)) [[likely]] {
            const double value = values[pixel * static_cast<std::size_t>(channels) + static_cast<std::size_t>(channel)];
            if (quantity == NEMRA_QUANTITY_RAW) [[likely]]
                return value;
            return quantityOf(value, pixel, quantity);
        }
        const unsigned metaIndex = static_cast<unsigned>(channel) - static_cast<unsigned>(channels);
        return channel >= 0 && metaIndex < static_cast<unsigned>(metaChannels) ? meta[metaIndex][pixel] : 0.0;
    }

private:
    double quantityOf(double value, std::size_t pixel, int quantity) const noexcept;
};

/// `withSnr` adds the meta channel snr.
LightView makeLightView(const Film& film, bool withSnr);

/// The channel that stands for a pixel where one number is asked for: "Y", else "E", else -1 for the mean over the channels.
int referenceChannel(const Film& film) noexcept;

}  // namespace nemra::core
