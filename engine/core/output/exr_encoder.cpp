#include <ImfChannelList.h>
#include <ImfChromaticitiesAttribute.h>
#include <ImfFloatAttribute.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfOutputFile.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <map>
#include <string>

#include "engine/core/output/encode.h"

namespace nemra::core {

namespace {

/// The library writes to any place of a stream; ours grows in memory, so that one piece of code alone deals with files.
class MemoryStream final : public Imf::OStream {
public:
    MemoryStream() : OStream("memory") {}
    void write(const char data[], int size) override {
        const std::size_t end = place_ + static_cast<std::size_t>(size);
        if (end > bytes.size()) bytes.resize(end);
        std::memcpy(bytes.data() + place_, data, static_cast<std::size_t>(size));
        place_ = end;
    }
    std::uint64_t tellp() override { return place_; }
    void seekp(std::uint64_t place) override { place_ = static_cast<std::size_t>(place); }

    std::vector<char> bytes;

private:
    std::size_t place_ = 0;
};

constexpr double kMetresPerNanometre = 1.0e-9;

/// "550,000000": the layout wants a comma, since a dot divides layers.
std::string wavelengthText(double metres) {
    std::array<char, 64> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), metres / kMetresPerNanometre, std::chars_format::fixed, 6).ptr;
    std::string result(text.data(), end);
    std::replace(result.begin(), result.end(), '.', ',');
    return result;
}

Imath::V2f vector(Chromaticity c) { return {static_cast<float>(c.x), static_cast<float>(c.y)}; }

/// One plane per channel, rows from the top.
using Planes = std::map<std::string, std::vector<float>>;

std::vector<float> planeOf(const LightView& view, int channel) {
    std::vector<float> plane;
    plane.reserve(static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.height));
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) plane.push_back(static_cast<float>(view.at(channel, x, y, NEMRA_QUANTITY_RAW)));
    }
    return plane;
}

void addRgb(Planes& planes, const XyzImage& xyz, const ColorSpace& space) {
    std::array<std::vector<float>*, 3> rgb{&planes["R"], &planes["G"], &planes["B"]};
    const std::size_t pixels = xyz.values.size() / 3;
    for (auto* const plane : rgb) plane->resize(pixels);
    for (std::size_t i = 0; i < pixels; ++i) {
        const auto linear = space.linear(xyz.values[3 * i], xyz.values[3 * i + 1], xyz.values[3 * i + 2]);
        for (std::size_t c = 0; c < 3; ++c) (*rgb[c])[i] = static_cast<float>(linear[c]);
    }
}

void text(Imf::Header& header, const char* name, const std::string& value) { header.insert(name, Imf::StringAttribute(value)); }
void number(Imf::Header& header, const char* name, double value) {
    header.insert(name, Imf::FloatAttribute(static_cast<float>(value)));
}

bool isSpectral(const Film& film) {
    return !film.channels.empty() && std::all_of(film.channels.begin(), film.channels.end(),
                                                 [](const Channel& c) { return c.kind == ChannelKind::spectral; });
}

void describe(Imf::Header& header, const Raw& raw, const Film& film, const ColorSpace& space) {
    Imf::addChromaticities(header,
                           Imf::Chromaticities(vector(space.red), vector(space.green), vector(space.blue), vector(space.white)));
    const bool energy =
        referenceChannel(film) >= 0 && film.channels[std::size_t(referenceChannel(film))].kind == ChannelKind::energy;
    if (!energy) Imf::addWhiteLuminance(header, 1.0F);
    number(header, "samplesPerPixel", raw.spp());
    number(header, "renderTimeSeconds", raw.counts().time);
    text(header, "software", "nemra");
    if (const auto instrument = raw.instrument()) {
        text(header, "sarvo:instrument", instrument->name());
        text(header, "sarvo:instrumentType", instrument->type());
        if (instrument->findParameter("exposure_time").spec)
            Imf::addExpTime(header, static_cast<float>(instrument->real("exposure_time")));
    }
    if (film.channels.empty()) return;
    text(header, "sarvo:valueUnit", film.channels.front().unit);
    if (!isSpectral(film)) {
        text(header, "sarvo:quantity", energy ? "radiance" : "luminance");
        return;
    }
    text(header, "spectralLayoutVersion", "1.0");
    text(header, "emissiveUnits",
         "W.m^-2.sr^-1");  // the layout's fixed words; values are densities per nm, as sarvo:valueUnit says
    number(header, "EV", 0.0);
    text(header, "sarvo:quantity", "spectral radiance");
    std::string limits;
    for (const Channel& channel : film.channels) {
        limits += wavelengthText(channel.wavelength - channel.bandwidth / 2.0) +
                  "nm:" + wavelengthText(channel.wavelength + channel.bandwidth / 2.0) + "nm;";
    }
    std::replace(limits.begin(), limits.end(), ',', '.');
    text(header, "sarvo:bandLimits", limits);
}

}  // namespace

std::vector<char> encodeExr(const Raw& raw) {
    const auto film = raw.film();
    const auto view = raw.view();
    const auto output = raw.output();
    const ColorSpace& space = colorSpace(colorSpaceOf(output.get()));

    Planes planes;
    for (int i = 0; i < view->channels; ++i) {
        const Channel& channel = film->channels[static_cast<std::size_t>(i)];
        if (channel.kind == ChannelKind::spectral) planes["S0." + wavelengthText(channel.wavelength) + "nm"] = planeOf(*view, i);
        if (channel.kind == ChannelKind::energy) planes[channel.name] = planeOf(*view, i);
    }
    if (referenceChannel(*film) >= 0 && film->channels[std::size_t(referenceChannel(*film))].kind == ChannelKind::energy) {
        // A grey of the picture's own white, not of D65.
        planes["R"] = planes["G"] = planes["B"] = planeOf(*view, referenceChannel(*film));
    } else {
        addRgb(planes, toXyz(*film, *view, "cie1931_2deg"), space);
    }

    Imf::Header header(view->width, view->height, 1.0F, Imath::V2f(0, 0), 1.0F, Imf::INCREASING_Y, Imf::ZIP_COMPRESSION);
    describe(header, raw, *film, space);
    Imf::FrameBuffer frame;
    for (auto& [name, plane] : planes) {
        header.channels().insert(name, Imf::Channel(Imf::FLOAT));
        frame.insert(name, Imf::Slice(Imf::FLOAT, reinterpret_cast<char*>(plane.data()), sizeof(float),
                                      sizeof(float) * static_cast<std::size_t>(view->width)));
    }
    MemoryStream stream;
    {
        Imf::OutputFile file(stream, header, 0);
        file.setFrameBuffer(frame);
        file.writePixels(view->height);
    }
    return std::move(stream.bytes);
}

}  // namespace nemra::core
