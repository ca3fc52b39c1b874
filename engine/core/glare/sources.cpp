#include "engine/core/glare/sources.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

#include "engine/common/log.h"
#include "engine/core/glare/join_pixels.h"
#include "engine/core/instrument/camera.h"

namespace nemra::core {

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

/// Mean luminance over the solid angle, of the whole field or about the task; 0 if nothing is seen there.
double meanLuminance(const VisualField& field, const GlareSearch& search) {
    double sum = 0.0;
    double weights = 0.0;
    const double least = search.task ? std::cos(search.taskRadius) : -1.0;
    for (std::size_t i = 0; i < field.luminance.size(); ++i) {
        if (field.solidAngle[i] == 0.0F || (search.task && dot(field.directionOf(i), *search.task) < least)) continue;
        sum += double(field.luminance[i]) * double(field.solidAngle[i]);
        weights += field.solidAngle[i];
    }
    return weights > 0.0 ? sum / weights : 0.0;
}

/// What a source adds to the sum of the unified glare rating; excluded ones come last.
double weightOf(const GlareSource& source) {
    const double glare = source.luminance * source.luminance * source.solidAngle;
    return source.index.value ? glare / (*source.index.value * *source.index.value) : -1.0 / (1.0 + glare);
}

void rate(GlareSource& source, const GlareSearch& search) {
    source.formula = formulaIndex(source.direction);
    source.index =
        search.byTable ? tableIndex(source.direction, std::sqrt(source.solidAngle / std::numbers::pi)) : source.formula;
    source.tooSmall = source.solidAngle < search.minimumSolidAngle;
    source.tooLarge = source.solidAngle > search.maximumSolidAngle;
}

/// Whether the eight neighbours of a pixel belong to its source too. Beyond the edge of the picture all do.
bool isInner(const VisualField& field, const std::vector<int>& labels, int x, int y) {
    const int label = labels[field.pixel(x, y)];
    for (int v = std::max(0, y - 1); v <= std::min(field.height - 1, y + 1); ++v) {
        for (int u = std::max(0, x - 1); u <= std::min(field.width - 1, x + 1); ++u) {
            if (labels[field.pixel(u, v)] != label) return false;
        }
    }
    return true;
}

/// Light and solid angle.
struct Part {
    double light = 0.0;
    double solidAngle = 0.0;
    void add(double luminance, double steradians) {
        light += luminance * steradians;
        solidAngle += steradians;
    }
};

std::vector<GlareSource> measure(const VisualField& field, const std::vector<int>& labels, int count) {
    std::vector<GlareSource> sources(static_cast<std::size_t>(count));
    std::vector<Part> whole(sources.size());
    std::vector<Part> inner(sources.size());
    for (int y = 0; y < field.height; ++y) {
        for (int x = 0; x < field.width; ++x) {
            const std::size_t pixel = field.pixel(x, y);
            if (labels[pixel] < 0) continue;
            const auto label = static_cast<std::size_t>(labels[pixel]);
            GlareSource& source = sources[label];
            const double luminance = field.luminance[pixel];
            const double flux = luminance * double(field.solidAngle[pixel]);
            ++source.pixels;
            source.largestLuminance = std::max(source.largestLuminance, luminance);
            source.illuminance += luminance * field.projected(pixel);
            source.direction = source.direction + field.directionOf(pixel) * flux;
            source.x += (x + 0.5) * flux;
            source.y += (y + 0.5) * flux;
            whole[label].add(luminance, field.solidAngle[pixel]);
            if (isInner(field, labels, x, y)) inner[label].add(luminance, field.solidAngle[pixel]);
        }
    }
    for (std::size_t i = 0; i < sources.size(); ++i) {
        GlareSource& source = sources[i];
        source.isResolved = inner[i].solidAngle > 0.0;
        const Part& pure = source.isResolved ? inner[i] : whole[i];
        source.luminance = pure.light / pure.solidAngle;
        source.solidAngle = whole[i].light / source.luminance;
        source.direction = normalized(source.direction);
        source.x /= whole[i].light;
        source.y /= whole[i].light;
    }
    return sources;
}

/// Direction of a point of the scene in the frame of the view; empty if the instrument has none or the point is where the eye is.
std::optional<Vec3> directionInView(const node::Node* instrument, const Vec3& point) {
    if (!instrument || !instrument->findParameter("target").spec) return std::nullopt;
    try {
        const CameraModel camera = readView(*instrument);
        const Vec3 to = point - camera.position;
        if (!(length(to) > 0.0)) return std::nullopt;
        return normalized(Vec3{dot(to, camera.right), dot(to, camera.up), dot(to, camera.forward)});
    } catch (const SceneFault&) {
        return std::nullopt;
    }
}

}  // namespace

GlareSearch glareSearchOf(const node::Node& output, const Raw& raw) {
    GlareSearch search;
    const std::string& detection = output.choice("detection");
    if (detection == "fixed") {
        search.luminance = output.real("threshold_luminance");
    } else {
        search.factor = output.real("threshold_factor");
    }
    if (detection == "task_factor") {
        const auto instrument = raw.instrument();
        search.task = directionInView(instrument.get(), output.vector("task_position"));
        search.taskRadius = 0.5 * output.real("task_diameter") * kDegree;
        if (!search.task) log::warning(output.label(), "the task has no place in this view; the mean of the picture is taken");
    }
    search.mergeAngle = output.real("merge_angle") * kDegree;
    search.byTable = output.choice("position_index") == "table";
    search.minimumSolidAngle = output.real("minimum_solid_angle");
    search.maximumSolidAngle = output.real("maximum_solid_angle");
    const std::string& background = output.choice("background");
    if (background == "whole") search.background = GlareSearch::Background::whole;
    if (background == "given") {
        search.background = GlareSearch::Background::given;
        search.backgroundLuminance = output.real("background_luminance");
    }
    return search;
}

GlareSources findGlareSources(const VisualField& field, const GlareSearch& search, const PixelRange& range) {
    GlareSources found;
    found.threshold = search.luminance;
    if (search.factor > 0.0) {
        double mean = meanLuminance(field, search);
        if (!(mean > 0.0) && search.task) {
            log::warning("glare", "nothing is seen of the task; the mean of the picture is taken");
            GlareSearch whole = search;
            whole.task.reset();
            mean = meanLuminance(field, whole);
        }
        found.threshold = search.factor * mean;
    }
    std::vector<int>& labels = found.source;
    labels.assign(field.luminance.size(), kNoSource);
    std::vector<char> bright(labels.size());
    for (int y = 0; y < field.height; ++y) {
        for (int x = 0; x < field.width; ++x) {
            const std::size_t pixel = field.pixel(x, y);
            const float luminance = field.luminance[pixel];
            if (!(luminance > 0.0F) || luminance < found.threshold || field.solidAngle[pixel] == 0.0F) continue;
            const bool inside = x >= range.x0 && x < range.x1 && y >= range.y0 && y < range.y1;
            if (inside) bright[pixel] = 1;
            if (!inside) labels[pixel] = kOutsideRange;
        }
    }
    const JoinedPixels joined = joinPixels(field, bright, search.mergeAngle);
    std::vector<GlareSource> sources = measure(field, joined.group, joined.count);
    for (GlareSource& source : sources) rate(source, search);
    std::vector<int> order(sources.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](int a, int b) { return weightOf(sources[std::size_t(a)]) > weightOf(sources[std::size_t(b)]); });
    std::vector<int> place(sources.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        place[std::size_t(order[i])] = static_cast<int>(i);
        found.sources.push_back(sources[std::size_t(order[i])]);
    }
    for (std::size_t pixel = 0; pixel < labels.size(); ++pixel) {
        if (joined.group[pixel] >= 0) labels[pixel] = place[std::size_t(joined.group[pixel])];
    }
    return found;
}

}  // namespace nemra::core
