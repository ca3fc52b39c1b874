/// Numbers as colours, with a scale beside them.
#pragma once

#include <string>
#include <vector>

#include "engine/core/output/canvas.h"
#include "engine/core/output/picture.h"
#include "engine/node/node.h"

namespace nemra::core {

/// sRGB code at a place from 0 to 1 of the map: viridis, gray, inferno, turbo, spectrum.
Rgb mapColor(std::string_view map, double place);

/// How a picture is coloured.
struct FalseColors {
    std::string map = "viridis";
    double minimum = 0.0, maximum = 1.0;
    bool logarithmic = false;
    int isolines = 0;
    bool legend = true;

    /// 0 for the minimum and less, 1 for the maximum and more; 0 for what is no number.
    double place(double value) const noexcept;
    /// The value at a place.
    double value(double place) const noexcept;
};

/// As the parameters of a node with false colours say, for these values.
FalseColors falseColorsOf(const node::Node& node, const std::vector<float>& values);

/// The values, rows from the top, with lines of equal value; no legend yet.
Canvas colorValues(const std::vector<float>& values, int width, int height, const FalseColors& colors);

/// The picture with a scale to its right if the colours ask for one; `unit` stands on top of it.
Canvas withLegend(const Canvas& picture, const FalseColors& colors, const std::string& unit);

/// Codes of sRGB.
DisplayImage displayOf(const Canvas& canvas, int bits);

/// With so many significant digits, by a decimal point; without zeros at the end.
std::string significant(double value, int digits);

}  // namespace nemra::core
