/// Everything that a map or a report of glare shows.
#pragma once

#include "engine/core/glare/rating.h"
#include "engine/core/output/canvas.h"
#include "engine/core/output/false_color.h"

namespace nemra::core {

struct GlareView {
    VisualField field;
    GlareSearch search;
    GlareSources found;
    GlareRating rating;
};

/// By the parameters of an output of one of the glare classes. Throws std::runtime_error with the reason where ratings aren't
/// possible.
GlareView glareViewOf(const Raw& raw, const node::Node& output);

/// How sources are marked in a picture.
struct GlareMarks {
    bool numbers = true;
    bool outlineOnly = false;
};

/// The luminances in those colours, with the sources marked: in red those that count, in orange those of them whose size lies
/// outside of what the method is meant for, in grey those that are excluded.
Canvas drawGlare(const GlareView& view, const FalseColors& colors, const GlareMarks& marks);

/// Reports. `title` is one line; the page holds `picture`, a PNG file.
std::string glareText(const GlareView& view, const node::Node& report, const std::string& title);
std::string glareCsv(const GlareView& view, const node::Node& report, const std::string& title);
std::string glareHtml(const GlareView& view, const node::Node& report, const std::string& title,
                      const std::vector<char>& picture);

}  // namespace nemra::core
