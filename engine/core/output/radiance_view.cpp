#include "engine/core/output/radiance_view.h"

#include <array>
#include <charconv>
#include <cmath>
#include <numbers>

namespace nemra::core {

namespace {

constexpr double kDegrees = 180.0 / std::numbers::pi;

void append(std::string& text, const char* option, std::initializer_list<double> numbers) {
    text += option;
    for (const double number : numbers) {
        std::array<char, 32> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::general, 9).ptr;
        text += ' ';
        text.append(digits.data(), end);
    }
}

std::string view(const char* type, const node::Node& camera, double horizontal, double vertical) {
    const auto position = camera.vector("position");
    const auto target = camera.vector("target");
    const auto up = camera.vector("up");
    std::array<double, 3> direction{target[0] - position[0], target[1] - position[1], target[2] - position[2]};
    const double length = std::hypot(direction[0], direction[1], direction[2]);
    if (!(length > 0.0)) return "";
    for (double& component : direction) component /= length;
    std::string text = type;
    append(text, " -vp", {position[0], position[1], position[2]});
    append(text, " -vd", {direction[0], direction[1], direction[2]});
    append(text, " -vu", {up[0], up[1], up[2]});
    append(text, " -vh", {horizontal});
    append(text, " -vv", {vertical});
    return text;
}

/// Full angle in degrees that an extent at distance 1 is seen under.
double angleOf(double extent) { return 2.0 * std::atan(extent / 2.0) * kDegrees; }

std::string stdcamView(const node::Node& camera) {
    const double focal = camera.real("focal_length") * 1.0e-3;
    double distance = focal;  // of the film
    if (camera.choice("aperture") == "lens") {
        const double focus = camera.real("focus_distance");
        if (!(focus > focal)) return "";
        distance = focal * focus / (focus - focal);
    }
    return view(" -vtv", camera, angleOf(camera.real("film_width") * 1.0e-3 / distance),
                angleOf(camera.real("film_height") * 1.0e-3 / distance));
}

/// The lens of which nothing but its place counts: Radiance knows no distortion.
std::string realrectcamView(const node::Node& camera, int width, int height) {
    const double focal = camera.real("focal_length") * 1.0e-3;
    const double focus = camera.real("focus_distance");
    if (!(focus > focal) || camera.choice("distortion") != "none") return "";
    const double distance = focal * focus / (focus - focal);
    const double across = width * camera.real("pixel_pitch_x") * 1.0e-6;
    const double down = height * camera.real("pixel_pitch_y") * 1.0e-6;
    std::string text = view(" -vtv", camera, angleOf(across / distance), angleOf(down / distance));
    if (text.empty()) return text;
    append(text, " -vs", {camera.real("shift_x") * 1.0e-3 / across});
    append(text, " -vl", {camera.real("shift_y") * 1.0e-3 / down});
    return text;
}

std::string fisheyeView(const node::Node& camera, int width, int height) {
    const std::string& projection = camera.choice("projection");
    const char* const type = projection == "equidistant"     ? " -vta"
                             : projection == "orthographic"  ? " -vth"
                             : projection == "stereographic" ? " -vts"
                                                             : nullptr;
    // Only where the circle touches all four sides do both angles equal the field.
    if (!type || width != height || camera.choice("fit") != "circle") return "";
    return view(type, camera, camera.real("fov"), camera.real("fov"));
}

}  // namespace

std::string radianceView(const node::Node& instrument, int width, int height) {
    const double aspect = static_cast<double>(height) / width;
    if (instrument.type() == "idealrectcam") {
        const double fov = instrument.real("horizontal_fov");
        return view(" -vtv", instrument, fov, angleOf(2.0 * std::tan(fov / 2.0 / kDegrees) * aspect));
    }
    if (instrument.type() == "stdcam") return stdcamView(instrument);
    if (instrument.type() == "orthocam") {
        const double extent = instrument.real("view_width");
        return view(" -vtl", instrument, extent, extent * aspect);
    }
    if (instrument.type() == "realrectcam") return realrectcamView(instrument, width, height);
    if (instrument.type() == "fisheyecam") return fisheyeView(instrument, width, height);
    return "";
}

}  // namespace nemra::core
