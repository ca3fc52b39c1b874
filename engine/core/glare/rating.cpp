#include "engine/core/glare/rating.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "engine/common/log.h"

namespace nemra::core {

namespace {

struct Sums {
    double seen = 0.0;        ///< projected solid angle
    double background = 0.0;  ///< of it, that of pixels which don't belong to bright ones
    double light = 0.0;       ///< illuminance by all pixels, lx
    double backgroundLight = 0.0;
};

Sums sumUp(const VisualField& field, const GlareSources& found) {
    Sums sums;
    for (std::size_t pixel = 0; pixel < field.luminance.size(); ++pixel) {
        const double weight = field.projected(pixel);
        const double light = weight * double(field.luminance[pixel]);
        sums.seen += weight;
        sums.light += light;
        if (found.source[pixel] != kNoSource) continue;
        sums.background += weight;
        sums.backgroundLight += light;
    }
    return sums;
}

double unified(const GlareSources& found, double background) {
    double sum = 0.0;
    for (const GlareSource& source : found.sources) {
        if (source.index.value) sum += source.luminance * source.luminance * source.solidAngle / std::pow(*source.index.value, 2);
    }
    if (!(sum > 0.0)) return -std::numeric_limits<double>::infinity();
    return background > 0.0 ? 8.0 * std::log10(0.25 / background * sum) : std::numeric_limits<double>::quiet_NaN();
}

double daylight(const GlareSources& found, double illuminance) {
    double sum = 0.0;
    for (const GlareSource& source : found.sources) {
        if (!source.formula.value) continue;
        sum += source.luminance * source.luminance * source.solidAngle / std::pow(*source.formula.value, 2);
    }
    const double contrast = illuminance > 0.0 ? std::log10(1.0 + sum / std::pow(illuminance, 1.87)) : 0.0;
    return std::min(1.0, 5.87e-5 * illuminance + 9.18e-2 * contrast + 0.16);
}

}  // namespace

GlareRating rateGlare(const VisualField& field, const GlareSources& found, const GlareSearch& search) {
    constexpr double kHemisphere = std::numbers::pi;  // projected solid angle of all that lies before the eye
    const Sums sums = sumUp(field, found);
    const double filling = sums.background > 0.0 ? sums.backgroundLight / sums.background : 0.0;
    const double unseen = std::max(0.0, kHemisphere - sums.seen);
    GlareRating rating;
    rating.covered = std::min(1.0, sums.seen / kHemisphere);
    rating.verticalIlluminance = sums.light + filling * unseen;
    const double whole = sums.seen + unseen;
    switch (search.background) {
        case GlareSearch::Background::withoutSources:
            rating.background = (sums.backgroundLight + filling * unseen) / whole;
            break;
        case GlareSearch::Background::whole:
            rating.background = rating.verticalIlluminance / whole;
            break;
        case GlareSearch::Background::given:
            rating.background = search.backgroundLuminance;
            break;
    }
    rating.ugr = unified(found, rating.background);
    rating.dgp = daylight(found, rating.verticalIlluminance);
    return rating;
}

double unifiedGlareRating(const Raw& raw, const PixelRange& wanted) {
    const auto output = raw.output();
    const bool isGlare = output && (output->type() == "glaremap" || output->type() == "glarereport");
    const node::NodeClass* const report = node::findClass("output", "glarereport");
    if (!isGlare && !report) return std::numeric_limits<double>::quiet_NaN();
    std::string why;
    const auto field = makeVisualField(raw, why);
    if (!field) {
        log::warning("unified glare rating", "it isn't a number: " + why);
        return std::numeric_limits<double>::quiet_NaN();
    }
    const GlareSearch search = isGlare ? glareSearchOf(*output, raw) : glareSearchOf(node::Node(*report, "glarereport"), raw);
    const auto clampX = [&](int x) { return std::clamp(x, 0, field->width); };
    const auto clampY = [&](int y) { return std::clamp(y, 0, field->height); };
    const PixelRange range{clampX(std::min(wanted.x0, wanted.x1)), clampY(std::min(wanted.y0, wanted.y1)),
                           clampX(std::max(wanted.x0, wanted.x1)), clampY(std::max(wanted.y0, wanted.y1))};
    const GlareSources found = findGlareSources(*field, search, range);
    const GlareRating rating = rateGlare(*field, found, search);
    if (std::isinf(rating.ugr)) log::info("unified glare rating", "no source of glare: the rating is minus infinity");
    if (std::isnan(rating.ugr)) log::warning("unified glare rating", "the background is black: the rating isn't a number");
    return rating.ugr;
}

}  // namespace nemra::core
