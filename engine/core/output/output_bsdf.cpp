// The scattering of a sample as a table: directions of the light in columns, outgoing directions in rows, as the result has them.
#include <array>
#include <stdexcept>

#include "engine/core/output/channel_values.h"
#include "engine/core/output/csv.h"
#include "engine/core/output/document.h"
#include "engine/core/output/spectral_weights.h"
#include "engine/core/output/write_result.h"
#include "engine/core/spectrum/observer.h"

namespace nemra::core {
namespace {

/// Mean of the spectral channels, weighed with the luminous efficiency function times the illuminant.
std::vector<float> photopicMean(const Raw& raw, const node::Node& output) {
    const auto film = raw.film();
    const auto view = raw.view();
    const node::Scene scene;
    Libraries libraries{std::vector<std::string>{}};
    Translation translation(scene, &libraries);
    const SpectralCurve illuminant = makeSpectrum(output.child("illuminant"), translation);
    const SpectralCurve efficiency = matchingFunction(Observer::cie1931, 1);
    SpectralCurve product{[&](double nm) { return illuminant(nm) * efficiency(nm); }, efficiency.knots};
    std::vector<double> weights = bandWeights(*film, product);
    double sum = 0.0;
    for (const double weight : weights) sum += weight;
    if (!(sum > 0.0)) throw std::runtime_error("the sensor's bands or the illuminant have nothing that can be seen");
    for (double& weight : weights) weight /= sum;
    return weighedSum(*film, *view, weights);
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
    if (spectral == "solar") throw std::runtime_error("weighing with the spectrum of the sun isn't available yet");
    CsvText csv;
    if (spectral == "photopic" && hasSpectralChannels(*raw.film())) {
        writeBlock(csv, "photopic [sr^-1]", photopicMean(raw, output), raw.width(), raw.height());
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
