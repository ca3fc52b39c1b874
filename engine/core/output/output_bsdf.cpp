// The scattering of a sample as a table: directions of the light in columns, outgoing directions in rows, as the result has them.
#include <array>
#include <stdexcept>

#include "engine/core/data/tables.h"
#include "engine/core/output/channel_values.h"
#include "engine/core/output/csv.h"
#include "engine/core/output/document.h"
#include "engine/core/output/spectral_weights.h"
#include "engine/core/output/write_result.h"
#include "engine/core/spectrum/observer.h"
#include "engine/core/spectrum/samples.h"

namespace nemra::core {
namespace {

/// Mean of the spectral channels, weighed with that curve. Throws std::runtime_error with `none` if it is 0 in all bands.
std::vector<float> weighedMean(const Raw& raw, const SpectralCurve& curve, const char* none) {
    const auto film = raw.film();
    const auto view = raw.view();
    std::vector<double> weights = bandWeights(*film, curve);
    double sum = 0.0;
    for (const double weight : weights) sum += weight;
    if (!(sum > 0.0)) throw std::runtime_error(none);
    for (double& weight : weights) weight /= sum;
    return weighedSum(*film, *view, weights);
}

/// The luminous efficiency function times the illuminant.
SpectralCurve photopicCurve(const node::Node& output) {
    const node::Scene scene;
    Libraries libraries{std::vector<std::string>{}};
    Translation translation(scene, &libraries);
    const SpectralCurve illuminant = makeSpectrum(output.child("illuminant"), translation);
    const SpectralCurve efficiency = matchingFunction(Observer::cie1931, 1);
    return {[illuminant, efficiency](double nm) { return illuminant(nm) * efficiency(nm); }, efficiency.knots};
}

/// Direct light of the sun, W/(m2 nm). Throws std::runtime_error for bands of which it isn't known.
SpectralCurve sunCurve(const Film& film) {
    constexpr int last = data::kSunFirst + data::kSunCount - 1;
    std::vector<std::pair<double, double>> samples;
    for (int i = 0; i < data::kSunCount; ++i) samples.emplace_back(data::kSunFirst + i, data::kSunDirect[i]);
    for (const Channel& channel : film.channels) {
        if (channel.kind != ChannelKind::spectral) throw std::runtime_error("a solar mean needs spectral channels alone");
        if ((channel.wavelength + 0.5 * channel.bandwidth) * 1.0e9 > last + 1.0e-6) {
            throw std::runtime_error("the spectrum of the sun is known here up to " + std::to_string(last) +
                                     " nm, and the channel '" + channel.name + "' goes beyond");
        }
    }
    return sampledCurve(samples, Interpolation::linear, false);
}

void writeBlock(CsvText& csv, const std::string& title, const std::vector<float>& values, int width, int height) {
    csv.cell(title);
    for (int x = 0; x < width; ++x) csv.cell(std::to_string(x));
    csv.endLine();
    for (int y = 0; y < height; ++y) {
        csv.cell(std::to_string(y));
        for (int x = 0; x < width; ++x) csv.cell(values[std::size_t(y) * std::size_t(width) + std::size_t(x)]);
        csv.endLine();
    }
}

std::optional<std::string> makeBsdf(const Raw& raw, const node::Node& output, std::string_view format) {
    if (format != "csv") return std::nullopt;
    if (output.choice("layout") != "table") throw std::runtime_error("the XML of window simulation isn't written yet");
    const std::string& spectral = output.choice("spectral");
    CsvText csv;
    if (spectral == "solar") {
        const auto mean = weighedMean(raw, sunCurve(*raw.film()), "the sensor has no bands in which the sun shines");
        writeBlock(csv, "solar [sr^-1]", mean, raw.width(), raw.height());
        return csv.take();
    }
    if (spectral == "photopic" && hasSpectralChannels(*raw.film())) {
        const auto mean =
            weighedMean(raw, photopicCurve(output), "the sensor's bands or the illuminant have nothing that can be seen");
        writeBlock(csv, "photopic [sr^-1]", mean, raw.width(), raw.height());
        return csv.take();
    }
    const ChannelValues values = channelValues(raw, output, {}, raw.isDraft());
    const bool onlyLuminance = spectral == "photopic";
    for (const Plane& channel : values.channels) {
        if (onlyLuminance && &channel != values.find("")) continue;
        writeBlock(csv, channel.name + " [sr^-1]", channel.values, values.width, values.height);
        csv.endLine();
    }
    return csv.take();
}

constexpr std::array<const char*, 1> kFormats{"csv"};
const bool kKnown = addDocumentClass("bsdf", makeBsdf);
const bool kFormatsKnown = outputClasses().add("bsdf", [] { return std::span<const char* const>(kFormats); });

}  // namespace
}  // namespace nemra::core
