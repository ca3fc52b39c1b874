// Ratings of glare with the sources that cause them.
#include <array>

#include "engine/core/glare/view.h"
#include "engine/core/output/document.h"
#include "engine/core/output/encode.h"
#include "engine/core/output/picture.h"
#include "engine/core/output/text_content.h"
#include "engine/core/output/write_result.h"

namespace nemra::core {
namespace {

/// Logarithmic, since sources are so much brighter than the rest; their outlines alone, so that the picture shows what they are.
Canvas picture(const GlareView& view) {
    FalseColors colors;
    colors.map = "gray";
    colors.logarithmic = true;
    colors.maximum = 1.0e-6;
    for (const float luminance : view.field.luminance) colors.maximum = std::max(colors.maximum, double(luminance));
    constexpr double kDecades = 3.0;
    colors.minimum = colors.maximum * std::pow(10.0, -kDecades);
    return withLegend(drawGlare(view, colors, {true, true}), colors, "cd/m2");
}

DisplayImage makeGlarePicture(const Raw& raw, const node::Node& output, bool, int bits) {
    return displayOf(picture(glareViewOf(raw, output)), bits);
}

std::optional<std::string> makeGlareReport(const Raw& raw, const node::Node& output, std::string_view format) {
    if (format != "html" && format != "txt" && format != "csv") return std::nullopt;
    const GlareView view = glareViewOf(raw, output);
    std::string title = textOf(*output.child("title"), &raw);
    if (title.empty()) title = "Glare";
    if (format == "txt") return glareText(view, output, title);
    if (format == "csv") return glareCsv(view, output, title);
    return glareHtml(view, output, title, encodePng(displayOf(picture(view), 8)));
}

constexpr std::array<const char*, 3> kFormats{"html", "txt", "csv"};
const bool kKnown = addDocumentClass("glarereport", makeGlareReport);
const bool kPictureKnown = addDisplayClass("glarereport", makeGlarePicture);
const bool kFormatsKnown =
    outputClasses().add("glarereport", [](const node::Node&) { return std::span<const char* const>(kFormats); });

}  // namespace
}  // namespace nemra::core
