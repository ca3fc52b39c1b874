/// Drawing on pictures of 8-bit codes.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace nemra::core {

using Rgb = std::array<std::uint8_t, 3>;

/// R, G, B per pixel, rows from the top. What lies outside is not drawn.
class Canvas {
public:
    Canvas(int width, int height, Rgb color);

    int width() const noexcept { return width_; }
    int height() const noexcept { return height_; }
    Rgb at(int x, int y) const;
    void set(int x, int y, Rgb color);
    /// Ends excluded.
    void fill(int x0, int y0, int x1, int y1, Rgb color);
    void copy(const Canvas& other, int left, int top);
    /// One line from its left upper corner, `dot` pixels to a dot of the letters.
    void text(int left, int top, int dot, std::string_view line, Rgb color);
    /// The same with a rim, readable on any ground.
    void label(int left, int top, int dot, std::string_view line, Rgb color, Rgb rim);

    const std::vector<unsigned char>& codes() const noexcept { return codes_; }

private:
    int width_, height_;
    std::vector<unsigned char> codes_;
};

}  // namespace nemra::core
