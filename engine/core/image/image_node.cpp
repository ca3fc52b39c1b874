#include "engine/core/image/image_node.h"

#include <algorithm>
#include <optional>

#include "engine/common/log.h"
#include "engine/common/workdir.h"
#include "engine/core/image/decode.h"
#include "engine/core/image/read_exr.h"
#include "engine/core/result/read_file.h"

namespace nemra::core {

namespace {

constexpr double kMetresPerNanometre = 1.0e-9;

std::shared_ptr<Raw> rawOf(std::shared_ptr<const Film> film, bool light) {
    RawParts parts;
    parts.film = std::move(film);
    if (light) parts.factors[NEMRA_QUANTITY_SCENE_RADIANCE] = 1.0;
    return std::make_shared<Raw>(std::move(parts));
}

/// Channels as they are.
std::shared_ptr<Film> plainFilm(const Pixels& pixels, std::vector<Channel> channels, double scale) {
    auto film = makePictureFilm(pixels.width, pixels.height, std::move(channels));
    for (int x = 0; x < pixels.width; ++x) {
        for (int y = 0; y < pixels.height; ++y) {
            for (int c = 0; c < pixels.channels; ++c) setCell(*film, x, y, c, scale * pixels.at(x, y)[c]);
        }
    }
    finishPictureFilm(*film);
    return film;
}

std::shared_ptr<Raw> dataRaw(const Pixels& pixels, double scale) {
    std::vector<Channel> channels;
    for (int c = 0; c < pixels.channels; ++c) channels.push_back({std::to_string(c), ChannelKind::unknown, 0.0, 0.0, "1"});
    return rawOf(plainFilm(pixels, std::move(channels), scale), false);
}

/// `name` is an option of the parameter color_space but data and spectral.
std::shared_ptr<Raw> colorRaw(const Pixels& pixels, const std::string& name, double scale) {
    if (pixels.channels > 4)
        throw PictureFault("a picture in colours has 1 to 4 channels, not " + std::to_string(pixels.channels));
    const bool automatic = name == "auto";
    const bool linear = name.starts_with("linear_");
    const bool encoded = automatic ? pixels.encoded : !linear && name != "xyz";
    const ColorSpace& space = automatic ? (pixels.colors ? *pixels.colors : colorSpace("srgb"))
                                        : colorSpace(linear ? std::string_view(name).substr(7) : std::string_view(name));
    return rawOf(tristimulusFilm(pixels, space, encoded, scale * pixels.luminanceOfWhite), true);
}

void flip(Pixels& pixels) {
    const auto row = static_cast<std::ptrdiff_t>(pixels.width) * pixels.channels;
    auto top = pixels.values.begin();
    for (auto bottom = pixels.values.end() - row; top < bottom; top += row, bottom -= row) {
        std::swap_ranges(top, top + row, bottom);
    }
}

std::shared_ptr<Raw> spectralRaw(const node::Node& image, const Pixels& pixels, double scale) {
    const auto wavelengths = image.table("wavelengths")->numbers("wavelength");
    if (wavelengths.size() != static_cast<std::size_t>(pixels.channels)) {
        throw PictureFault("the table has " + std::to_string(wavelengths.size()) + " wavelengths for " +
                           std::to_string(pixels.channels) + " channels");
    }
    std::vector<std::pair<double, int>> order;
    for (int c = 0; c < pixels.channels; ++c) {
        const double metres = wavelengths[static_cast<std::size_t>(c)] * kMetresPerNanometre;
        if (!(metres > 0.0)) throw PictureFault("a wavelength in the table is missing");
        order.emplace_back(metres, c);
    }
    std::sort(order.begin(), order.end());
    std::vector<double> centres;
    for (const auto& [metres, c] : order) centres.push_back(metres);
    const auto widths = bandwidthsBetween(centres);
    std::vector<Channel> channels;
    for (std::size_t i = 0; i < order.size(); ++i) {
        channels.push_back(bandChannel(centres[i], widths[i], "W.m^-2.sr^-1.nm^-1"));
    }
    Pixels sorted = pixels;
    for (std::size_t pixel = 0; pixel < pixels.values.size(); pixel += order.size()) {
        for (std::size_t i = 0; i < order.size(); ++i) {
            sorted.values[pixel + i] = pixels.values[pixel + static_cast<std::size_t>(order[i].second)];
        }
    }
    return rawOf(plainFilm(sorted, std::move(channels), scale), true);
}

std::shared_ptr<Raw> inlineRaw(const node::Node& image) {
    Pixels pixels;
    pixels.width = image.integer("width");
    pixels.height = image.integer("height");
    pixels.channels = image.integer("channels");
    const auto* const slot = image.rawSlot("pixels");
    const auto* const numbers = slot ? std::get_if<std::vector<float>>(&slot->data) : nullptr;
    const std::size_t given = numbers ? numbers->size() : 0;
    checkPictureSize(pixels.width, pixels.height, static_cast<std::size_t>(pixels.channels), given);
    const std::size_t wanted = static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height) *
                               static_cast<std::size_t>(pixels.channels);
    if (given != wanted) {
        throw PictureFault("the slot pixels holds " + std::to_string(given) +
                           " numbers, not width x height x channels = " + std::to_string(wanted));
    }
    pixels.values = *numbers;
    const std::string& space = image.choice("color_space");
    const double scale = image.real("scale");
    if (space == "spectral") return spectralRaw(image, pixels, scale);
    return space == "data" ? dataRaw(pixels, scale) : colorRaw(pixels, space, scale);
}

std::shared_ptr<Raw> exrRaw(std::span<const char> bytes, const std::string& origin, const std::string& colors) {
    if (colors == "auto" || colors == "data") return readExr(bytes, origin);
    // Floating-point pixels are proportional to light whatever the curve of the space.
    return readExr(bytes, origin, &colorSpace(colors.starts_with("linear_") ? std::string_view(colors).substr(7) : colors));
}

std::shared_ptr<Raw> adjusted(std::shared_ptr<Raw> raw, double scale, bool flipVertically) {
    if (scale == 1.0 && !flipVertically) return raw;
    RawParts parts = raw->parts();
    auto film = std::make_shared<Film>(*parts.film);
    const int channels = static_cast<int>(film->channels.size());
    for (int x = 0; x < film->width; ++x) {
        for (int y = 0; y < film->height; ++y) {
            const int from = flipVertically ? film->height - 1 - y : y;
            for (int c = 0; c < channels; ++c) setCell(*film, x, y, c, scale * parts.film->high[parts.film->cell(x, from, c)]);
        }
    }
    finishPictureFilm(*film);
    parts.film = std::move(film);
    return std::make_shared<Raw>(std::move(parts));
}

}  // namespace

std::shared_ptr<Raw> rawFromPictureFile(std::span<const char> bytes, const std::string& origin, const std::string& colors,
                                        double scale, bool flipVertically) {
    if (isExr(bytes)) {
        return adjusted(exrRaw(bytes, origin, colors), scale, flipVertically);
    }
    Pixels pixels;
    if (isPng(bytes)) {
        pixels = decodePng(bytes);
    } else if (isJpeg(bytes)) {
        pixels = decodeJpeg(bytes);
    } else if (isHdr(bytes)) {
        pixels = decodeHdr(bytes);
    } else {
        throw PictureFault("this is neither PNG nor JPEG, OpenEXR or Radiance HDR");
    }
    if (flipVertically) flip(pixels);
    return colors == "data" ? dataRaw(pixels, scale) : colorRaw(pixels, colors, scale);
}

bool isExr(std::span<const char> bytes) noexcept {
    return bytes.size() >= 4 && bytes[0] == '\x76' && bytes[1] == '\x2f' && bytes[2] == '\x31' && bytes[3] == '\x01';
}

std::shared_ptr<Raw> rawFromImage(const node::Node& image) {
    const auto fromFile = [&](std::span<const char> bytes) {
        return rawFromPictureFile(bytes, image.label(), image.choice("color_space"), image.real("scale"),
                                  image.boolean("flip_vertically"));
    };
    try {
        if (image.type() == "inline") return inlineRaw(image);
        if (image.type() == "embedded") {
            const auto* const slot = image.rawSlot("data");
            const auto* const bytes = slot ? std::get_if<std::vector<char>>(&slot->data) : nullptr;
            if (!bytes) throw PictureFault("the slot data holds no file");
            return fromFile(*bytes);
        }
        if (image.type() == "file") {
            const auto bytes = readFileWhole(resolvePath(image.text("path")));
            return bytes ? fromFile(bytes->bytes()) : nullptr;
        }
        throw PictureFault("pictures of this class can't be read by themselves");
    } catch (const PictureFault& fault) {
        log::error(image.label(), fault.what());
        return nullptr;
    }
}

}  // namespace nemra::core
