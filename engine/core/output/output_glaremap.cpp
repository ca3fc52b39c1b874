// The luminances in false colours with the sources of glare marked.
#include <array>

#include "engine/core/glare/view.h"
#include "engine/core/output/picture.h"
#include "engine/core/output/write_result.h"

namespace nemra::core {
namespace {

DisplayImage makeGlareMap(const Raw& raw, const node::Node& output, bool, int bits) {
    const GlareView view = glareViewOf(raw, output);
    const FalseColors colors = falseColorsOf(output, view.field.luminance);
    const Canvas canvas =
        withLegend(drawGlare(view, colors, {output.boolean("number_sources"), output.boolean("outline_only")}), colors, "cd/m2");
    return displayOf(canvas, bits);
}

constexpr std::array<const char*, 2> kFormats{"png", "jpg"};
const bool kKnown = addDisplayClass("glaremap", makeGlareMap);
const bool kFormatsKnown =
    outputClasses().add("glaremap", [](const node::Node&) { return std::span<const char* const>(kFormats); });

}  // namespace
}  // namespace nemra::core
