#include <gtest/gtest.h>

#include <numbers>

#include "tests/engine/light/render_scene.h"

namespace nemra::lighttest {
namespace {

constexpr double kPi = std::numbers::pi;

NodeHandle lamp(double luminance, const char* side = "front") {
    return material(
        make("bsdf", "black"),
        emitter(uniform(1.0), {{"side", text(side)}, {"quantity", text("luminance")}, {"luminance", number(luminance)}}));
}

/// Illuminance at the origin of a small white plate in the plane z = 0 that faces +z, by the light that it sends back aslant.
Estimate illuminance(SceneMaker& made, std::uint32_t samples, double scale = 1.0, const core::PrepareOptions& options = {}) {
    const double s = 1.0e-3 * scale;
    made.add(polygon({{-s, -s, 0}, {s, -s, 0}, {s, s, 0}, {-s, s, 0}}), material(lambertian(uniform(1.0))));
    with(made.setup, "instrument", camera({0, -0.05 * scale, 0.08 * scale}, {0, 0, 0}, 0.01, 1, 1, colorSensor()));
    std::string why;
    made.setup->set("max_depth", integer(1), why);
    const Estimate radiance = renderPixel(made.finish(), samples, options);
    return {radiance.mean * kPi, radiance.error * kPi};
}

void expectClose(const Estimate& got, double exact, const std::string& what) {
    EXPECT_NEAR(got.mean, exact, 4.5 * got.error + 1.0e-4 * exact) << what;
    EXPECT_LT(got.error, 0.005 * exact) << what << ": too noisy to say anything";
}

std::vector<Point> disc(double radius, double height, int corners) {
    std::vector<Point> points;
    for (int i = corners; i-- > 0;) {  // clockwise from above: faces down
        points.push_back({radius * std::cos(2 * kPi * i / corners), radius * std::sin(2 * kPi * i / corners), height});
    }
    return points;
}

/// Howell, Catalog of Radiation Configuration Factors: element to coaxial disc.
TEST(AreaLights, Disc) {
    constexpr int kCorners = 720;
    const double share = std::sin(2 * kPi / kCorners) * kCorners / (2 * kPi);  // area of the polygon over that of its circle
    for (const auto& [h, exact] :
         {std::pair{0.1, 3020.7622}, {0.5, 1570.7963}, {1.0, 628.31853}, {2.0, 184.79957}, {10.0, 7.8343956}}) {
        SceneMaker made;
        made.add(polygon(disc(0.5 / std::sqrt(share), h, kCorners)), lamp(1000));
        expectClose(illuminance(made, h < 0.2 ? 1 << 18 : 1 << 15), exact, "h " + std::to_string(h));
    }
}

TEST(AreaLights, Sphere) {
    struct Row {
        double d, thetaDeg, exact;
    };
    for (const Row& row :
         {Row{0.5, 0, 785.39816}, {1, 0, 196.34954}, {2, 0, 49.087385}, {2, 45, 34.710023}, {4, 60, 6.1359232}}) {
        const double theta = row.thetaDeg * kPi / 180.0;
        for (const bool stretched : {false, true}) {  // the second is the same sphere through a shear that undoes itself
            SceneMaker made;
            node::Instance& instance = made.add(node::Sphere{stretched ? 0.125F : 0.25F, false}, lamp(1000));
            instance.transform = {1, 0, 0, row.d * std::sin(theta), 0, 1, 0, 0, 0, 0, 1, row.d * std::cos(theta), 0, 0, 0, 1};
            if (stretched) {
                for (const int i : {0, 5, 10}) instance.transform[i] = i == 0 ? -2.0 : 2.0;  // mirrored, twice as large
            }
            expectClose(illuminance(made, 1 << 15), row.exact, "d " + std::to_string(row.d));
        }
    }
}

double cornerFactor(double a, double b, double c) {  // Howell B-3
    const double A = a / c, B = b / c;
    const double p = std::sqrt(1 + A * A), q = std::sqrt(1 + B * B);
    return (A / p * std::atan(B / p) + B / q * std::atan(A / q)) / (2 * kPi);
}

/// A rectangle over [x0, x1] x [y0, y1] at height c that faces down, in n x n cells.
node::Mesh panel(double x0, double x1, double y0, double y1, double c, int n = 1) {
    node::Mesh mesh;
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            const double xa = x0 + (x1 - x0) * i / n, xb = x0 + (x1 - x0) * (i + 1) / n;
            const double ya = y0 + (y1 - y0) * j / n, yb = y0 + (y1 - y0) * (j + 1) / n;
            append(mesh, polygon({{xa, ya, c}, {xa, yb, c}, {xb, yb, c}, {xb, ya, c}}));
        }
    }
    return mesh;
}

TEST(AreaLights, RectangleParallelAndPerpendicular) {
    struct Row {
        double a, b, c, exact;
    };
    for (const Row& row : {Row{1, 1, 1, 435.20988}, {2, 1, 1.5, 384.40421}, {0.6, 0.6, 2.2, 67.696385}}) {
        EXPECT_NEAR(cornerFactor(row.a, row.b, row.c) * 1000 * kPi, row.exact, 1.0e-4);
        SceneMaker made;
        made.add(panel(0, row.a, 0, row.b, row.c), lamp(1000));
        expectClose(illuminance(made, 1 << 15), row.exact, "parallel");
    }
    SceneMaker centred;
    centred.add(panel(-0.6, 0.6, -0.3, 0.3, 2.0), lamp(1000));
    expectClose(illuminance(centred, 1 << 15), 167.57304, "centred");
    for (const Row& row : {Row{1, 1, 1, 175.09414}, {1, 2, 1.5, 115.34511}, {3, 1, 0.5, 527.46261}}) {
        SceneMaker made;  // in the plane x = c, facing -x
        made.add(polygon({{row.c, 0, 0}, {row.c, 0, row.a}, {row.c, row.b, row.a}, {row.c, row.b, 0}}), lamp(1000));
        expectClose(illuminance(made, 1 << 16), row.exact, "perpendicular");
    }
}

/// However a light is cut into triangles, scaled or instanced, and whether it is sampled or found by chance, it gives the same
/// light.
TEST(AreaLights, TessellationScaleAndTracerDoNotMatter) {
    const double exact = 435.20988;
    for (const int n : {1, 10, 100}) {
        SceneMaker made;
        made.add(panel(0, 1, 0, 1, 1, n), lamp(1000));
        expectClose(illuminance(made, 1 << 15), exact, std::to_string(n));
    }
    SceneMaker instanced;
    instanced.add(panel(0, 0.5, 0, 0.5, 0.5), lamp(1000)).transform = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
    expectClose(illuminance(instanced, 1 << 15), exact, "scaled instance");
    for (const double scale : {1.0e-3, 1.0e3}) {
        SceneMaker made;
        made.add(panel(0, scale, 0, scale, scale), lamp(1000));
        expectClose(illuminance(made, 1 << 15, scale), exact, "scale " + std::to_string(scale));
    }
    SceneMaker packets;
    packets.add(panel(0, 1, 0, 1, 1), lamp(1000));
    core::PrepareOptions embree;
    embree.flatLimit = 0;
    expectClose(illuminance(packets, 1 << 15, 1.0, embree), exact, "Embree");
}

/// A half-open tin of so many triangles, smooth like a lampshade, shining outwards: no two of its triangles face one way.
node::Mesh shade(int around, int along) {
    node::Mesh mesh;
    for (int j = 0; j <= along; ++j) {
        for (int i = 0; i < around; ++i) {
            const double angle = 2 * kPi * i / around, height = 1.0 * j / along, radius = 0.5 + 0.3 * height * height;
            mesh.vertices.insert(mesh.vertices.end(), {radius * std::cos(angle), radius * std::sin(angle), height});
            if (j == along) continue;
            const std::int32_t a = j * around + i, b = j * around + (i + 1) % around;
            mesh.triangles.insert(mesh.triangles.end(), {a, b, b + around, a, b + around, a + around});
        }
    }
    return mesh;
}

/// Lamps above the plate of illuminance(): one mesh in `count` places, turned, mirrored and stretched; or each its own mesh.
SceneMaker lamps(const node::Mesh& mesh, int count, bool shared, const NodeHandle& light) {
    SceneMaker made;
    for (int i = 0; i < count; ++i) {
        const double angle = 2.4 * i, side = i % 2 == 0 ? 1.0 : -1.0, wide = 0.05 + 0.02 * (i % 3), high = 0.2 / (1 + i % 4);
        const double c = std::cos(angle), s = std::sin(angle), away = 0.1 + 0.02 * i;
        node::Instance* instance = nullptr;
        if (shared && i > 0) {
            made.scene.instances.push_back(std::make_shared<node::Instance>(*made.scene.instances[0]));
            instance = made.scene.instances.back().get();
        } else {
            instance = &made.add(mesh, light);
        }
        instance->transform = {wide * c,
                               -0.5 * wide * s,
                               0.0,
                               away * s,
                               side * wide * s,
                               side * 0.5 * wide * c,
                               0.3 * high,
                               away * c,
                               0.0,
                               0.0,
                               high,
                               0.02,
                               0.0,
                               0.0,
                               0.0,
                               1.0};
    }
    return made;
}

/// Many lamps of one mesh take an entry each, not one for each triangle, and shine as if each were a mesh of its own: few of
/// them and many, in luminance and in flux, which is shared out over the area as it stands after stretching.
TEST(AreaLights, InstancedLampsShineLikeCopies) {
    const NodeHandle flux = material(make("bsdf", "black"),
                                     emitter(uniform(1.0), {{"quantity", text("luminous_flux")}, {"luminous_flux", number(10)}}));
    const auto check = [](const node::Mesh& mesh, int count, const NodeHandle& light) {
        SceneMaker together = lamps(mesh, count, true, light), apart = lamps(mesh, count, false, light);
        const Estimate a = illuminance(together, 1 << 16), b = illuminance(apart, 1 << 16);
        EXPECT_NEAR(a.mean, b.mean, 4.5 * std::hypot(a.error, b.error)) << count;
        EXPECT_LT(std::hypot(a.error, b.error), 0.02 * b.mean) << count << ": too noisy to say anything";
        EXPECT_LT(a.error, 2.0 * b.error) << count << ": the choice of triangles costs too much";
        const auto prepared = prepare(together.finish());
        EXPECT_EQ(prepared->lights().lights.size(), static_cast<std::size_t>(count));
        EXPECT_EQ(prepared->world().triangles.size(), 2U) << "the plate's";
        return prepared->memory();
    };
    check(shade(320, 100), 4, lamp(1000));
    check(shade(320, 100), 4, flux);
    const node::Mesh mesh = shade(100, 60);
    const std::size_t some = check(mesh, 20, flux);
    SceneMaker more = lamps(mesh, 120, true, flux);
    illuminance(more, 1);
    EXPECT_LT(prepare(more.finish())->memory(), some + 100 * 4096) << "memory goes with instances";
}

/// A cone's side has no closed form here, but mesh and cone must agree; so must its area, by the flux it shares out.
TEST(AreaLights, ConeAgreesWithItsMesh) {
    node::Mesh mesh;
    constexpr int kSteps = 256;
    const double top = 0.4;
    for (int i = 0; i < kSteps; ++i) {
        const double a = 2 * kPi * i / kSteps, b = 2 * kPi * (i + 1) / kSteps;
        append(mesh, polygon({{std::cos(a), std::sin(a), 0},
                              {std::cos(b), std::sin(b), 0},
                              {top * std::cos(b), top * std::sin(b), 1},
                              {top * std::cos(a), top * std::sin(a), 1}}));
    }
    const std::array<double, 16> place{0.3, 0.1, 0, 0.6, 0, 0.2, 0, 0.2, 0, 0.05, 0.5, 0.7, 0, 0, 0, 1};
    const NodeHandle bright = material(
        make("bsdf", "black"), emitter(uniform(1.0), {{"quantity", text("luminous_flux")}, {"luminous_flux", number(1000)}}));
    SceneMaker analytic, faceted;
    analytic.add(node::Cone{static_cast<float>(top), false}, bright).transform = place;
    faceted.add(mesh, bright).transform = place;
    const Estimate a = illuminance(analytic, 1 << 18);
    const Estimate b = illuminance(faceted, 1 << 18);
    EXPECT_NEAR(a.mean, b.mean, 4.5 * std::hypot(a.error, b.error) + 3.0e-4 * b.mean);
    EXPECT_LT(std::hypot(a.error, b.error), 0.015 * b.mean);
}

/// What a level says, a camera must read; on the front alone unless both sides shine.
TEST(Emitters, QuantitiesAndSides) {
    const auto read = [](const NodeHandle& light, const NodeHandle& sensor, bool fromBehind) {
        SceneMaker made;  // 1 m x 1 m, front towards -z
        made.add(polygon({{-0.5, -0.5, 0}, {-0.5, 0.5, 0}, {0.5, 0.5, 0}, {0.5, -0.5, 0}}),
                 material(make("bsdf", "black"), light));
        with(made.setup, "instrument", camera({0, 0, fromBehind ? 1.0 : -1.0}, {0, 0, 0}, 5.0, 1, 1, sensor));
        return renderPixel(made.finish(), 256).mean;
    };
    const auto level = [](const char* quantity, double target, const char* side = "front") {
        return emitter(uniform(1.0), {{"quantity", text(quantity)}, {quantity, number(target)}, {"side", text(side)}});
    };
    EXPECT_NEAR(read(level("luminance", 100), colorSensor(), false), 100.0, 1.0e-2);
    EXPECT_NEAR(read(level("luminous_exitance", 100 * kPi), colorSensor(), false), 100.0, 1.0e-2);
    EXPECT_NEAR(read(level("luminous_flux", 100 * kPi), colorSensor(), false), 100.0, 1.0e-2);
    EXPECT_NEAR(read(level("luminous_flux", 100 * kPi, "both"), colorSensor(), true), 50.0, 1.0e-2);
    EXPECT_NEAR(read(level("total_radiance", 7), energySensor(), false), 7.0, 1.0e-4);
    EXPECT_NEAR(read(level("exitance", 7 * kPi), energySensor(), false), 7.0, 1.0e-4);
    EXPECT_NEAR(read(level("power", 7 * kPi), energySensor(), false), 7.0, 1.0e-4);
    EXPECT_EQ(read(level("total_radiance", 7), energySensor(), true), 0.0);
    EXPECT_EQ(read(level("total_radiance", 7, "back"), energySensor(), false), 0.0);
    EXPECT_NEAR(read(level("total_radiance", 7, "back"), energySensor(), true), 7.0, 1.0e-4);
}

/// Radiance through a line of 0.1 nm, seen by the observer and by boxes.
TEST(Emitters, NarrowLineThroughTheCamera) {
    const NodeHandle line =
        make("spectrum", "square", {{"minimum", number(549.95)}, {"maximum", number(550.05)}, {"value", number(10.0)}});
    const auto scene = [&](const NodeHandle& sensor) {
        SceneMaker made;
        made.add(polygon({{-1, -1, 0}, {-1, 1, 0}, {1, 1, 0}, {1, -1, 0}}), material(make("bsdf", "black"), emitter(line)));
        with(made.setup, "instrument", camera({0, 0, -1}, {0, 0, 0}, 5.0, 1, 1, sensor));
        return made;
    };
    SceneMaker luminous = scene(colorSensor());
    const Estimate luminance = renderPixel(luminous.finish(), 4096);
    EXPECT_NEAR(luminance.mean, 679.55, 0.7);
    SceneMaker boxes = scene(make("sensor", "spectralbox"));
    const auto prepared = prepare(boxes.finish());
    const Rendered result = render(*prepared, 1 << 14);
    for (int c = 0; c < 41; ++c)
        EXPECT_NEAR(value(*result.film, 0, 0, c), c == 17 ? 0.1 : 0.0, 5.0e-4) << c;  // 1 W/(m2 sr) in 10 nm
}

}  // namespace
}  // namespace nemra::lighttest
