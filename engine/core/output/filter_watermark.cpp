// A text or a picture laid over the picture: opacity times the overlay's plus the rest of the picture's values (Porter and Duff,
// "Compositing Digital Images", SIGGRAPH 1984, operator over). It counts as display values, so it stands behind the tone curve.
#include <algorithm>
#include <cmath>
#include <sstream>

#include "engine/core/output/bitmap_font.h"
#include "engine/core/output/read_picture.h"
#include "engine/core/output/resample.h"
#include "engine/core/output/text_content.h"
#include "engine/node/color.h"

namespace nemra::core {
namespace {

/// Values not yet multiplied by the opacity.
struct Overlay {
    int width = 0;
    int height = 0;
    std::vector<float> xyz;
    std::vector<float> alpha;
};

/// As many lines and bytes of them as fit.
std::vector<std::string> linesOf(const std::string& text, int most, int letters) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; int(lines.size()) < most && std::getline(stream, line);) {
        lines.push_back(line.substr(0, std::size_t(letters)));
    }
    return lines;
}

/// `lineHeight` pixels from one line to the next, in whole pixels per dot; no larger than the picture by more than a letter.
Overlay textOverlay(const std::string& text, double lineHeight, const node::Xyz& color, const XyzImage& picture) {
    const int dot = std::max(1, static_cast<int>(std::lround(lineHeight / kLineHeight)));
    const std::vector<std::string> lines =
        linesOf(text, picture.height / (kLineHeight * dot) + 1, picture.width / (kLetterWidth * dot) + 1);
    int letters = 0;
    for (const std::string& line : lines) letters = std::max(letters, letterCount(line));
    Overlay overlay{letters * kLetterWidth * dot, int(lines.size()) * kLineHeight * dot, {}, {}};
    const std::size_t pixels = std::size_t(overlay.width) * std::size_t(overlay.height);
    overlay.alpha.resize(pixels);
    for (std::size_t i = 0; i < pixels; ++i) {
        for (const double value : color) overlay.xyz.push_back(static_cast<float>(value));
    }
    for (std::size_t row = 0; row < lines.size(); ++row) {
        forEachDot(lines[row], [&](int x, int y) {
            for (int i = 0; i < dot * dot; ++i) {
                const int px = x * dot + i % dot;
                const int py = (int(row) * kLineHeight + y) * dot + i / dot;
                overlay.alpha[std::size_t(py) * std::size_t(overlay.width) + std::size_t(px)] = 1.0F;
            }
        });
    }
    return overlay;
}

Overlay pictureOverlay(const node::Node& node, double height) {
    auto picture = readPicture(node, true);
    if (!picture || picture->image.values.empty()) return {};
    const XyzImage& image = picture->image;
    Overlay overlay;
    overlay.height = std::max(1, static_cast<int>(std::lround(height)));
    overlay.width = std::max(1, static_cast<int>(std::lround(double(image.width) * overlay.height / image.height)));
    if (picture->alpha.empty()) picture->alpha.assign(std::size_t(image.width) * std::size_t(image.height), 1.0F);
    overlay.alpha = resample(picture->alpha, image.width, image.height, 1, overlay.width, overlay.height, "bilinear");
    overlay.xyz = resample(image.values, image.width, image.height, 3, overlay.width, overlay.height, "bilinear");
    return overlay;
}

void filterWatermark(const node::Node& node, Picture& picture) {
    XyzImage& image = picture.image;
    const double size = 0.01 * node.real("size") * image.height;
    Overlay overlay;
    if (node.choice("content") == "image") {
        overlay = pictureOverlay(*node.child("image"), size);
    } else {
        overlay = textOverlay(textOf(*node.child("text"), picture.raw), size,
                              node::toXyz(node.color("color")).value_or(node::Xyz{0.9505, 1.0, 1.089}), image);
    }
    const int margin = static_cast<int>(std::lround(0.01 * node.real("margin") * image.height));
    const std::string& place = node.choice("place");
    const auto offset = [&](bool first, int room, int extent) { return first ? margin : room - margin - extent; };
    int left = offset(place.ends_with("left"), image.width, overlay.width);
    int top = offset(place.starts_with("top"), image.height, overlay.height);
    if (place == "center") {
        left = (image.width - overlay.width) / 2;
        top = (image.height - overlay.height) / 2;
    }
    const double opacity = node.real("opacity");
    for (int y = std::max(0, -top); y < std::min(overlay.height, image.height - top); ++y) {
        for (int x = std::max(0, -left); x < std::min(overlay.width, image.width - left); ++x) {
            const std::size_t from = std::size_t(y) * std::size_t(overlay.width) + std::size_t(x);
            const std::size_t to = std::size_t(top + y) * std::size_t(image.width) + std::size_t(left + x);
            const double share = opacity * overlay.alpha[from];
            for (std::size_t c = 0; c < 3; ++c) {
                float& value = image.values[3 * to + c];
                value = static_cast<float>((1.0 - share) * value + share * overlay.xyz[3 * from + c]);
            }
        }
    }
}

const bool kKnown = filterClasses().add("watermark", filterWatermark);

}  // namespace
}  // namespace nemra::core
