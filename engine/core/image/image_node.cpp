#include "engine/core/image/image_node.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>

#include "engine/common/log.h"
#include "engine/common/workdir.h"
#include "engine/core/image/decode.h"
#include "engine/core/image/picture_to_film.h"
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

std::shared_ptr<Raw> dataRaw(PictureDecoder& decoder, double scale, bool flipped) {
    std::vector<Channel> channels;
    for (int c = 0; c < decoder.form().channels; ++c) {
        channels.push_back({std::to_string(c), ChannelKind::unknown, 0.0, 0.0, "1"});
    }
    return rawOf(filmOfPicture(decoder, std::move(channels), {.scale = scale, .flipped = flipped}), false);
}

/// `name` is an option of the parameter color_space but data and spectral.
std::shared_ptr<Raw> colorRaw(PictureDecoder& decoder, const std::string& name, double scale, bool flipped) {
    const PictureForm& form = decoder.form();
    if (form.channels > 4) throw PictureFault("a picture in colours has 1 to 4 channels, not " + std::to_string(form.channels));
    const bool automatic = name == "auto";
    const bool linear = name.starts_with("linear_");
    const ColorSpace& space = automatic ? (form.colors ? *form.colors : colorSpace("srgb"))
                                        : colorSpace(linear ? std::string_view(name).substr(7) : std::string_view(name));
    return rawOf(tristimulusFilm(decoder, {.colors = &space,
                                           .encoded = automatic ? form.encoded : !linear && name != "xyz",
                                           .scale = scale * form.luminanceOfWhite,
                                           .flipped = flipped}),
                 true);
}

std::shared_ptr<Raw> spectralRaw(const node::Node& image, PictureDecoder& decoder, double scale) {
    const auto wavelengths = image.table("wavelengths")->numbers("wavelength");
    const auto count = static_cast<std::size_t>(decoder.form().channels);
    if (wavelengths.size() != count) {
        throw PictureFault("the table has " + std::to_string(wavelengths.size()) + " wavelengths for " + std::to_string(count) +
                           " channels");
    }
    std::vector<std::pair<double, std::size_t>> order;
    for (std::size_t c = 0; c < count; ++c) {
        const double metres = wavelengths[c] * kMetresPerNanometre;
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
    PictureMapping mapping{.scale = scale};
    for (const auto& [metres, c] : order) mapping.order.push_back(c);
    return rawOf(filmOfPicture(decoder, std::move(channels), mapping), true);
}

/// The numbers of a node.
class InlineDecoder final : public PictureDecoder {
public:
    InlineDecoder(const PictureForm& form, std::span<const float> numbers) : rest_(std::as_bytes(numbers)) { form_ = form; }
    void read(std::span<unsigned char> rows) override {
        std::memcpy(rows.data(), rest_.data(), rows.size());
        rest_ = rest_.subspan(rows.size());
    }

private:
    std::span<const std::byte> rest_;
};

std::shared_ptr<Raw> inlineRaw(const node::Node& image) {
    PictureForm form;
    form.width = image.integer("width");
    form.height = image.integer("height");
    form.channels = image.integer("channels");
    const auto* const slot = image.rawSlot("pixels");
    const auto* const numbers = slot ? std::get_if<std::vector<float>>(&slot->data) : nullptr;
    const std::size_t given = numbers ? numbers->size() : 0;
    checkPictureSize(form.width, form.height, static_cast<std::size_t>(form.channels), given);
    const std::size_t wanted =
        static_cast<std::size_t>(form.width) * static_cast<std::size_t>(form.height) * static_cast<std::size_t>(form.channels);
    if (given != wanted) {
        throw PictureFault("the slot pixels holds " + std::to_string(given) +
                           " numbers, not width x height x channels = " + std::to_string(wanted));
    }
    InlineDecoder decoder(form, *numbers);
    const std::string& space = image.choice("color_space");
    const double scale = image.real("scale");
    if (space == "spectral") return spectralRaw(image, decoder, scale);
    return space == "data" ? dataRaw(decoder, scale, false) : colorRaw(decoder, space, scale, false);
}

std::shared_ptr<Raw> exrRaw(std::span<const char> bytes, const std::string& origin, const std::string& colors, double scale,
                            bool flipped) {
    ExrMapping mapping{.colors = nullptr, .scale = scale, .flipped = flipped};
    if (colors != "auto" && colors != "data") {
        // Floating-point pixels are proportional to light whatever the curve of the space.
        mapping.colors = &colorSpace(colors.starts_with("linear_") ? std::string_view(colors).substr(7) : colors);
    }
    return readExr(bytes, origin, mapping);
}

std::unique_ptr<PictureDecoder> decoderOf(std::span<const char> bytes) {
    if (isPng(bytes)) return decodePng(bytes);
    if (isJpeg(bytes)) return decodeJpeg(bytes);
    if (isHdr(bytes)) return decodeHdr(bytes);
    throw PictureFault("this is neither PNG nor JPEG, OpenEXR or Radiance HDR");
}

}  // namespace

std::shared_ptr<Raw> rawFromPictureFile(std::span<const char> bytes, const std::string& origin, const std::string& colors,
                                        double scale, bool flipVertically) {
    if (isExr(bytes)) return exrRaw(bytes, origin, colors, scale, flipVertically);
    const auto decoder = decoderOf(bytes);
    return colors == "data" ? dataRaw(*decoder, scale, flipVertically) : colorRaw(*decoder, colors, scale, flipVertically);
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
