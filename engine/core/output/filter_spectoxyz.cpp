#include <algorithm>
#include <array>
#include <cmath>

#include "engine/core/data/tables.h"
#include "engine/core/output/filters.h"
#include "engine/core/result/in_strips.h"

namespace nemra::core {

namespace {

constexpr double kLuminousEfficacy = 683.0;  // lm/W at 540 THz, SI brochure, 9th ed. (2019)
constexpr double kNanometre = 1.0e-9;

const bool kKnown = filterClasses().add("spectoxyz", filterSpecToXyz);

/// Index of the channel of that name, or -1.
int channelNamed(const Film& film, std::string_view name) {
    const auto found = std::find_if(film.channels.begin(), film.channels.end(), [&](const Channel& c) { return c.name == name; });
    return found == film.channels.end() ? -1 : static_cast<int>(found - film.channels.begin());
}

using Weights = std::vector<std::array<double, 3>>;  ///< per channel, X Y Z of one unit of it

/// Integral of a matching function over a band, with the function linear between the table's rows (1 nm apart) and zero outside.
std::array<double, 3> integrate(const double (*table)[3], double fromNm, double toNm) {
    std::array<double, 3> sum{};
    const double first = std::max(fromNm, double(data::kObserverFirst));
    const double last = std::min(toNm, double(data::kObserverFirst + data::kObserverCount - 1));
    for (double a = first; a < last;) {
        const int row = std::min(static_cast<int>(std::floor(a)) - data::kObserverFirst, data::kObserverCount - 2);
        const double b = std::min(last, std::floor(a) + 1.0);
        const double middle = (a + b) / 2.0 - data::kObserverFirst - row;  // the mean of a straight line is its middle
        for (std::size_t c = 0; c < 3; ++c) sum[c] += (b - a) * ((1.0 - middle) * table[row][c] + middle * table[row + 1][c]);
        a = b;
    }
    return sum;
}

/// Of a sensor without bands and without X, Y, Z: the channel Y or E; else the first three responses, or the first one.
std::vector<std::size_t> channelsOfAPicture(const Film& film) {
    std::vector<std::size_t> responses;
    for (std::size_t i = 0; i < film.channels.size(); ++i) {
        const ChannelKind kind = film.channels[i].kind;
        if (kind == ChannelKind::spectral) return {};
        if (kind != ChannelKind::unknown) responses.push_back(i);
    }
    const int reference = referenceChannel(film);
    if (reference >= 0 && film.channels[std::size_t(reference)].kind != ChannelKind::unknown) return {std::size_t(reference)};
    if (responses.size() > 1) responses.resize(responses.size() < 3 ? 1 : 3);
    return responses;
}

Weights weightsOf(const Film& film, std::string_view observer) {
    const double(*table)[3] = observer == "cie1964_10deg" ? data::kCie1964 : data::kCie1931;
    Weights weights(film.channels.size());
    const int x = channelNamed(film, "X");
    const int y = channelNamed(film, "Y");
    const int z = channelNamed(film, "Z");
    if (x >= 0 && y >= 0 && z >= 0) {
        weights[std::size_t(x)] = {1, 0, 0};
        weights[std::size_t(y)] = {0, 1, 0};
        weights[std::size_t(z)] = {0, 0, 1};
        return weights;
    }
    const std::vector<std::size_t> plain = channelsOfAPicture(film);
    for (std::size_t i = 0; i < plain.size(); ++i) {
        // A grey of one channel; three stand for X, Y and Z.
        if (plain.size() == 1) weights[plain[0]] = {0.3127 / 0.3290, 1.0, (1.0 - 0.3127 - 0.3290) / 0.3290};
        if (plain.size() == 3) weights[plain[i]][i] = 1.0;
    }
    for (std::size_t i = 0; i < film.channels.size(); ++i) {
        const Channel& channel = film.channels[i];
        if (channel.kind == ChannelKind::spectral) {
            // A value is the mean spectral radiance of the band, so it goes with the integral over the band.
            const double centre = channel.wavelength / kNanometre;
            const double width = channel.bandwidth / kNanometre;
            weights[i] = integrate(table, centre - width / 2.0, centre + width / 2.0);
            for (double& weight : weights[i]) weight *= kLuminousEfficacy;
        }
    }
    return weights;
}

}  // namespace

XyzImage toXyz(const Film& film, const LightView& view, std::string_view observer) {
    XyzImage image{view.width, view.height, {}};
    const std::size_t channels = film.channels.size();
    image.values.resize(3 * static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.height));
    const Weights weights = weightsOf(film, observer);
    forEachOnAllCores(view.width, view.height, [&](int x, int y) {
        const double* const values = view.values.data() + film.pixel(x, y) * channels;
        std::array<double, 3> xyz{};
        for (std::size_t i = 0; i < channels; ++i) {
            for (std::size_t c = 0; c < 3; ++c) xyz[c] += weights[i][c] * values[i];
        }
        float* const out =
            image.values.data() + 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(view.width) + std::size_t(x));
        for (std::size_t c = 0; c < 3; ++c) out[c] = static_cast<float>(xyz[c]);
    });
    return image;
}

void filterSpecToXyz(const node::Node& node, Picture& picture) {
    picture.image = toXyz(picture.film, picture.view, node.choice("observer"));
}

}  // namespace nemra::core
