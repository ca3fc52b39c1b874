// Ratings of glare: the published table and worked examples, closed forms, and views whose sources are known exactly.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "engine/core/glare/join_pixels.h"
#include "engine/core/glare/rating.h"
#include "engine/core/output/projections.h"
#include "engine/core/output/write_result.h"
#include "tests/engine/light/render_scene.h"
#include "tests/engine/output/picture_maker.h"

namespace nemra::outputtest {
namespace {

using core::operator-;
using core::GlareRating;
using core::GlareSearch;
using core::GlareSource;
using core::GlareSources;
using core::Vec3;
using core::VisualField;

constexpr double kDegree = std::numbers::pi / 180.0;

Vec3 towards(double right, double up, double forward) { return core::normalized(Vec3{right, up, forward}); }

TEST(Glare, PositionIndexOfTheTable) {
    const auto at = [](double t, double h, double r) { return core::tableIndex(towards(t, h, r), 0.0).value.value_or(-1.0); };
    EXPECT_NEAR(at(0, 0, 1), 1.0, 1e-9);
    EXPECT_NEAR(at(0, 1.5, 1), 13.15, 1e-9);  // the printed examples of a lighting course
    EXPECT_NEAR(at(0, 1.5, 3), 2.86, 1e-9);
    EXPECT_NEAR(at(2, 1.5, 1), 12.85, 1e-9);
    EXPECT_NEAR(at(-2, 1.5, 3), 3.10 / 3 + 3.30 * 2 / 3, 1e-9) << "between two rows; left and right alike";
    EXPECT_NEAR(at(0, 2, 20), 1.26, 1e-9);
    EXPECT_NEAR(at(0.05, 0.05, 1), (1.00 + 1.26 + 1.05 + 1.22) / 4, 1e-9);
    EXPECT_NEAR(at(0, 1.7, 1), 16.2, 1e-9) << "on the last entry of its row";
}

TEST(Glare, PositionsThatTheTableExcludesSayWhy) {
    const auto why = [](double t, double h, double r) { return core::tableIndex(towards(t, h, r), 0.01).excluded; };
    EXPECT_EQ(why(0, 1.75, 1), "hidden by the brow");
    EXPECT_EQ(why(3.2, 0.1, 1), "T/R beyond 3");
    EXPECT_EQ(why(0, 1.95, 1), "H/R beyond 1.9");
    EXPECT_EQ(why(0, -0.5, 1), "below the line of sight");
    EXPECT_EQ(why(0, 0.5, -1), "behind the eye");
    EXPECT_EQ(why(0, -0.005, 1), "") << "its middle lies below by less than its radius";
}

TEST(Glare, PositionIndexOfTheClosedForms) {
    EXPECT_NEAR(*core::formulaIndex(towards(0, 1.5, 4)).value, 2.197302, 2e-6);
    EXPECT_NEAR(*core::formulaIndex(towards(1, 1.5, 3)).value, 2.756805, 2e-6);
    EXPECT_NEAR(*core::formulaIndex(towards(-0.8, 0.8, 1.5)).value, 3.133377, 2e-6);
    EXPECT_NEAR(*core::formulaIndex(towards(0, -0.5, 1)).value, 1.4, 1e-9);
    EXPECT_NEAR(*core::formulaIndex(towards(0.6, -0.8, 1)).value, 2.2, 1e-9);
    EXPECT_NEAR(*core::formulaIndex(towards(0, -10, 1)).value, 4.6, 1e-9);
}

/// The rating of sources that are given outright.
double ugrOf(double background, const std::vector<std::array<double, 4>>& sources) {  // L, omega, p, count
    GlareSources found;
    for (const auto& [luminance, solidAngle, index, count] : sources) {
        for (int i = 0; i < int(count); ++i) {
            GlareSource source;
            source.luminance = luminance;
            source.solidAngle = solidAngle;
            source.index.value = index;
            found.sources.push_back(source);
        }
    }
    GlareSearch search;
    search.background = GlareSearch::Background::given;
    search.backgroundLuminance = background;
    return core::rateGlare(VisualField{}, found, search).ugr;
}

TEST(Glare, WorkedExamplesOfTheUnifiedRating) {
    EXPECT_NEAR(ugrOf(25, {{1000, 0.01, 1, 1}}), 16.0, 1e-9);
    constexpr double kRound = 15915.5;
    EXPECT_NEAR(
        ugrOf(47.75,
              {{kRound, 0.00804, 13.15, 1}, {kRound, 0.00125, 2.86, 1}, {kRound, 0.00242, 12.85, 2}, {kRound, 0.00079, 3.23, 2}}),
        21.62, 0.005);
    EXPECT_NEAR(ugrOf(47.75, {{6484.6, 0.000486, 1.26, 1}}), 14.6, 0.05);
    EXPECT_NEAR(ugrOf(47.75, {{6484.6, 0.005763, 2.35, 1}}), 18.89, 0.005);
    EXPECT_EQ(ugrOf(50, {}), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(ugrOf(0, {{1000, 0.01, 1, 1}})));
}

/// Sums over the pixels of a projection: solid angle, and its projection along the line of sight.
std::pair<double, double> coverage(const core::Projection& projection, int width, int height) {
    double whole = 0.0;
    double projected = 0.0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double solidAngle = core::solidAngle(projection, x, y);
            whole += solidAngle;
            if (const auto direction = projection.direction(x + 0.5, y + 0.5))
                projected += solidAngle * std::max(0.0, (*direction)[2]);
        }
    }
    return {whole, projected};
}

TEST(Glare, SolidAnglesOfEachProjectionFillItsField) {
    const auto perspective =
        core::perspectiveWithSquarePixels(*make("instrument", "idealrectcam", {{"horizontal_fov", number(90)}}), 64, 64);
    EXPECT_NEAR(coverage(*perspective, 64, 64).first, 4 * std::numbers::pi / 6, 1e-9) << "the face of a cube";
    for (const char* kind : {"equidistant", "equisolid", "stereographic", "orthographic"}) {
        const auto fisheye = core::fisheye(kind, 180, false, 300, 200);
        const auto [whole, projected] = coverage(*fisheye, 300, 200);
        // The rim of the orthographic circle holds solid angle without end, though little of it counts at the eye.
        EXPECT_NEAR(whole, 2 * std::numbers::pi, kind == std::string("orthographic") ? 0.25 : 0.01) << kind;
        EXPECT_NEAR(projected, std::numbers::pi, 0.006) << kind;
    }
    for (const bool equalArea : {false, true}) {
        const auto [whole, projected] = coverage(*core::sphere(equalArea, 360, 180, 360, 181), 360, 181);
        EXPECT_NEAR(whole, 4 * std::numbers::pi, 0.01) << equalArea;
        EXPECT_NEAR(projected, std::numbers::pi, 0.005) << equalArea;
    }
    const auto diagonal = core::fisheye("equidistant", 90, true, 100, 100);
    EXPECT_NEAR((*diagonal->direction(0, 0))[2], std::cos(45 * kDegree), 1e-6);
}

TEST(Glare, ProjectionsAreThoseOfTheCameras) {
    const NodeHandle film35 =
        make("instrument", "stdcam", {{"width", integer(36)}, {"height", integer(24)}, {"focal_length", number(18)}});
    const auto raw = result(film(36, 24, xyzChannels(), [](int, int, int) { return 1.0; }), film35);
    const auto projection = core::projectionOf(*raw);
    ASSERT_TRUE(projection);
    const Vec3 corner = *projection->direction(36, 0);
    EXPECT_NEAR(corner[0] / corner[2], 1.0, 1e-9) << "half of 36 mm at 18 mm, to the right";
    EXPECT_NEAR(corner[1] / corner[2], 12.0 / 18.0, 1e-9) << "upwards";
    EXPECT_FALSE(core::projectionOf(
        *result(film(2, 2, xyzChannels(), [](int, int, int) { return 1.0; }), make("instrument", "orthocam"))));
}

/// A luminous sphere, as seen: its direction and angular radius.
struct Ball {
    Vec3 centre;  ///< right, up, forward, m
    double radius;
    double luminance;
    bool covers(const Vec3& d) const {
        return core::dot(core::normalized(centre), d) > std::sqrt(1.0 - std::pow(radius / core::length(centre), 2));
    }
};

/// Whether a pixel about that direction can show anything but background.
bool isNear(const Vec3& direction, const std::vector<Ball>& balls) {
    constexpr double kPixel = 0.05;  // more than any pixel of these tests
    for (const Ball& ball : balls) {
        const double angle = std::asin(std::min(1.0, ball.radius / core::length(ball.centre)));
        if (core::dot(core::normalized(ball.centre), direction) > std::cos(std::min(std::numbers::pi, angle + kPixel)))
            return true;
    }
    return false;
}

/// Pixels that hold the mean over 6 x 6 directions.
VisualField look(const core::Projection& projection, int width, int height, double background, const std::vector<Ball>& balls) {
    std::vector<float> luminance;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto middle = projection.direction(x + 0.5, y + 0.5);
            if (middle && !isNear(*middle, balls)) {
                luminance.push_back(static_cast<float>(background));
                continue;
            }
            double sum = 0.0;
            for (int i = 0; i < 36; ++i) {
                const auto direction = projection.direction(x + (i % 6 + 0.5) / 6, y + (i / 6 + 0.5) / 6);
                if (!direction) continue;
                double here = background;
                for (const Ball& ball : balls) here = ball.covers(*direction) ? ball.luminance : here;
                sum += here;
            }
            luminance.push_back(static_cast<float>(sum / 36));
        }
    }
    return core::makeVisualField(projection, width, height, std::move(luminance));
}

GlareSearch searchAbove(double luminance, bool byTable = false) {
    GlareSearch search;
    search.luminance = luminance;
    search.mergeAngle = 5.7 * kDegree;
    search.byTable = byTable;
    return search;
}

std::pair<GlareSources, GlareRating> rate(const VisualField& field, const GlareSearch& search) {
    GlareSources found = core::findGlareSources(field, search, {0, 0, field.width, field.height});
    const GlareRating rating = core::rateGlare(field, found, search);
    return {std::move(found), rating};
}

// Two spheres of 2000 cd/m2 before an even background of 50 cd/m2: solid angles, indices and the rating have closed forms. A
// source's diameter is 15 pixels of the fisheye and 18 of the perspective.
TEST(Glare, TwoLuminousSpheres) {
    const std::vector<Ball> balls{{{0, 1.5, 4}, 0.15, 2000}, {{-1, 1.5, 3}, 0.15, 2000}};
    const auto perspective =
        core::perspectiveWithSquarePixels(*make("instrument", "idealrectcam", {{"horizontal_fov", number(90)}}), 480, 480);
    const auto fisheye = core::fisheye("equisolid", 180, false, 640, 640);
    const auto sphere = core::sphere(false, 180, 180, 640, 640);
    for (const auto& [projection, size] :
         {std::pair{perspective.get(), 480}, std::pair{fisheye.get(), 640}, std::pair{sphere.get(), 640}}) {
        const VisualField field = look(*projection, size, size, 50, balls);
        const auto [found, rating] = rate(field, searchAbove(300));
        ASSERT_EQ(found.sources.size(), 2U) << size;
        EXPECT_NEAR(found.sources[0].luminance, 2000, 1) << "what weighs more stands first";
        EXPECT_NEAR(found.sources[0].solidAngle, 0.003874391, 0.003874391 * 0.02);
        EXPECT_NEAR(found.sources[1].solidAngle, 0.005772924, 0.005772924 * 0.02);
        EXPECT_NEAR(*found.sources[0].index.value, 2.197302, 0.005);
        EXPECT_NEAR(*found.sources[1].index.value, 2.756805, 0.005);
        EXPECT_TRUE(found.sources[0].isResolved);
        EXPECT_FALSE(found.sources[0].tooSmall || found.sources[0].tooLarge);
        EXPECT_NEAR(rating.background, 49.86356, 0.02);
        EXPECT_NEAR(rating.ugr, 11.9673, 0.05);
        EXPECT_NEAR(rate(field, searchAbove(300, true)).second.ugr, 11.9673, 0.3) << "the table is coarser";
        GlareSearch given = searchAbove(300);
        given.background = GlareSearch::Background::given;
        given.backgroundLuminance = 50;
        EXPECT_NEAR(rate(field, given).second.ugr, 11.9578, 0.05);
        // Ev = 50 pi + (2000 - 50) pi sum of (r/d)^2 cos b
        double illuminance = 50 * std::numbers::pi;
        for (const Ball& ball : balls) {
            const double d = core::length(ball.centre);
            illuminance += 1950 * std::numbers::pi * std::pow(ball.radius / d, 2) * ball.centre[2] / d;
        }
        EXPECT_NEAR(rating.verticalIlluminance, illuminance, 0.5);
    }
}

// Pictures may be coarse: a diameter of five pixels is enough for the same rating.
TEST(Glare, CoarsePicturesRateAlike) {
    const std::vector<Ball> balls{{{0, 1.5, 4}, 0.15, 2000}, {{-1, 1.5, 3}, 0.15, 2000}};
    const auto perspective =
        core::perspectiveWithSquarePixels(*make("instrument", "idealrectcam", {{"horizontal_fov", number(90)}}), 160, 160);
    EXPECT_NEAR(rate(look(*perspective, 160, 160, 50, balls), searchAbove(300)).second.ugr, 11.9673, 0.15);
}

// A luminous sphere in a spherical room, whose wall is even: the background follows from the radiosity of concentric spheres.
TEST(Glare, SphereInASphericalRoom) {
    constexpr double kRadius = 0.1;
    const double luminance = 3000.0 / (4 * std::pow(std::numbers::pi * kRadius, 2));
    const auto fisheye = core::fisheye("equidistant", 180, false, 700, 700);
    struct Case {
        Vec3 centre;
        double background, ugr;
    };
    for (const Case& c : {Case{{0, 0.6, 2}, 8.415532, 28.3884}, Case{{0, 1.0, 2.5}, 8.423260, 25.1263},
                          Case{{-0.8, 0.8, 1.5}, 8.414986, 25.5365}}) {
        const VisualField field = look(*fisheye, 700, 700, 8.4340608, {{c.centre, kRadius, luminance}});
        const auto [found, rating] = rate(field, searchAbove(100));
        EXPECT_NEAR(rating.background / c.background, 1.0, 0.003);
        EXPECT_NEAR(rating.ugr, c.ugr, 0.05);
        EXPECT_NEAR(rate(field, searchAbove(100, true)).second.ugr, c.ugr, 0.5) << "a steep part of the table";
    }
}

TEST(Glare, DaylightProbability) {
    const auto fisheye = core::fisheye("equidistant", 180, false, 200, 200);
    // Without a source only the illuminance counts: Ev = 500 pi.
    const auto even = rate(look(*fisheye, 200, 200, 500, {}), searchAbove(2000));
    EXPECT_TRUE(even.first.sources.empty());
    EXPECT_NEAR(even.second.dgp, 5.87e-5 * 500 * std::numbers::pi + 0.16, 1e-4);
    EXPECT_EQ(even.second.ugr, -std::numeric_limits<double>::infinity());
    // The two spheres with 20000 cd/m2: Ev = 328.10 lx.
    const auto fine = core::fisheye("equidistant", 180, false, 700, 700);
    const VisualField field = look(*fine, 700, 700, 50, {{{0, 1.5, 4}, 0.15, 20000}, {{-1, 1.5, 3}, 0.15, 20000}});
    EXPECT_NEAR(rate(field, searchAbove(2000)).second.dgp, 0.2825070, 5e-4);
}

TEST(Glare, ThresholdsOfTheThreeRules) {
    const auto fisheye = core::fisheye("equisolid", 180, false, 200, 200);
    const VisualField field = look(*fisheye, 200, 200, 100, {{{0, 0.2, 1}, 0.2, 1000}, {{0, -0.5, 1}, 0.15, 400}});
    const auto threshold = [&](const GlareSearch& search) { return rate(field, search).first.threshold; };
    EXPECT_EQ(threshold(searchAbove(2000)), 2000);
    GlareSearch mean = searchAbove(0);
    mean.factor = 5;
    const double cap = 2 * std::numbers::pi * (1 - std::sqrt(1 - 0.04 / 1.04));
    const double low = 2 * std::numbers::pi * (1 - std::sqrt(1 - 0.0225 / 1.25));
    EXPECT_NEAR(threshold(mean), 5 * (100 + (900 * cap + 300 * low) / (2 * std::numbers::pi)), 2.0);
    GlareSearch task = mean;
    task.task = towards(0, -0.5, 1);
    task.taskRadius = 4 * kDegree;
    EXPECT_NEAR(threshold(task), 2000, 1) << "within the darker ball, whose radius is 7.7 degrees";
}

TEST(Glare, MergingIsByTheAngleBetweenNearestPixels) {
    const auto perspective =
        core::perspectiveWithSquarePixels(*make("instrument", "idealrectcam", {{"horizontal_fov", number(60)}}), 300, 300);
    const auto spot = [](double degrees) {
        return Ball{{std::sin(degrees * kDegree), 0.1 * std::cos(degrees * kDegree), std::cos(degrees * kDegree)}, 0.017, 5000};
    };
    // Spots of about two degrees across, their middles so many degrees apart.
    const auto count = [&](const std::vector<Ball>& balls, double angle) {
        GlareSearch search = searchAbove(1000);
        search.mergeAngle = angle * kDegree;
        return rate(look(*perspective, 300, 300, 10, balls), search).first.sources.size();
    };
    EXPECT_EQ(count({spot(-4), spot(4)}, 5.7), 2U) << "six degrees of dark between them";
    EXPECT_EQ(count({spot(-4), spot(4)}, 6.5), 1U);
    EXPECT_EQ(count({spot(-3), spot(3)}, 5.7), 1U);
    EXPECT_EQ(count({spot(-10), spot(-5), spot(0), spot(5), spot(10)}, 3.5), 1U) << "a chain";
    EXPECT_EQ(count({spot(-10), spot(-5), spot(0), spot(5), spot(10)}, 0.0), 5U);
}

// The grid that makes joining fast must give what comparing all pairs gives.
TEST(Glare, JoiningIsThatOfAllPairs) {
    const auto fisheye = core::fisheye("equidistant", 180, false, 60, 60);
    const VisualField field = core::makeVisualField(*fisheye, 60, 60, std::vector<float>(3600, 1.0F));
    std::uint32_t state = 12345;
    for (const double angle : {2.0, 5.7, 15.0}) {
        std::vector<char> marked(3600);
        std::vector<std::size_t> pixels;
        for (std::size_t i = 0; i < marked.size(); ++i) {
            state = state * 1664525U + 1013904223U;
            marked[i] = field.solidAngle[i] > 0 && state >> 25 < (angle > 10 ? 1U : 3U);
            if (marked[i]) pixels.push_back(i);
        }
        std::vector<std::size_t> root(3600);
        for (std::size_t i = 0; i < root.size(); ++i) root[i] = i;
        for (bool changed = true; changed;) {
            changed = false;
            for (const std::size_t p : pixels) {
                for (const std::size_t q : pixels) {
                    const int dx = std::abs(int(p % 60) - int(q % 60));
                    const int dy = std::abs(int(p / 60) - int(q / 60));
                    const double between =
                        2 * std::asin(std::min(1.0, 0.5 * core::length(field.directionOf(p) - field.directionOf(q))));
                    if ((std::max(dx, dy) > 1 && between > angle * kDegree) || root[q] <= root[p]) continue;
                    root[q] = root[p];
                    changed = true;
                }
            }
        }
        const core::JoinedPixels joined = core::joinPixels(field, marked, angle * kDegree);
        for (const std::size_t p : pixels) {
            for (const std::size_t q : pixels) EXPECT_EQ(joined.group[p] == joined.group[q], root[p] == root[q]) << p << " " << q;
        }
    }
}

TEST(Glare, SourcesOutsideOfTheMethodAreRatedAndMarked) {
    const auto fisheye = core::fisheye("equidistant", 180, false, 500, 500);
    const VisualField field =
        look(*fisheye, 500, 500, 10, {{{0, 0.9, 2}, 0.5, 5000}, {{-1, 0.3, 2}, 0.01, 5000}, {{0.5, -1, 2}, 0.1, 5000}});
    GlareSearch search = searchAbove(500, true);
    search.mergeAngle = 0.0;
    const auto [found, rating] = rate(field, search);
    ASSERT_EQ(found.sources.size(), 3U);
    EXPECT_TRUE(found.sources[0].tooLarge);
    EXPECT_TRUE(found.sources[1].tooSmall);
    EXPECT_EQ(found.sources[2].index.excluded, "below the line of sight");
    EXPECT_TRUE(std::isfinite(rating.ugr));
    GlareSources without = found;
    without.sources.pop_back();
    EXPECT_EQ(core::rateGlare(field, without, search).ugr, rating.ugr);
}

/// A result with the two spheres seen by a camera.
std::shared_ptr<core::Raw> spheresSeen(const NodeHandle& output, int size = 240) {
    const NodeHandle camera = make("instrument", "idealrectcam",
                                   {{"horizontal_fov", number(90)}, {"width", integer(size)}, {"height", integer(size)}}, "eye");
    const auto projection = core::perspectiveWithSquarePixels(*camera, size, size);
    const VisualField field = look(*projection, size, size, 50, {{{0, 1.5, 4}, 0.15, 2400}, {{-1, 1.5, 3}, 0.15, 2400}});
    return result(film(size, size, xyzChannels(), [&](int x, int y, int) { return double(field.luminance[field.pixel(x, y)]); }),
                  camera, output);
}

TEST(Glare, RatingOfAPartOfAResult) {
    const NodeHandle report =
        make("output", "glarereport", {{"detection", text("mean_factor")}, {"position_index", text("formula")}});
    const auto raw = spheresSeen(report);
    const double brighter = 16 * std::log10(1.2);
    const auto rating = [&](const core::PixelRange& range) { return core::unifiedGlareRating(*raw, range); };
    const double whole = rating({0, 0, 240, 240});
    EXPECT_NEAR(whole, 11.9673 + brighter, 0.1);
    constexpr int kMost = std::numeric_limits<int>::max();
    constexpr int kLeast = std::numeric_limits<int>::min();
    EXPECT_EQ(rating({kLeast, kLeast, kMost, kMost}), whole);
    EXPECT_EQ(rating({240, 240, 0, 0}), whole) << "corners in any order";
    // The sphere on the left alone, before the same background: 8 lg of its share.
    EXPECT_NEAR(rating({0, 0, 100, 240}) - whole, 8 * std::log10(3038.392 / (3038.392 + 3209.845)), 0.05);
    EXPECT_EQ(rating({0, 200, 240, 240}), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(rating({50, 50, 50, 50}), -std::numeric_limits<double>::infinity());
    lighttest::Messages messages;
    EXPECT_TRUE(std::isnan(
        core::unifiedGlareRating(*result(film(4, 4, xyzChannels(), [](int, int, int) { return 1.0; }), nullptr), {0, 0, 4, 4})));
    EXPECT_TRUE(messages.mention("the result has no instrument"));
    core::Channel energy{"E", core::ChannelKind::energy, 0, 0, "W.m^-2.sr^-1"};
    EXPECT_TRUE(std::isnan(core::unifiedGlareRating(
        *result(film(4, 4, {energy}, [](int, int, int) { return 1.0; }), raw->instrument()), {0, 0, 4, 4})));
    EXPECT_TRUE(messages.mention("energy"));
}

TEST(Glare, ReportsSayTheSameInEachFormat) {
    const NodeHandle report =
        make("output", "glarereport", {{"detection", text("mean_factor")}, {"position_index", text("formula")}});
    const auto raw =
        spheresSeen(lighttest::with(report, "title", make("text", "default", {{"content", text("Room <1> & {instrument}")}})));
    const auto written = [&](const char* format) {
        const auto bytes = core::encodeResult(*raw, format, "test");
        return bytes ? std::string(bytes->span().begin(), bytes->span().end()) : std::string();
    };
    const std::string rating = "13.2";  // 11.967 + 16 lg 1.2
    EXPECT_NE(written("csv").find("Unified glare rating," + rating + "\n"), std::string::npos) << written("csv");
    EXPECT_NE(written("txt").find(rating), std::string::npos);
    const std::string page = written("html");
    EXPECT_NE(page.find("<td>" + rating + "</td>"), std::string::npos);
    EXPECT_NE(page.find("<h1>Room &lt;1&gt; &amp; eye</h1>"), std::string::npos);
    EXPECT_NE(page.find("src=\"data:image/png;base64,iVBORw0KGgo"), std::string::npos);
    EXPECT_EQ(std::string(core::outputFormats(*raw).front()), "html");
    raw->setOutput(make("output", "glaremap"));
    EXPECT_TRUE(core::encodeResult(*raw, "png", "test"));
    raw->setOutput(report);
    lighttest::Messages messages;
    EXPECT_FALSE(core::encodeResult(*raw, "xlsx", "test"));
    EXPECT_TRUE(messages.mention("unknown format"));
}

}  // namespace
}  // namespace nemra::outputtest
