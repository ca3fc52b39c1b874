#include "engine/core/output/table_titles.h"

#include <numbers>

#include "engine/core/output/false_color.h"

namespace nemra::core {

namespace {

std::string directionTitle(const char* what, const DirectionPatch& patch) {
    constexpr double kDegree = std::numbers::pi / 180.0;
    return std::string(what) + " theta=" + significant(patch.theta / kDegree, 6) + " phi=" + significant(patch.phi / kDegree, 6) +
           " deg";
}

}  // namespace

TableTitles::TableTitles(const node::Node* instrument, int width, int height) {
    if (!instrument || instrument->type() != "bsdfcapture") return;
    ScatterLayout layout = scatterLayoutOf(*instrument);
    if (layout.width() == width && layout.height() == height) layout_ = std::move(layout);
}

std::string TableTitles::column(int x) const {
    return layout_ ? directionTitle("incident", layout_->incident->patch(x)) : std::to_string(x);
}

std::string TableTitles::row(int y) const {
    if (!layout_) return std::to_string(y);
    const char* const what = layout_->isTransmitted(y) ? "transmitted" : "reflected";
    return directionTitle(what, layout_->outgoing->patch(y % layout_->outgoing->count()));
}

}  // namespace nemra::core
