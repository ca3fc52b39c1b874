#include "engine/core/output/read_picture.h"

#include <png.h>

#include <fstream>
#include <iterator>

#include "engine/common/log.h"
#include "engine/common/workdir.h"
#include "engine/core/render.h"
#include "engine/node/color.h"

namespace nemra::core {

namespace {

using Triple = std::array<double, 3>;
using ToXyz = Triple (*)(const Triple&);

ToXyz spaceNamed(const std::string& name) {
    const auto found = node::findColorSpace(name);
    return found ? node::colorSpaces()[static_cast<std::size_t>(*found)].toXyz : nullptr;
}

ToXyz spaceOf(const node::Node& node) {
    const std::string& name = node.choice("color_space");
    if (const ToXyz known = spaceNamed(name == "auto" || name == "data" ? "linear_srgb" : name)) return known;
    log::warning(node.label(), "its colour space isn't known here; its numbers count as linear sRGB");
    return spaceNamed("linear_srgb");
}

std::nullopt_t refused(const node::Node& node, const std::string& why) {
    log::warning(node.label(), why + "; the picture is left out");
    return std::nullopt;
}

std::optional<ReadPicture> readInline(const node::Node& node) {
    const int width = node.integer("width");
    const int height = node.integer("height");
    const int channels = node.integer("channels");
    const auto* const pixels = node.rawSlot("pixels");
    const auto* const numbers = pixels ? std::get_if<std::vector<float>>(&pixels->data) : nullptr;
    const std::size_t count = std::size_t(width) * std::size_t(height);
    if (!numbers || numbers->size() != count * std::size_t(channels)) return refused(node, "its pixels don't fit its size");
    if (channels != 1 && channels != 3) return refused(node, "only pictures of one or three channels can be used here");
    const ToXyz toXyz = spaceOf(node);
    const double scale = node.real("scale");
    ReadPicture picture{{width, height, std::vector<float>(3 * count)}, {}};
    for (std::size_t i = 0; i < count; ++i) {
        Triple values{};
        for (std::size_t c = 0; c < 3; ++c) values[c] = (*numbers)[channels == 1 ? i : 3 * i + c];
        const Triple xyz = toXyz(values);
        for (std::size_t c = 0; c < 3; ++c) picture.image.values[3 * i + c] = static_cast<float>(scale * xyz[c]);
    }
    return picture;
}

std::optional<ReadPicture> readPng(const node::Node& node, const std::vector<char>& bytes) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, bytes.data(), bytes.size())) {
        return refused(node, std::string("only PNG files can be read here: ") + image.message);
    }
    if (std::uint64_t(image.width) * image.height * 8 > kMaxBufferBytes) {
        png_image_free(&image);
        return refused(node, "the file's picture is too large");
    }
    // 8-bit codes as they are, since the library's way to linear values assumes sRGB and multiplies by the opacity.
    image.format = PNG_FORMAT_RGBA;
    std::vector<unsigned char> codes(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, codes.data(), 0, nullptr)) {
        const std::string why = image.message;
        png_image_free(&image);
        return refused(node, why);
    }
    const std::string& name = node.choice("color_space");
    const ToXyz toXyz = name == "auto" ? spaceNamed("srgb") : spaceOf(node);
    const double scale = node.real("scale");
    const bool flip = node.boolean("flip_vertically");
    const std::size_t width = image.width;
    const std::size_t height = image.height;
    ReadPicture picture{{int(width), int(height), std::vector<float>(3 * width * height)}, std::vector<float>(width * height)};
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const unsigned char* const code = codes.data() + 4 * ((flip ? height - 1 - y : y) * width + x);
            const Triple xyz = toXyz({code[0] / 255.0, code[1] / 255.0, code[2] / 255.0});
            for (std::size_t c = 0; c < 3; ++c) picture.image.values[3 * (y * width + x) + c] = static_cast<float>(scale * xyz[c]);
            picture.alpha[y * width + x] = static_cast<float>(code[3] / 255.0);
        }
    }
    return picture;
}

}  // namespace

std::optional<ReadPicture> readPicture(const node::Node& node) {
    if (node.type() == "inline") return readInline(node);
    if (node.type() == "embedded") {
        const auto* const slot = node.rawSlot("data");
        const auto* const bytes = slot ? std::get_if<std::vector<char>>(&slot->data) : nullptr;
        return bytes ? readPng(node, *bytes) : refused(node, "it holds no file");
    }
    if (node.type() != "file") return refused(node, "images of this class can't be used here");
    const std::string& path = node.text("path");
    if (path.empty()) return refused(node, "it names no file");
    std::ifstream file(resolvePath(path), std::ios::binary);
    if (!file) return refused(node, "there is no file " + path);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return readPng(node, bytes);
}

}  // namespace nemra::core
