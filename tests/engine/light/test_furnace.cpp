#include <gtest/gtest.h>

#include "tests/engine/light/render_scene.h"

namespace nemra::lighttest {
namespace {

constexpr double kBand = 470.0;  // nm, width of the energy sensor

SceneMaker under(double sky, const NodeHandle& instrument) {
    SceneMaker made;
    with(made.setup, "instrument", instrument);
    with(made.setup, "environment", with(make("environment", "uniform"), "radiance", uniform(sky)));
    return made;
}

/// A convex body sees only the even sky: radiance rho L, whatever the shape, from the very first sample.
TEST(WhiteFurnace, ConvexLambertianBodies) {
    for (const double rho : {1.0, 0.5, 0.18}) {
        SceneMaker sphere = under(1.0, camera({0, 0, -4}, {0, 0, 0}, 20.0, 8, 8, energySensor()));
        sphere.add(node::Sphere{}, material(lambertian(uniform(rho))));
        const Rendered result = render(*prepare(sphere.finish()), 4);
        for (int x = 0; x < 8; ++x) {
            for (int y = 0; y < 8; ++y) EXPECT_NEAR(value(*result.film, x, y, 0) / kBand, rho, 1.0e-5);
        }
        EXPECT_EQ(result.wrong, 0U);
    }
    // An ellipsoid and a plate, the latter seen from both sides; background pixels show the sky.
    SceneMaker others = under(1.0, camera({0, 0, -6}, {0, 0, 0}, 60.0, 33, 33, energySensor()));
    others.add(node::Sphere{}, material(lambertian(uniform(0.5)))).transform = {0.5, 0,   0,   -1, 0, 1.5, 0.3, 0,
                                                                                0,   0.2, 0.7, 0,  0, 0,   0,   1};
    others.add(polygon({{1, -1, 0}, {2, -1, 0.2}, {2, 1, 0.2}, {1, 1, 0}}), material(lambertian(uniform(0.5))));
    const Rendered result = render(*prepare(others.finish()), 1);
    int dark = 0;
    for (int x = 0; x < 33; ++x) {
        for (int y = 0; y < 33; ++y) {
            const double level = value(*result.film, x, y, 0) / kBand;
            EXPECT_TRUE(std::abs(level - 0.5) < 1.0e-5 || std::abs(level - 1.0) < 1.0e-5 || std::abs(level - 0.25) < 1.0e-5)
                << level;
            dark += level < 0.9;
        }
    }
    EXPECT_GT(dark, 20);
}

TEST(WhiteFurnace, MirrorsLoseNothing) {
    SceneMaker made = under(1.0, camera({0, 0, -4}, {0, 0, 0}, 30.0, 8, 8, energySensor()));
    made.add(node::Sphere{}, material(make("bsdf", "specular")));
    made.add(node::Cone{0.5F, false}, material(make("bsdf", "specular"))).transform = {1, 0,  0, 0, 0, 0, 1, -1,
                                                                                       0, -1, 0, 2, 0, 0, 0, 1};
    with(made.setup, "layers", make("layer", "generic"));
    std::string why;
    ASSERT_TRUE(made.setup->set("roulette_depth", integer(1000), why));
    const Rendered result = render(*prepare(made.finish()), 4);
    for (int x = 0; x < 8; ++x) {
        for (int y = 0; y < 8; ++y) EXPECT_NEAR(value(*result.film, x, y, 0) / kBand, 1.0, 1.0e-5);
    }
}

node::Mesh cube() {
    node::Mesh mesh;
    for (int axis = 0; axis < 3; ++axis) {
        for (const double side : {-1.0, 1.0}) {
            std::vector<Point> corners;
            for (const auto& [s, t] : {std::pair{-1.0, -1.0}, {1.0, -1.0}, {1.0, 1.0}, {-1.0, 1.0}}) {
                Point p{};
                p[axis] = side;
                p[(axis + 1) % 3] = side * s;
                p[(axis + 2) % 3] = -t;
                corners.push_back(p);
            }
            append(mesh, polygon(corners));
        }
    }
    return mesh;
}

/// Walls that shine with 1 and reflect rho: Le (1 - rho^(k+1)) / (1 - rho) with k reflections, Le / (1 - rho) with all of them.
class ClosedFurnace : public testing::TestWithParam<double> {};

TEST_P(ClosedFurnace, NeumannSeries) {
    const double rho = GetParam();
    const auto lit = [&](const char* side) {
        return material(lambertian(uniform(rho)), emitter(uniform(1.0), {{"side", text(side)}}));
    };
    for (const int depth : {1, 4, 16, 0}) {
        const double exact = (1.0 - (depth > 0 ? std::pow(rho, depth + 1) : 0.0)) / (1.0 - rho);
        for (const bool round : {true, false}) {
            SceneMaker made;
            with(made.setup, "instrument", camera({0.2, 0.1, -0.3}, {0.3, 0.5, 1}, 60.0, 4, 4, energySensor()));
            if (round) {
                made.add(node::Sphere{1.0F, true}, lit("front"));
            } else {
                made.add(cube(), lit("both"));
            }
            std::string why;
            ASSERT_TRUE(made.setup->set("max_depth", integer(depth), why));
            const Rendered result = render(*prepare(made.finish()), 2048, 2);
            double mean = 0.0;
            double variance = 0.0;
            for (int x = 0; x < 4; ++x) {
                for (int y = 0; y < 4; ++y) {
                    const Estimate pixel = estimate(*result.film, x, y, 0);
                    mean += pixel.mean / kBand / 16.0;
                    variance += pixel.error * pixel.error / (kBand * kBand * 256.0);
                }
            }
            const double error = std::sqrt(variance);
            EXPECT_NEAR(mean, exact, 4.5 * error + 1.0e-5 * exact) << "depth " << depth << (round ? " sphere" : " cube");
            EXPECT_LT(error, 0.01 * exact);
            EXPECT_EQ(result.wrong, 0U);
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Reflectances, ClosedFurnace, testing::Values(0.5, 0.8, 0.95));

}  // namespace
}  // namespace nemra::lighttest
