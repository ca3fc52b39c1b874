// Instances, layers, links and whatever may be wrong with them.
#include <gtest/gtest.h>

#include <limits>

#include "tests/engine/light/render_scene.h"

namespace nemra::lighttest {
namespace {

NodeHandle glow(double radiance, const char* side = "front") {
    return material(make("bsdf", "black"), emitter(uniform(radiance / 470.0), {{"side", text(side)}}));
}

double seen(SceneMaker& made, Point from = {0, 0, -3}, Point to = {0, 0, 0}) {
    with(made.setup, "instrument", camera(from, to, 0.1, 1, 1, energySensor()));
    return renderPixel(made.finish(), 16).mean;
}

const std::vector<Point> kSquare{{-1, -1, 0}, {-1, 1, 0}, {1, 1, 0}, {1, -1, 0}};  // front towards -z

using Matrix = std::array<double, 16>;

TEST(Instances, FrontStaysFrontUnderAnyMap) {
    const Matrix maps[] = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
                           {-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
                           {2, 0, 0, 0, 0, 0.1, 0, 0, 0, 0, 2.5, 0, 0, 0, 0, 1},
                           {1, 0.5, 0, 0, 0, 1, 0.3, 0, 0, 0, 1, 0.1, 0, 0, 0, 1},
                           {0, -3, 0, 0, 3, 0, 0, 0, 0, 0, 1e-3, 0, 0, 0, 0, 1}};
    for (const Matrix& map : maps) {
        SceneMaker mesh, inner, cone;
        mesh.add(polygon(kSquare), glow(7)).transform = map;
        EXPECT_NEAR(seen(mesh), 7.0, 1.0e-4);
        EXPECT_NEAR(seen(mesh, {0, 0, 3}), 0.0, 0.0);
        inner.add(node::Sphere{1.0F, false}, glow(7)).transform = map;
        EXPECT_NEAR(seen(inner), 7.0, 1.0e-4) << "map " << &map - maps;
        inner.scene.geometries[0]->shape = node::Sphere{1.0F, true};
        EXPECT_NEAR(seen(inner), 0.0, 0.0);
        EXPECT_NEAR(seen(inner, {0, 0, 0}, {0, 0.01, 1}), 7.0, 1.0e-4);
    }
    // Mirroring turns the winding round; the front stays where the map takes it: here to +z.
    SceneMaker turned;
    turned.add(polygon(kSquare), glow(7)).transform = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1};
    EXPECT_NEAR(seen(turned, {0, 0, 3}), 7.0, 1.0e-4);
    EXPECT_EQ(seen(turned), 0.0);
}

/// A large mesh that stands many times is traced through Embree's instances; a copy of it must look the same.
TEST(Instances, SharedMeshesLookLikeCopies) {
    node::Mesh wavy;
    constexpr int kCells = 320;
    for (int i = 0; i <= kCells; ++i) {
        for (int j = 0; j <= kCells; ++j) {
            const double x = 2.0 * i / kCells - 1.0, y = 2.0 * j / kCells - 1.0;
            wavy.vertices.insert(wavy.vertices.end(), {x, y, 0.1 * std::sin(6 * x) * std::cos(5 * y)});
            const double nx = 0.6 * std::cos(6 * x) * std::cos(5 * y), ny = -0.5 * std::sin(6 * x) * std::sin(5 * y);
            wavy.normals.insert(wavy.normals.end(), {static_cast<float>(nx), static_cast<float>(ny), -1.0F});
            if (i == kCells || j == kCells) continue;
            const std::int32_t a = i * (kCells + 1) + j, b = a + kCells + 1;
            wavy.triangles.insert(wavy.triangles.end(), {a, a + 1, b + 1, a, b + 1, b});
        }
    }
    const Matrix places[] = {{1, 0, 0, -1.1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
                             {-1, 0.2, 0, 1.1, 0, 0.8, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1}};
    const auto scene = [&](bool shared) {
        SceneMaker made;
        with(made.setup, "environment", make("environment", "uniform"));
        with(made.setup, "instrument", camera({0, 0, -5}, {0, 0, 0}, 50.0, 12, 12, energySensor()));
        for (const Matrix& place : places) {
            if (shared && !made.scene.geometries.empty()) {
                auto again = std::make_shared<node::Instance>(*made.scene.instances[0]);
                again->transform = place;
                made.scene.instances.push_back(again);
            } else {
                made.add(wavy, material(lambertian(uniform(0.7)))).transform = place;
            }
        }
        return made;
    };
    SceneMaker copies = scene(false), instanced = scene(true);
    const auto prepared = prepare(instanced.finish());
    EXPECT_EQ(prepared->world().instances.size(), 2U);
    const Rendered a = render(*prepare(copies.finish()), 64), b = render(*prepared, 64);
    double level = 0.0, difference = 0.0;
    for (int x = 0; x < 12; ++x) {
        for (int y = 0; y < 12; ++y) {
            level += value(*a.film, x, y, 0);
            difference += std::abs(value(*a.film, x, y, 0) - value(*b.film, x, y, 0));
        }
    }
    EXPECT_LT(difference, 2.0e-3 * level);
}

/// The same scene a continent away from the origin, or the size of a bacterium, is the same picture.
TEST(Instances, PlaceAndSizeOfTheSceneDoNotMatter) {
    const auto level = [](double scale, double shift) {
        SceneMaker made;
        with(made.setup, "environment", make("environment", "uniform"));
        const Matrix place{scale, 0, 0, shift, 0, scale, 0, shift, 0, 0, scale, -shift, 0, 0, 0, 1};
        made.add(polygon({{-1, 0, -1}, {-1, 0, 1}, {1, 0, 1}, {1, 0, -1}}), material(lambertian(uniform(0.8)))).transform = place;
        made.add(polygon({{-1, 0, 0}, {1, 0, 0}, {1, 1, 0}, {-1, 1, 0}}), material(lambertian(uniform(0.8)))).transform = place;
        const auto at = [&](double x, double y, double z) {
            return Point{scale * x + shift, scale * y + shift, scale * z - shift};
        };
        with(made.setup, "instrument", camera(at(0.3, 1.5, -2), at(0, 0.2, -0.2), 12.0, 4, 4, energySensor()));
        const Rendered result = render(*prepare(made.finish()), 512);
        double sum = 0.0;
        for (int x = 0; x < 4; ++x) {
            for (int y = 0; y < 4; ++y) sum += value(*result.film, x, y, 0) / 16.0;
        }
        return sum;
    };
    const double reference = level(1.0, 0.0);
    EXPECT_NEAR(level(1.0e-6, 0.0) / reference, 1.0, 1.0e-3);
    EXPECT_NEAR(level(1.0e6, 0.0) / reference, 1.0, 1.0e-3);
    EXPECT_NEAR(level(1.0, 5.0e6) / reference, 1.0, 1.0e-3);
}

TEST(Instances, WhatCannotBePlacedIsNamedAndLeftOut) {
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    const std::pair<Matrix, const char*> bad[] = {{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, "singular"},
                                                  {{1, 1, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "singular"},
                                                  {{kNan, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "finite"},
                                                  {{1, 0, 0, 1e30, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "1e12"},
                                                  {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 1}, "affine"}};
    for (const auto& [matrix, word] : bad) {
        SceneMaker made;
        made.add(polygon(kSquare), glow(5)).transform = matrix;
        made.add(polygon(kSquare), glow(3));
        Messages messages;
        EXPECT_NEAR(seen(made), 3.0, 1.0e-4);
        EXPECT_EQ(messages.all.size(), 1U);
        EXPECT_TRUE(messages.mention(word)) << messages.all.front();
        EXPECT_TRUE(messages.mention("instance 1"));
    }
    for (const double extreme : {1.0e-20, 1.0e11}) {  // odd, but finite
        SceneMaker made;
        made.add(polygon(kSquare), glow(5)).transform = {extreme, 0, 0, 0, 0, extreme, 0, 0, 0, 0, extreme, 0, 0, 0, 0, 1};
        made.add(node::Sphere{}, material(lambertian(uniform(0.5)))).transform = {extreme, 0, 0,       0, 0, extreme, 0, 0,
                                                                                  0,       0, extreme, 0, 0, 0,       0, 1};
        Messages messages;
        EXPECT_TRUE(std::isfinite(seen(made)));
    }
    SceneMaker missing;
    missing.add(polygon(kSquare), nullptr).materialName = "nowhere";
    missing.scene.instances.push_back(std::make_shared<node::Instance>());
    missing.scene.instances.back()->geometryName = "gone";
    with(missing.setup, "environment", make("environment", "uniform"));
    Messages messages;
    EXPECT_NEAR(seen(missing), 0.5 * 470.0, 1.0e-2);  // the neutral material
    EXPECT_TRUE(messages.mention("nowhere"));
    EXPECT_TRUE(messages.mention("gone"));
}

TEST(Meshes, BadTrianglesAreCountedAndLeftOut) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    node::Mesh mesh = polygon(kSquare);
    mesh.vertices.insert(mesh.vertices.end(), {nan, 0, 0, 1e30, 0, 0, 0.5, 0.5, 0});
    mesh.triangles.insert(mesh.triangles.end(), {0, 1, 99, -1, 0, 1, 0, 1, 4, 0, 1, 5, 0, 0, 1, 0, 2, 6, 2147483647, 0, 1});
    mesh.normals.assign(mesh.vertices.size(), 0.0F);  // and normals of no length
    SceneMaker made;
    made.add(mesh, material(lambertian(uniform(0.5)), emitter(uniform(1.0 / 470.0))));
    Messages messages;
    EXPECT_NEAR(seen(made), 1.0, 1.0e-4);
    EXPECT_TRUE(messages.mention("3 triangles name vertices"));
    EXPECT_TRUE(messages.mention("2 triangles have vertices"));
    SceneMaker empty;
    empty.add(node::Mesh{}, glow(1));
    EXPECT_EQ(seen(empty), 0.0);
    EXPECT_TRUE(messages.mention("no triangle"));
}

TEST(Materials, InstanceWinsUnlessItIsAFallback) {
    for (const bool fallback : {false, true}) {
        for (const bool geometryHasOne : {false, true}) {
            SceneMaker made;
            node::Instance& instance = made.add(polygon(kSquare), glow(2));
            instance.materialIsFallback = fallback;
            if (geometryHasOne) made.scene.geometries[0]->material = glow(3);
            EXPECT_NEAR(seen(made), fallback && geometryHasOne ? 3.0 : 2.0, 1.0e-4);
        }
    }
}

TEST(Materials, ReflectancesBeyondOneAreCut) {
    SceneMaker made;
    with(made.setup, "environment", make("environment", "uniform"));
    made.add(node::Sphere{}, material(lambertian(uniform(3.0))));
    Messages messages;
    EXPECT_NEAR(seen(made) / 470.0, 1.0, 1.0e-5);
    EXPECT_TRUE(messages.mention("bsdf/lambertian"));
}

TEST(Emitters, LightBelowZeroIsCutAndNamedByItsPath) {
    const auto below = [] {
        return make("spectrum", "tabulated", {{"samples", samples({{300, -5.0}, {595, -5.0}, {596, 2.0}, {900, 2.0}})}});
    };
    for (const bool everywhere : {false, true}) {
        SceneMaker made;
        const NodeHandle spectrum =
            everywhere ? make("spectrum", "tabulated", {{"samples", samples({{300, -5.0}, {900, -5.0}})}}) : below();
        const NodeHandle glowing = material(make("bsdf", "black"), with(make("emitter", "lambertian"), "radiance", spectrum));
        glowing->setName("lamp");
        made.scene.nodes = {made.setup, glowing};
        made.add(polygon(kSquare), glowing);
        Messages messages;
        EXPECT_NEAR(seen(made), everywhere ? 0.0 : 2.0 * (830.0 - 595.5), everywhere ? 0.0 : 10.0);
        EXPECT_TRUE(messages.mention("material/generic lamp/emitter (emitter/lambertian): its radiance is below zero"));
    }
    SceneMaker made;
    with(made.setup, "environment", with(make("environment", "uniform"), "radiance", below()));
    Messages messages;
    EXPECT_NEAR(seen(made), 2.0 * (830.0 - 595.5), 10.0);
    EXPECT_TRUE(messages.mention("its radiance is below zero"));
}

NodeHandle linked(const char* family, const char* target, const char* name) {
    return make(family, "linked", {{"node", text(target)}}, name);
}

TEST(Links, AreFollowedAndCyclesEnd) {
    SceneMaker made;
    NodeHandle bright = glow(4);
    bright->setName("bright");
    made.scene.nodes = {made.setup, linked("material", "b", "a"), linked("material", "bright", "b"),
                        bright,     linked("material", "y", "x"), linked("material", "x", "y")};
    node::Instance& instance = made.add(polygon(kSquare), nullptr);
    instance.materialName = "a";
    EXPECT_NEAR(seen(made), 4.0, 1.0e-4);
    instance.materialName = "x";
    Messages messages;
    EXPECT_EQ(seen(made), 0.0);
    EXPECT_TRUE(messages.mention("circle"));
    EXPECT_TRUE(messages.mention("material/linked"));
    instance.materialName = "";
    instance.material = linked("material", "absent", "l");
    EXPECT_EQ(seen(made), 0.0);
    EXPECT_TRUE(messages.mention("absent"));
    // A setup may be reached through a link too, and a spectrum deep inside.
    NodeHandle spectrum = uniform(4.0 / 470.0);
    spectrum->setName("level");
    made.scene.nodes.push_back(spectrum);
    instance.material = material(make("bsdf", "black"), emitter(linked("spectrum", "level", "l")));
    EXPECT_NEAR(seen(made), 4.0, 1.0e-4);
}

NodeHandle layer(const char* name, const char* flagName = nullptr, std::vector<NodeHandle> children = {}) {
    NodeHandle made = make("layer", "generic", {}, name);
    std::string why;
    EXPECT_TRUE(!flagName || made->set(flagName, flag(false), why)) << why;
    for (const NodeHandle& child : children) EXPECT_TRUE(made->setChild(child, why)) << why;
    return made;
}

TEST(Layers, FlagsHoldForWhatIsBelow) {
    const auto level = [](const char* flagName, bool onParent, std::vector<std::vector<std::string>> paths) {
        SceneMaker made;
        const NodeHandle inner = layer("inner", onParent ? nullptr : flagName);
        with(made.setup, "layers",
             layer("main", nullptr, {layer("outer", onParent ? flagName : nullptr, {inner}), layer("free")}));
        made.add(polygon(kSquare), glow(6)).layers = std::move(paths);
        return seen(made);
    };
    EXPECT_NEAR(level(nullptr, false, {{"outer", "inner"}}), 6.0, 1.0e-4);
    for (const char* flagName : {"enabled", "visible", "light"}) {
        EXPECT_EQ(level(flagName, true, {{"outer", "inner"}}), 0.0) << flagName;
        EXPECT_EQ(level(flagName, false, {{"outer", "inner"}}), 0.0) << flagName;
        EXPECT_NEAR(level(flagName, false, {{"outer"}}), 6.0, 1.0e-4) << flagName;
        EXPECT_NEAR(level(flagName, true, {{"outer", "inner"}, {"free"}}), 6.0, 1.0e-4) << flagName;
    }
    Messages messages;
    EXPECT_NEAR(level(nullptr, false, {{"outer", "lost"}}), 6.0, 1.0e-4);
    EXPECT_TRUE(messages.mention("outer/lost"));
}

/// What the camera doesn't see still lights the scene and throws shadows; a disabled thing does neither.
TEST(Layers, InvisibleLampsShine) {
    const auto level = [](const char* flagName) {
        SceneMaker made;
        with(made.setup, "layers", layer("main", nullptr, {layer("lamp", flagName)}));
        made.add(polygon({{-1, -1, 0}, {-1, 1, 0}, {1, 1, 0}, {1, -1, 0}}), material(lambertian(uniform(1.0))));
        // Between camera and wall, shining at the wall.
        made.add(polygon({{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}}), glow(1)).layers = {{"lamp"}};
        with(made.setup, "instrument", camera({0, 0, -3}, {0, 0, 0}, 0.1, 1, 1, energySensor()));
        return renderPixel(made.finish(), 4096);
    };
    EXPECT_EQ(level("enabled").mean, 0.0);
    const Estimate behind = level("visible");
    EXPECT_NEAR(behind.mean, 0.554, 4.5 * behind.error + 1.0e-3);  // form factor of two squares of 2 at distance 1 at the middle
}

/// A surface that lets all light through but shines adds its light and casts no shadow, sampled or found by chance.
TEST(NullSurfaces, ShineWithoutShadow) {
    const NodeHandle ghost = material(make("bsdf", "null"), emitter(uniform(1.0 / 470.0), {{"side", text("both")}}));
    SceneMaker made;
    made.add(polygon({{-1, -1, 1}, {-1, 1, 1}, {1, 1, 1}, {1, -1, 1}}), ghost);
    made.add(polygon({{-1, -1, 2}, {-1, 1, 2}, {1, 1, 2}, {1, -1, 2}}), ghost);
    made.add(polygon({{-9, -9, 3}, {-9, 9, 3}, {9, 9, 3}, {9, -9, 3}}), glow(5));
    EXPECT_NEAR(seen(made), 7.0, 1.0e-4);
    // On a wall behind a ghost, the lamp in front of it gives what it gives without the ghost.
    const auto lit = [](bool veiled) {
        SceneMaker room;
        room.add(polygon({{-1, -1, 0}, {-1, 1, 0}, {1, 1, 0}, {1, -1, 0}}), material(lambertian(uniform(1.0))));
        room.add(polygon({{-1, -1, -4}, {1, -1, -4}, {1, 1, -4}, {-1, 1, -4}}), glow(100));
        if (veiled) room.add(polygon({{-3, -3, -2}, {-3, 3, -2}, {3, 3, -2}, {3, -3, -2}}), material(make("bsdf", "null")));
        with(room.setup, "instrument", camera({0, 0, -1}, {0, 0, 0}, 1.0, 1, 1, energySensor()));
        return renderPixel(room.finish(), 256).mean;
    };
    EXPECT_EQ(lit(true), lit(false));
}

/// A mirror of reflectance 0.5 halves what it shows, on either side, in the right place.
TEST(Mirror, ShowsTheMirroredScene) {
    const NodeHandle mirror = material(with(make("bsdf", "specular"), "reflectance", uniform(0.5)));
    SceneMaker made;
    made.add(polygon(kSquare), mirror);
    made.add(polygon({{1.9, -0.1, -2}, {2.1, -0.1, -2}, {2.1, 0.1, -2}, {1.9, 0.1, -2}}), glow(8, "both"));
    EXPECT_NEAR(seen(made, {-2, 0, -2}, {0, 0, 0}), 4.0, 1.0e-4);
    EXPECT_EQ(seen(made, {-2, 0, -2}, {0.2, 0, 0}), 0.0);
    made.scene.instances[1]->transform[11] = 4.0;  // behind it
    EXPECT_NEAR(seen(made, {-2, 0, 2}, {0, 0, 0}), 4.0, 1.0e-4);
}

}  // namespace
}  // namespace nemra::lighttest
