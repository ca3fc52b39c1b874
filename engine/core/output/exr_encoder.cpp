#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfOutputFile.h>

#include <array>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string>

#include "engine/core/output/encode.h"
#include "engine/core/output/exr_header.h"
#include "engine/core/result/in_strips.h"

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

/// One plane per channel, rows from the top.
using Planes = std::map<std::string, std::vector<float>>;

std::vector<float> planeOf(const LightView& view, int channel) {
    const auto width = static_cast<std::size_t>(view.width);
    const auto height = static_cast<std::size_t>(view.height);
    const auto channels = static_cast<std::size_t>(view.channels);
    std::vector<float> plane(width * height);
    const double* const values = view.values.data() + channel;
    forEachOnAllCores(view.width, view.height, [&](int x, int y) {
        const auto column = static_cast<std::size_t>(x);
        const auto row = static_cast<std::size_t>(y);
        plane[row * width + column] = static_cast<float>(values[(column * height + row) * channels]);
    });
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

}  // namespace

std::vector<char> encodeExr(const Raw& raw, ExrColors colors) {
    const auto film = raw.film();
    const auto view = raw.view();
    const auto output = raw.output();
    const ColorSpace& space = colorSpace(colorSpaceOf(output.get()));

    Planes planes;
    const bool tristimulus = isTristimulus(*film);
    for (int i = 0; i < view->channels; ++i) {
        const Channel& channel = film->channels[static_cast<std::size_t>(i)];
        if (tristimulus && channel.kind == ChannelKind::luminous && colors == ExrColors::rgb) continue;
        if (!planes.emplace(exrChannelName(channel), planeOf(*view, i)).second) {
            throw std::runtime_error("two channels would have the name " + exrChannelName(channel));
        }
    }
    const int reference = referenceChannel(*film);
    if (planes.contains("R") || planes.contains("G") || planes.contains("B")) {
        // Channels of the sensor's own by these names: they stay what they are.
    } else if (reference >= 0 && film->channels[static_cast<std::size_t>(reference)].kind == ChannelKind::energy) {
        // A grey of the picture's own white, not of D65.
        planes["R"] = planes["G"] = planes["B"] = planeOf(*view, reference);
    } else if (!tristimulus || colors == ExrColors::rgb) {
        addRgb(planes, toXyz(*film, *view, "cie1931_2deg"), space);
    }

    Imf::Header header(view->width, view->height, 1.0F, Imath::V2f(0, 0), 1.0F, Imf::INCREASING_Y, Imf::ZIP_COMPRESSION);
    describeExr(header, raw, *film, space);
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
