// The scattering of a sample: as a table with directions of the light in columns and outgoing directions in rows, as the result
// has them, or as XML for programs that simulate windows.
#include <array>
#include <cmath>
#include <numeric>
#include <stdexcept>

#include "engine/common/log.h"
#include "engine/core/data/tables.h"
#include "engine/core/output/channel_values.h"
#include "engine/core/output/csv.h"
#include "engine/core/output/document.h"
#include "engine/core/output/false_color.h"
#include "engine/core/output/spectral_weights.h"
#include "engine/core/output/table_titles.h"
#include "engine/core/output/window_xml.h"
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

/// The bands and what weighs them, in one part of the spectrum.
struct Part {
    const char* wavelength;  ///< as the XML of window simulation calls it
    std::string title;       ///< in tables
    std::vector<float> values;
};

Part photopicPart(const Raw& raw, const node::Node& output) {
    const auto film = raw.film();
    if (hasSpectralChannels(*film)) {
        return {"Visible", "photopic",
                weighedMean(raw, photopicCurve(output), "the sensor's bands or the illuminant have nothing that can be seen")};
    }
    const int channel = referenceChannel(*film);
    if (channel < 0 || film->channels[std::size_t(channel)].kind != ChannelKind::luminous) {
        throw std::runtime_error("a photopic mean needs spectral channels or the channel Y");
    }
    std::vector<double> weights(film->channels.size(), 0.0);
    weights[std::size_t(channel)] = 1.0;
    return {"Visible", "Y", weighedSum(*film, *raw.view(), weights)};
}

/// Share of the light within the sun's table below which a mean over the bands says little of the whole.
constexpr double kEnoughSun = 0.9;

Part solarPart(const Raw& raw, const node::Node& output) {
    const SpectralCurve sun = sunCurve(*raw.film());
    auto values = weighedMean(raw, sun, "the sensor has no bands in which the sun shines");
    const std::vector<double> weights = bandWeights(*raw.film(), sun);
    const double share =
        std::accumulate(weights.begin(), weights.end(), 0.0) / integrate(sun, sun.knots.front(), sun.knots.back());
    if (share < kEnoughSun) {
        log::warning(output.label(), "the sensor's bands hold " + std::to_string(std::lround(100.0 * share)) +
                                         " % of the sun's light up to 1200 nm; the solar mean is over these alone");
    }
    return {"Solar", "solar", std::move(values)};
}

std::vector<Part> partsOf(const Raw& raw, const node::Node& output) {
    const std::string& spectral = output.choice("spectral");
    std::vector<Part> parts;
    if (spectral != "solar") parts.push_back(photopicPart(raw, output));
    if (spectral != "photopic") parts.push_back(solarPart(raw, output));
    return parts;
}

void writeBlock(CsvText& csv, const TableTitles& titles, const std::string& title, const std::vector<float>& values, int width,
                int height) {
    csv.cell(title);
    for (int x = 0; x < width; ++x) csv.cell(titles.column(x));
    csv.endLine();
    for (int y = 0; y < height; ++y) {
        csv.cell(titles.row(y));
        for (int x = 0; x < width; ++x) csv.cell(values[std::size_t(y) * std::size_t(width) + std::size_t(x)]);
        csv.endLine();
    }
}

std::string makeTable(const Raw& raw, const node::Node& output) {
    const TableTitles titles(raw);
    CsvText csv;
    bool isFirst = true;
    const auto block = [&](const std::string& name, const std::vector<float>& values) {
        if (!std::exchange(isFirst, false)) csv.endLine();
        writeBlock(csv, titles, name + " [sr^-1]", values, raw.width(), raw.height());
    };
    if (output.choice("spectral") == "channels") {
        for (const Plane& channel : channelValues(raw, output, {}, raw.isDraft()).channels) block(channel.name, channel.values);
    } else {
        for (const Part& part : partsOf(raw, output)) block(part.title, part.values);
    }
    return csv.take();
}

/// What the illuminant is called in files of window simulation.
std::string illuminantName(const node::Node& illuminant) {
    if (illuminant.type() != "preset") return illuminant.name();
    const std::string& preset = illuminant.text("preset");
    return preset == "cie_d65" ? "CIE Illuminant D65 1nm.ssp" : preset;
}

/// Of a band, in nm.
std::string wavelengthText(const Channel& channel) { return significant(channel.wavelength * 1.0e9, 9); }

std::vector<WindowSpectrum> windowSpectra(const Raw& raw, const node::Node& output) {
    const std::string visibleSource = illuminantName(*output.child("illuminant"));
    const char* const observer = "ASTM E308 1931 Y.dsp";
    std::vector<WindowSpectrum> spectra;
    if (output.choice("spectral") != "channels") {
        for (Part& part : partsOf(raw, output)) {
            const bool isSolar = std::string_view(part.wavelength) == "Solar";
            spectra.push_back({part.wavelength, "Integral", isSolar ? "ASTM G173-03 direct and circumsolar" : visibleSource,
                               isSolar ? "None" : observer, std::move(part.values)});
        }
        return spectra;
    }
    const auto film = raw.film();
    for (std::size_t i = 0; i < film->channels.size(); ++i) {
        const Channel& channel = film->channels[i];
        std::vector<double> weights(film->channels.size(), 0.0);
        weights[i] = 1.0;
        auto values = weighedSum(*film, *raw.view(), weights);
        if (channel.kind == ChannelKind::spectral) {
            spectra.push_back({wavelengthText(channel), "Nanometer", "None", "None", std::move(values)});
        } else if (channel.kind == ChannelKind::luminous && (channel.name == "X" || channel.name == "Y" || channel.name == "Z")) {
            const bool isVisible = channel.name == "Y";
            spectra.push_back({isVisible ? "Visible" : "CIE-" + channel.name, "Integral", "None",
                               "ASTM E308 1931 " + channel.name + ".dsp", std::move(values)});
        } else {
            throw std::runtime_error("the XML of window simulation has no place for the channel '" + channel.name + "'");
        }
    }
    return spectra;
}

std::string makeXml(const Raw& raw, const node::Node& output) {
    const auto instrument = raw.instrument();
    const auto refuse = [](const std::string& why) { throw std::runtime_error("the XML of window simulation " + why); };
    if (!instrument || instrument->type() != "bsdfcapture") {
        refuse("needs a result of the instrument bsdfcapture, and this one is of " +
               (instrument ? "a " + instrument->type() : std::string("no known instrument")));
    }
    if (instrument->choice("basis") != "klems") {
        refuse("needs the basis \"klems\", and that of " + instrument->label() + " is \"" + instrument->choice("basis") + "\"");
    }
    const ScatterLayout layout = scatterLayoutOf(*instrument);
    if (layout.width() != raw.width() || layout.height() != raw.height()) {
        const auto size = [](int width, int height) { return std::to_string(width) + " x " + std::to_string(height); };
        refuse("needs " + size(layout.width(), layout.height()) + " values by the basis of " + instrument->label() +
               ", and this result has " + size(raw.width(), raw.height()));
    }
    const auto named = [](const std::string& name, const std::string& instead) { return name.empty() ? instead : name; };
    const WindowProduct product{named(output.text("product"), named(instrument->name(), "unknown")),
                                named(output.text("manufacturer"), "unknown"), output.real("thickness")};
    return windowXml(*instrument, product, windowSpectra(raw, output));
}

std::optional<std::string> makeBsdf(const Raw& raw, const node::Node& output, std::string_view format) {
    const bool asXml = output.choice("layout") == "windows_xml";
    if (format != (asXml ? "xml" : "csv")) return std::nullopt;
    return asXml ? makeXml(raw, output) : makeTable(raw, output);
}

constexpr std::array<const char*, 1> kTable{"csv"};
constexpr std::array<const char*, 1> kXml{"xml"};
const bool kKnown = addDocumentClass("bsdf", makeBsdf);
const bool kFormatsKnown = outputClasses().add("bsdf", [](const node::Node& output) {
    return std::span<const char* const>(output.choice("layout") == "windows_xml" ? kXml : kTable);
});

}  // namespace
}  // namespace nemra::core
