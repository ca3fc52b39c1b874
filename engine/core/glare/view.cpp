#include "engine/core/glare/view.h"

#include <algorithm>
#include <stdexcept>

#include "engine/core/output/bitmap_font.h"

namespace nemra::core {

namespace {

constexpr Rgb kCounted{255, 32, 32};
constexpr Rgb kOutside{255, 150, 0};  // of the solid angles that the method is meant for
constexpr Rgb kExcluded{150, 150, 150};
constexpr Rgb kRim{0, 0, 0};
constexpr Rgb kNumber{255, 255, 255};

bool isOutline(const GlareView& view, int x, int y) {
    const int label = view.found.source[view.field.pixel(x, y)];
    const auto differs = [&](int u, int v) {
        if (u < 0 || v < 0 || u >= view.field.width || v >= view.field.height) return true;
        return view.found.source[view.field.pixel(u, v)] != label;
    };
    return differs(x - 1, y) || differs(x + 1, y) || differs(x, y - 1) || differs(x, y + 1);
}

}  // namespace

GlareView glareViewOf(const Raw& raw, const node::Node& output) {
    std::string why;
    auto field = makeVisualField(raw, why);
    if (!field) throw std::runtime_error("glare can't be rated: " + why);
    GlareView view{std::move(*field), glareSearchOf(output, raw), {}, {}};
    view.found = findGlareSources(view.field, view.search, {0, 0, view.field.width, view.field.height});
    view.rating = rateGlare(view.field, view.found, view.search);
    return view;
}

Canvas drawGlare(const GlareView& view, const FalseColors& colors, const GlareMarks& marks) {
    Canvas canvas = colorValues(view.field.luminance, view.field.width, view.field.height, colors);
    for (int y = 0; y < canvas.height(); ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            const int label = view.found.source[view.field.pixel(x, y)];
            if (label < 0 || (marks.outlineOnly && !isOutline(view, x, y))) continue;
            const GlareSource& source = view.found.sources[std::size_t(label)];
            const Rgb rated = source.tooSmall || source.tooLarge ? kOutside : kCounted;
            canvas.set(x, y, source.index.value ? rated : kExcluded);
        }
    }
    if (!marks.numbers) return canvas;
    const int dot = std::max(1, canvas.height() / 400);
    for (std::size_t i = view.found.sources.size(); i-- > 0;) {  // the foremost last, so that they stay readable
        const GlareSource& source = view.found.sources[i];
        const std::string number = std::to_string(i + 1);
        const int width = letterCount(number) * kLetterWidth * dot;
        const int left = std::clamp(int(source.x) - width / 2, dot, std::max(dot, canvas.width() - width));
        const int top =
            std::clamp(int(source.y) - kLetterHeight * dot / 2, dot, std::max(dot, canvas.height() - kLineHeight * dot));
        canvas.label(left, top, dot, number, kNumber, kRim);
    }
    return canvas;
}

}  // namespace nemra::core
