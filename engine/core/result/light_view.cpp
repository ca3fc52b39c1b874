#include "engine/core/result/light_view.h"

#include <algorithm>
#include <cmath>

namespace nemra::core {

double LightView::quantityOf(double value, std::size_t pixel, int quantity) const noexcept {
    if (static_cast<unsigned>(quantity) >= static_cast<unsigned>(kQuantityCount)) return 0.0;
    const double scaled = value * factors[static_cast<std::size_t>(quantity)];
    const bool onSensor = quantity == NEMRA_QUANTITY_SENSOR_IRRADIANCE || quantity == NEMRA_QUANTITY_SENSOR_POWER ||
                          quantity == NEMRA_QUANTITY_SENSOR_EXPOSURE;
    return onSensor && !offAxis.empty() ? scaled * static_cast<double>(offAxis[pixel]) : scaled;
}

int referenceChannel(const Film& film) noexcept {
    for (const char* const name : {"Y", "E"}) {
        const auto found =
            std::find_if(film.channels.begin(), film.channels.end(), [&](const Channel& c) { return c.name == name; });
        if (found != film.channels.end()) return static_cast<int>(found - film.channels.begin());
    }
    return -1;
}

LightView makeLightView(const Film& film, bool withSnr) {
    LightView view;
    view.width = film.width;
    view.height = film.height;
    view.channels = static_cast<int>(film.channels.size());
    const std::size_t pixels = static_cast<std::size_t>(film.width) * static_cast<std::size_t>(film.height);
    const std::size_t channels = film.channels.size();

    view.values.resize(pixels * channels);
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
        const double samples = film.samples[pixel];
        for (std::size_t cell = pixel * channels; cell < (pixel + 1) * channels; ++cell) {
            view.values[cell] = samples > 0.0 ? (film.high[cell] + film.low[cell]) / samples : 0.0;
        }
    }
    if (channels == 0) return view;  // the channels were removed, and with them what was derived from them

    view.metaChannels = withSnr ? 4 : 3;
    for (int i = 0; i < view.metaChannels; ++i) view.meta[static_cast<std::size_t>(i)].resize(pixels);
    const int reference = referenceChannel(film);
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
        const double samples = film.samples[pixel];
        double mean = 0.0;
        if (reference >= 0) {
            mean = view.values[pixel * channels + static_cast<std::size_t>(reference)];
        } else {
            for (std::size_t c = 0; c < channels; ++c) mean += view.values[pixel * channels + c];
            mean /= static_cast<double>(channels);
        }
        const double variance =
            samples > 1.0 ? std::max(0.0, (total(film.squares.at(pixel)) - samples * mean * mean) / (samples - 1.0)) : 0.0;
        const double hits = film.depthSamples[pixel];
        view.meta[0][pixel] = variance;
        view.meta[1][pixel] = samples;
        view.meta[2][pixel] = hits > 0.0 ? film.depth[pixel] / hits : 0.0;
        if (withSnr) view.meta[3][pixel] = variance > 0.0 ? mean / std::sqrt(variance / samples) : 0.0;
    }
    return view;
}

}  // namespace nemra::core
