/// From a sensor's channels to display values: what an output node of type rgbimage asks for.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/core/output/color_space.h"
#include "engine/core/result/raw.h"
#include "engine/core/translate/class_table.h"
#include "engine/node/node.h"

namespace nemra::core {

/// Tristimulus values, rows from the top, three per pixel. Y is a luminance in cd/m2 until a gain makes it relative to the
/// display's white; for an energy sensor it stands for the radiance.
struct XyzImage {
    int width = 0;
    int height = 0;
    std::vector<float> values;
};

/// One more number per pixel, rows from the top, of the image's size.
struct Plane {
    std::string name;
    std::string unit;
    std::vector<float> values;
};

/// What the filters of an output work on, one after the other.
struct Picture {
    const Film& film;
    const LightView& view;
    XyzImage image;
    bool fast;                    ///< draft: a filter may trade quality for time
    std::vector<Plane> planes{};  ///< channels beside the image: what spectocustom and spectraltohv make, or a table shows
    const Raw* raw = nullptr;     ///< what it comes from, where that is known
};

/// What a class of the family "filter" does.
using Filter = void (*)(const node::Node& node, Picture& picture);
ClassTable<Filter>& filterClasses();

/// Runs the filters of an output in their order. Those that aren't known are left out with a warning.
void runFilters(const node::Node& output, Picture& picture);

/// The sensor's channels as tristimulus values by the observer of that option name ("cie1931_2deg", "cie1964_10deg"). What a
/// ciexyz sensor measured goes through as it is; band values are weighed by the observer's mean over each band and 683 lm/W;
/// energy alone makes a grey of the D65 chromaticity.
XyzImage toXyz(const Film& film, const LightView& view, std::string_view observer);

/// Code values of a display, rows from the top and without gaps, R, G, B per pixel, 8 bits each or 16 with the high byte first.
struct DisplayImage {
    int width = 0;
    int height = 0;
    std::string colorSpace;  ///< of an output
    double gamma = 0.0;      ///< exponent of the display curve; 0: the colour space's own curve
    std::vector<unsigned char> bytes;
    int bits = 8;
    std::optional<ColorSpace> device{};  ///< that of a display which no named colour space describes, in place of `colorSpace`
    bool hasProfile = true;              ///< false for codes from which no colour can be told
    double black = 0.0;                  ///< light that code 0 shows, relative to white's
    /// Light of evenly spaced codes from 0 to 1, relative to white's, for a curve that neither `gamma` nor a colour space names.
    std::vector<double> lights{};

    const ColorSpace& space() const { return device ? *device : nemra::core::colorSpace(colorSpace); }
    /// A component's code from 0 to 1 behind those that there are.
    void append(double code);
};

/// Code values of tristimulus values relative to the display's white.
DisplayImage encodeDisplay(const XyzImage& image, const std::string& space, double gamma, int bits);

/// How an output of a class of its own becomes a picture; an rgbimage needs none.
using MakeDisplay = DisplayImage (*)(const Raw& raw, const node::Node& output, bool fast, int bits);
/// By the type of the output.
bool addDisplayClass(std::string_view type, MakeDisplay make);

/// Runs the output's filters (spectoxyz and averageautogain if it lists none) and encodes the result in its colour space.
/// Filters that aren't known are left out with a warning; an output that isn't counts as an rgbimage, with a warning.
DisplayImage makeDisplayImage(const Raw& raw, bool fast, int bits = 8);

/// Name of the output's colour space, "srgb" where the node has none.
std::string colorSpaceOf(const node::Node* output);

}  // namespace nemra::core
