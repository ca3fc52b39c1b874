// A pixel of a picture of the whole sphere spans an angle along its parallel that shrinks with the cosine of its latitude. Each
// row is averaged along the parallel over 1 / cos(latitude) pixels, the angle that a pixel has at the equator.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "engine/common/log.h"
#include "engine/core/output/parallel_rows.h"
#include "engine/core/output/picture.h"
#include "engine/core/output/projections.h"

namespace nemra::core {
namespace {

/// Mean over `span` pixels about each pixel of a row, the outermost ones in part. A closed row goes round.
void averageRow(float* row, int width, int components, double span, bool closed) {
    std::vector<double> sums(std::size_t(width) + 1);
    for (int c = 0; c < components; ++c) {
        const auto cell = [&](int x) -> float& { return row[std::size_t(x) * std::size_t(components) + std::size_t(c)]; };
        for (int x = 0; x < width; ++x) {
            sums[std::size_t(x) + 1] = sums[std::size_t(x)] + (std::isfinite(cell(x)) ? double(cell(x)) : 0.0);
        }
        const double total = sums.back();
        // Integral of the row from its left edge to a place, which lies in the next turn if it is beyond an edge.
        const auto integral = [&](double place) {
            const double turns = std::floor(place / width);
            const double inside = place - turns * width;
            const int whole = std::min(static_cast<int>(inside), width - 1);
            const double density = sums[std::size_t(whole) + 1] - sums[std::size_t(whole)];
            return turns * total + sums[std::size_t(whole)] + (inside - whole) * density;
        };
        for (int x = 0; x < width; ++x) {
            double from = x + 0.5 - 0.5 * span;
            double to = x + 0.5 + 0.5 * span;
            if (!closed) {
                from = std::max(0.0, from);
                to = std::min(double(width), to);
            }
            cell(x) = static_cast<float>((integral(to) - integral(from)) / (to - from));
        }
    }
}

void filterSphereResolutionFix(const node::Node& node, Picture& picture) {
    XyzImage& image = picture.image;
    if (image.values.empty()) return;
    const auto instrument = picture.raw ? picture.raw->instrument() : nullptr;
    const bool isSphere = instrument && instrument->findParameter("longitude_range").spec;
    const bool isPicture = instrument && (instrument->type() == "imported" || instrument->type() == "defaultrawinstrument");
    if (instrument && !isSphere && !isPicture) {
        return log::warning(node.label(), "the picture isn't one of the whole sphere; the filter is left out");
    }
    const double longitudes = isSphere ? instrument->real("longitude_range") : 360.0;
    const auto projection = sphere(isSphere && instrument->choice("projection") == "equal_area", longitudes,
                                   isSphere ? instrument->real("latitude_range") : 180.0, image.width, image.height);
    const double minimum = node.real("minimum_latitude") * std::numbers::pi / 180.0;
    parallelRows(image.height, [&](int y) {
        const double latitude = std::abs(std::asin((*projection->direction(0.5 * image.width, y + 0.5))[1]));
        if (latitude < minimum) return;
        const double span = std::min(double(image.width), 1.0 / std::max(1.0e-9, std::cos(latitude)));
        const std::size_t row = std::size_t(y) * std::size_t(image.width);
        averageRow(image.values.data() + 3 * row, image.width, 3, span, longitudes >= 360.0);
        for (Plane& plane : picture.planes) averageRow(plane.values.data() + row, image.width, 1, span, longitudes >= 360.0);
    });
}

const bool kKnown = filterClasses().add("sphereresolutionfix", filterSphereResolutionFix);

}  // namespace
}  // namespace nemra::core
