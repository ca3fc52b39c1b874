#include "engine/core/output/false_color.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "engine/core/data/tables.h"
#include "engine/core/output/bitmap_font.h"

namespace nemra::core {

namespace {

constexpr double kGray[2][3] = {{0, 0, 0}, {255, 255, 255}};
constexpr double kSpectrum[5][3] = {{0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 0, 0}};

Rgb between(const double (*colors)[3], int count, double place) {
    const double at = std::clamp(place, 0.0, 1.0) * (count - 1);
    const int first = std::min(static_cast<int>(at), count - 2);
    Rgb result{};
    for (std::size_t c = 0; c < 3; ++c) {
        const double part = at - first;
        result[c] = static_cast<std::uint8_t>(std::lround((1.0 - part) * colors[first][c] + part * colors[first + 1][c]));
    }
    return result;
}

/// Up to six even values, or powers of ten, within the range.
std::vector<double> ticksOf(const FalseColors& colors) {
    std::vector<double> ticks;
    if (colors.logarithmic) {
        for (double exponent = std::ceil(std::log10(colors.minimum) - 1.0e-9);
             std::pow(10.0, exponent) <= colors.maximum * 1.0000001; exponent += 1.0) {
            ticks.push_back(std::pow(10.0, exponent));
        }
        if (ticks.size() >= 2) return ticks;
        return {colors.minimum, colors.value(0.5), colors.maximum};
    }
    const double range = colors.maximum - colors.minimum;
    const double coarse = std::pow(10.0, std::floor(std::log10(range / 5.0)));
    double step = coarse;
    for (const double factor : {2.0, 5.0, 10.0}) {
        if (range / step > 5.5) step = factor * coarse;
    }
    const double first = std::ceil(colors.minimum / step - 1.0e-9) * step;
    constexpr int kMostTicks = 12;  // an end where steps vanish beside the values
    for (int i = 0; i < kMostTicks && first + i * step <= colors.maximum + 1.0e-9 * range; ++i) {
        const double tick = first + i * step;
        ticks.push_back(std::abs(tick) < 1.0e-9 * step ? 0.0 : tick);
    }
    return ticks;
}

}  // namespace

Rgb mapColor(std::string_view map, double place) {
    if (map == "gray") return between(kGray, 2, place);
    if (map == "inferno") return between(data::kInferno, data::kColorMapCount, place);
    if (map == "turbo") return between(data::kTurbo, data::kColorMapCount, place);
    if (map == "spectrum") return between(kSpectrum, 5, place);
    return between(data::kViridis, data::kColorMapCount, place);
}

double FalseColors::place(double value) const noexcept {
    const double at =
        logarithmic ? std::log(value / minimum) / std::log(maximum / minimum) : (value - minimum) / (maximum - minimum);
    return at > 0.0 ? std::min(at, 1.0) : 0.0;
}

double FalseColors::value(double place) const noexcept {
    return logarithmic ? minimum * std::pow(maximum / minimum, place) : minimum + place * (maximum - minimum);
}

FalseColors falseColorsOf(const node::Node& node, const std::vector<float>& values) {
    FalseColors colors;
    colors.map = node.choice("color_map");
    colors.logarithmic = node.choice("axis") == "logarithmic";
    colors.isolines = node.integer("isoline_count");
    colors.legend = node.boolean("legend");
    const bool isFixed = node.choice("value_range") == "fixed";
    double least = 1.0e300;
    double most = -1.0e300;
    for (const float value : values) {
        if (!std::isfinite(value)) continue;
        least = std::min(least, double(value));
        most = std::max(most, double(value));
    }
    if (least > most) least = most = 0.0;
    colors.minimum = isFixed ? node.real("minimum") : least;
    colors.maximum = isFixed ? node.real("maximum") : most;
    if (colors.logarithmic) {
        if (!(colors.maximum > 0.0)) colors.maximum = 1.0;
        const double floor = colors.maximum * std::pow(10.0, -node.real("decades"));
        if (!isFixed || !(colors.minimum > 0.0)) colors.minimum = floor;
    }
    if (!(colors.maximum > colors.minimum)) {
        colors.maximum = colors.minimum + std::max(1.0e-6, 1.0e-6 * std::abs(colors.minimum));
    }
    return colors;
}

Canvas colorValues(const std::vector<float>& values, int width, int height, const FalseColors& colors) {
    Canvas canvas(width, height, Rgb{0, 0, 0});
    const auto placeAt = [&](int x, int y) { return colors.place(values[std::size_t(y) * std::size_t(width) + std::size_t(x)]); };
    const auto step = [&](double place) { return static_cast<int>(std::floor(place * (colors.isolines + 1))); };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double place = placeAt(x, y);
            const bool onLine = colors.isolines > 0 && ((x + 1 < width && step(placeAt(x + 1, y)) != step(place)) ||
                                                        (y + 1 < height && step(placeAt(x, y + 1)) != step(place)));
            const Rgb color = mapColor(colors.map, place);
            const bool isDark = color[0] * 3 + color[1] * 6 + color[2] < 1280;
            canvas.set(x, y, !onLine ? color : isDark ? Rgb{255, 255, 255} : Rgb{0, 0, 0});
        }
    }
    return canvas;
}

Canvas withLegend(const Canvas& picture, const FalseColors& colors, const std::string& unit) {
    if (!colors.legend) return picture;
    constexpr Rgb kInk{0, 0, 0};
    const int dot = std::max(1, picture.height() / 400);
    const int line = kLineHeight * dot;
    const std::vector<double> ticks = ticksOf(colors);
    int letters = letterCount(unit);
    for (const double tick : ticks) letters = std::max(letters, letterCount(significant(tick, 4)));
    const int bar = 12 * dot;
    const int gap = 6 * dot;
    const int height = std::max(picture.height(), 10 * line);
    Canvas canvas(picture.width() + gap + bar + gap + letters * kLetterWidth * dot + gap, height, Rgb{255, 255, 255});
    canvas.copy(picture, 0, 0);
    const int left = picture.width() + gap;
    const int top = 2 * line;
    const int bottom = height - line;
    for (int y = top; y < bottom; ++y) {
        canvas.fill(left, y, left + bar, y + 1, mapColor(colors.map, (bottom - 0.5 - y) / (bottom - top)));
    }
    canvas.text(left, line / 2, dot, unit, kInk);
    for (const double tick : ticks) {
        const int y = static_cast<int>(std::lround(bottom - colors.place(tick) * (bottom - top)));
        canvas.fill(left + bar, y, left + bar + gap / 2, y + dot, kInk);
        canvas.text(left + bar + gap, y - kLetterHeight * dot / 2, dot, significant(tick, 4), kInk);
    }
    return canvas;
}

DisplayImage displayOf(const Canvas& canvas, int bits) {
    DisplayImage display{canvas.width(), canvas.height(), "srgb", 0.0, {}, bits};
    for (const unsigned char code : canvas.codes()) display.append(code / 255.0);
    return display;
}

std::string significant(double value, int digits) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, digits).ptr;
    return std::string(text, end);
}

}  // namespace nemra::core
