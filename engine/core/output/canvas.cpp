#include "engine/core/output/canvas.h"

#include <algorithm>

#include "engine/core/output/bitmap_font.h"

namespace nemra::core {

Canvas::Canvas(int width, int height, Rgb color)
    : width_(width), height_(height), codes_(3 * std::size_t(width) * std::size_t(height)) {
    fill(0, 0, width, height, color);
}

Rgb Canvas::at(int x, int y) const {
    const unsigned char* const code = codes_.data() + 3 * (std::size_t(y) * std::size_t(width_) + std::size_t(x));
    return {code[0], code[1], code[2]};
}

void Canvas::set(int x, int y, Rgb color) {
    if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
    std::copy(color.begin(), color.end(), codes_.begin() + 3 * (std::ptrdiff_t(y) * width_ + x));
}

void Canvas::fill(int x0, int y0, int x1, int y1, Rgb color) {
    for (int y = std::max(0, y0); y < std::min(y1, height_); ++y) {
        for (int x = std::max(0, x0); x < std::min(x1, width_); ++x) set(x, y, color);
    }
}

void Canvas::copy(const Canvas& other, int left, int top) {
    for (int y = 0; y < other.height_; ++y) {
        for (int x = 0; x < other.width_; ++x) set(left + x, top + y, other.at(x, y));
    }
}

void Canvas::text(int left, int top, int dot, std::string_view line, Rgb color) {
    forEachDot(line,
               [&](int x, int y) { fill(left + x * dot, top + y * dot, left + (x + 1) * dot, top + (y + 1) * dot, color); });
}

void Canvas::label(int left, int top, int dot, std::string_view line, Rgb color, Rgb rim) {
    for (const int dx : {-dot, 0, dot}) {
        for (const int dy : {-dot, 0, dot}) text(left + dx, top + dy, dot, line, rim);
    }
    text(left, top, dot, line, color);
}

}  // namespace nemra::core
