#include "engine/core/output/spectral_weights.h"

#include <algorithm>

namespace nemra::core {

bool hasSpectralChannels(const Film& film) {
    return std::any_of(film.channels.begin(), film.channels.end(),
                       [](const Channel& channel) { return channel.kind == ChannelKind::spectral; });
}

std::vector<double> bandWeights(const Film& film, const SpectralCurve& response) {
    std::vector<double> weights;
    for (const Channel& channel : film.channels) {
        const double centre = channel.wavelength * 1.0e9;
        const double half = 0.5 * channel.bandwidth * 1.0e9;
        weights.push_back(channel.kind == ChannelKind::spectral ? integrate(response, centre - half, centre + half) : 0.0);
    }
    return weights;
}

std::vector<float> weighedSum(const Film& film, const LightView& view, const std::vector<double>& weights) {
    const std::size_t channels = film.channels.size();
    std::vector<float> sums(static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.height));
    for (int x = 0; x < view.width; ++x) {
        for (int y = 0; y < view.height; ++y) {
            const double* const values = view.values.data() + film.pixel(x, y) * channels;
            double sum = 0.0;
            for (std::size_t c = 0; c < channels; ++c) sum += weights[c] * values[c];
            sums[static_cast<std::size_t>(y) * static_cast<std::size_t>(view.width) + std::size_t(x)] = static_cast<float>(sum);
        }
    }
    return sums;
}

}  // namespace nemra::core
