#include "engine/core/output/exr_header.h"

#include <ImfChromaticitiesAttribute.h>
#include <ImfFloatAttribute.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace nemra::core {

namespace {

constexpr double kMetresPerNanometre = 1.0e-9;

/// With six digits behind the point.
std::string nanometres(double metres) {
    std::array<char, 64> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), metres / kMetresPerNanometre, std::chars_format::fixed, 6).ptr;
    return {text.data(), end};
}

Imath::V2f toImath(Chromaticity c) { return {static_cast<float>(c.x), static_cast<float>(c.y)}; }

void text(Imf::Header& header, const char* name, const std::string& value) { header.insert(name, Imf::StringAttribute(value)); }
void number(Imf::Header& header, const char* name, double value) {
    header.insert(name, Imf::FloatAttribute(static_cast<float>(value)));
}
bool has(const node::Node& node, const char* parameter) { return node.findParameter(parameter).spec != nullptr; }

void describeColors(Imf::Header& header, const ColorSpace& space, bool photometric) {
    Imf::addChromaticities(
        header, Imf::Chromaticities(toImath(space.red), toImath(space.green), toImath(space.blue), toImath(space.white)));
    Imf::addAdoptedNeutral(header, toImath(space.white));
    if (photometric) Imf::addWhiteLuminance(header, 1.0F);
    if (space.curve == ColorSpace::Curve::srgb) text(header, "colorInteropID", "lin_rec709_scene");
    if (space.curve == ColorSpace::Curve::rec2020) text(header, "colorInteropID", "lin_rec2020_scene");
}

using Vector = std::array<double, 3>;

Vector cross(const Vector& a, const Vector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double dot(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
/// The zero vector stays.
Vector normalized(Vector v) {
    const double length = std::sqrt(dot(v, v));
    for (double& component : v) component = length > 0.0 ? component / length : 0.0;
    return v;
}

/// The standard's camera looks along +z, with +x right and +y up; its matrices act on row vectors.
void addWorldToCamera(Imf::Header& header, const node::Node& camera) {
    const Vector position = camera.vector("position");
    const Vector target = camera.vector("target");
    const Vector forward = normalized({target[0] - position[0], target[1] - position[1], target[2] - position[2]});
    const Vector right = normalized(cross(forward, normalized(camera.vector("up"))));
    const Vector up = cross(right, forward);
    if (!(dot(right, right) > 0.5)) return;
    Imath::M44f matrix;
    for (int i = 0; i < 3; ++i) {
        const auto c = static_cast<std::size_t>(i);
        matrix[i][0] = static_cast<float>(right[c]);
        matrix[i][1] = static_cast<float>(up[c]);
        matrix[i][2] = static_cast<float>(forward[c]);
    }
    matrix[3][0] = static_cast<float>(-dot(right, position));
    matrix[3][1] = static_cast<float>(-dot(up, position));
    matrix[3][2] = static_cast<float>(-dot(forward, position));
    Imf::addWorldToCamera(header, matrix);
}

void describeInstrument(Imf::Header& header, const node::Node& instrument) {
    text(header, "sarvo:instrument", instrument.name());
    text(header, "sarvo:instrumentType", instrument.type());
    if (!instrument.comments().empty()) Imf::addComments(header, instrument.comments());
    if (has(instrument, "exposure_time")) Imf::addExpTime(header, static_cast<float>(instrument.real("exposure_time")));
    if (has(instrument, "f_number")) Imf::addAperture(header, static_cast<float>(instrument.real("f_number")));
    if (has(instrument, "position") && has(instrument, "target") && has(instrument, "up")) addWorldToCamera(header, instrument);
    if (instrument.type() == "spherecam" && instrument.choice("projection") == "equirectangular" &&
        instrument.real("longitude_range") == 360.0 && instrument.real("latitude_range") == 180.0) {
        Imf::addEnvmap(header, Imf::ENVMAP_LATLONG);
    }
}

bool isSpectral(const Film& film) {
    return !film.channels.empty() && std::all_of(film.channels.begin(), film.channels.end(),
                                                 [](const Channel& c) { return c.kind == ChannelKind::spectral; });
}

/// What the channels hold, by what the instrument measures.
std::string quantityOf(const Raw& raw, const std::string& prefix) {
    const auto& quantities = raw.quantities();
    const auto provides = [&](nemra_quantity_t quantity) {
        return std::find(quantities.begin(), quantities.end(), quantity) != quantities.end();
    };
    if (provides(NEMRA_QUANTITY_SCENE_IRRADIANCE)) return prefix == "luminance" ? "illuminance" : prefix + "irradiance";
    if (provides(NEMRA_QUANTITY_COMPUTED_BSDF)) return "BSDF";
    return prefix == "luminance" ? prefix : prefix + "radiance";
}

void describeBands(Imf::Header& header, const Raw& raw, const Film& film) {
    const std::string quantity = quantityOf(raw, "spectral ");
    text(header, "spectralLayoutVersion", "1.0");
    // The layout's fixed words, for radiances only; values are densities per nm, as sarvo:valueUnit says.
    if (quantity == "spectral radiance") text(header, "emissiveUnits", "W.m^-2.sr^-1");
    number(header, "EV", 0.0);
    text(header, "sarvo:quantity", quantity);
    std::string limits;
    for (const Channel& channel : film.channels) {
        limits += nanometres(channel.wavelength - channel.bandwidth / 2.0) +
                  "nm:" + nanometres(channel.wavelength + channel.bandwidth / 2.0) + "nm;";
    }
    text(header, "sarvo:bandLimits", limits);
}

/// A sensor's own channels are named by its user: a line of at most 200 bytes, whole characters of UTF-8.
std::string plainName(std::string name) {
    constexpr std::size_t longest = 200;
    if (name.size() > longest) {
        std::size_t end = longest;
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) --end;
        name.resize(end);
    }
    for (char& c : name) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '_';
    }
    return name;
}

/// Kind, unit and name of each channel, one in a line: what readers can't tell from the names of a sensor's own channels.
void describeChannels(Imf::Header& header, const Film& film) {
    std::string lines;
    for (const Channel& channel : film.channels) {
        lines += (channel.kind == ChannelKind::luminous ? "luminous "
                  : channel.kind == ChannelKind::energy ? "energy "
                                                        : "unknown ") +
                 channel.unit + " " + exrChannelName(channel) + "\n";
    }
    text(header, "sarvo:channels", lines);
}

bool hasOwnChannels(const Film& film) {
    const auto isOwn = [](const Channel& c) {
        return (c.kind == ChannelKind::energy && c.name != "E") ||
               (c.kind == ChannelKind::luminous && c.name != "X" && c.name != "Y" && c.name != "Z");
    };
    return std::any_of(film.channels.begin(), film.channels.end(), isOwn) ||
           (film.channels.size() != 3 && film.channels.front().kind == ChannelKind::luminous) ||
           (film.channels.size() != 1 && film.channels.front().kind == ChannelKind::energy);
}

}  // namespace

bool isTristimulus(const Film& film) {
    const auto has = [&](const char* name) {
        return std::any_of(film.channels.begin(), film.channels.end(),
                           [&](const Channel& c) { return c.kind == ChannelKind::luminous && c.name == name; });
    };
    return has("X") && has("Y") && has("Z");
}

std::string exrChannelName(const Channel& channel) {
    if (channel.kind != ChannelKind::spectral) return plainName(channel.name);
    std::string wavelength = nanometres(channel.wavelength);
    std::replace(wavelength.begin(), wavelength.end(), '.', ',');
    return "S0." + wavelength + "nm";
}

void describeExr(Imf::Header& header, const Raw& raw, const Film& film, const ColorSpace& space) {
    const bool energy =
        std::any_of(film.channels.begin(), film.channels.end(), [](const Channel& c) { return c.kind == ChannelKind::energy; });
    describeColors(header, space, !energy);
    number(header, "samplesPerPixel", raw.spp());
    number(header, "renderTimeSeconds", raw.counts().time);
    text(header, "software", "nemra");
    if (const auto instrument = raw.instrument()) describeInstrument(header, *instrument);
    if (film.channels.empty()) return;
    text(header, "sarvo:valueUnit", film.channels.front().unit);
    if (isSpectral(film)) {
        describeBands(header, raw, film);
    } else {
        const bool perBand = film.channels.front().unit.ends_with(".nm^-1");
        text(header, "sarvo:quantity", quantityOf(raw, energy ? perBand ? "spectral " : "" : "luminance"));
        if (hasOwnChannels(film)) describeChannels(header, film);
    }
}

}  // namespace nemra::core
