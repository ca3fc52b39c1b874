// Outputs that aren't plain pictures: tables, single channels, displays of their own kind.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <array>
#include <cmath>

#include "engine/core/output/false_color.h"
#include "engine/core/output/icc_profile.h"
#include "engine/core/output/resolve_links.h"
#include "engine/core/output/write_result.h"
#include "tests/engine/light/render_scene.h"
#include "tests/engine/output/picture_maker.h"

namespace nemra::outputtest {
namespace {

std::shared_ptr<core::Film> ramp(Channels channels) {
    return film(2, 2, std::move(channels), [](int x, int y, int c) { return x + 10.0 * y + 100.0 * c + 0.25; });
}

std::string written(const core::Raw& raw, const char* format = "csv") {
    const auto bytes = core::encodeResult(raw, format, "test");
    return bytes ? std::string(bytes->span().begin(), bytes->span().end()) : "nothing";
}

// A table without filters is that of the sensor's channels, which the tests of files check.
TEST(Outputs, TablesOfFilteredAndOfMetaChannels) {
    NoScene scene;
    scene.content = ramp(xyzChannels());
    scene.factors = {.sensorIrradiance = 0.25, .sensorPower = 1.0e-9, .exposureTime = 0.01};
    core::Raw raw(scene.content, scene, {});
    const auto filtered = [&](const Settings& settings, const NodeHandle& filter) {
        const NodeHandle table = make("output", "table", settings);
        std::string why;
        EXPECT_TRUE(table->addItem(filter, why)) << why;
        raw.setOutput(table);
        return written(raw);
    };
    const auto twice = [] { return make("filter", "gain", {{"gain", number(2)}}); };
    EXPECT_EQ(filtered({{"channels", text("Y")}}, twice()), "x,y,Y [1]\n0,0,200.5\n1,0,202.5\n0,1,220.5\n1,1,222.5\n");
    EXPECT_EQ(filtered({{"channels", text("Y")}, {"quantity", text("sensor_irradiance")}}, twice()).substr(0, 24),
              "x,y,Y [1]\n0,0,50.125\n1,0");
    const NodeHandle half = make("filter", "resize", {{"size", text("pixels")}, {"width", integer(1)}, {"height", integer(1)}});
    EXPECT_EQ(filtered({{"channels", text("Z,X")}, {"separator", text("semicolon")}}, half),
              "x;y;Z [1];X [1]\n0;0;205,75;5,75\n");
    lighttest::Messages messages;
    EXPECT_EQ(filtered({{"channels", text("Y,W")}}, twice()), "nothing");
    EXPECT_TRUE(messages.mention("there is no channel \"W\""));
    raw.setOutput(make("output", "table", {{"channels", text("Y,spp")}}));
    EXPECT_EQ(written(raw).substr(0, 38), "x,y,Y [cd.m^-2],spp [1]\n0,0,100.25,4\n1");
}

TEST(Outputs, FalseColorsRunFromTheSmallestToTheLargestValue) {
    const auto code = [](const core::DisplayImage& image, int x, int y) {
        const unsigned char* const at = image.bytes.data() + 3 * std::size_t(y * image.width + x);
        return core::Rgb{at[0], at[1], at[2]};
    };
    const auto content = film(3, 2, xyzChannels(), [](int x, int y, int) { return std::pow(10.0, x) * (y + 1); });
    const auto picture = [&](const Settings& settings) {
        return core::makeDisplayImage(*result(content, nullptr, make("output", "channelimage", settings)), false);
    };
    const auto bare = picture({{"legend", flag(false)}});
    ASSERT_EQ(bare.width, 3);
    ASSERT_EQ(bare.height, 2);
    EXPECT_EQ(code(bare, 0, 0), (core::Rgb{68, 1, 84}));  // ends of viridis
    EXPECT_EQ(code(bare, 2, 1), (core::Rgb{253, 231, 37}));
    const auto gray =
        picture({{"legend", flag(false)}, {"color_map", text("gray")}, {"value_range", text("fixed")}, {"maximum", number(20)}});
    EXPECT_EQ(code(gray, 1, 0)[0], 128);  // 10 of 20
    const auto decades =
        picture({{"legend", flag(false)}, {"color_map", text("gray")}, {"axis", text("logarithmic")}, {"decades", number(2)}});
    EXPECT_EQ(code(decades, 0, 0)[0], 0);
    EXPECT_EQ(code(decades, 1, 1)[0], 128) << "20 of 2 to 200";
    const auto legend = picture({});
    EXPECT_GT(legend.width, 20) << "a scale beside it";
    EXPECT_EQ(code(legend, 0, 0), (core::Rgb{68, 1, 84})) << "the picture stays in its corner";
    EXPECT_THROW(picture({{"channel", text("Q")}}), std::runtime_error);
}

TEST(Outputs, CurvesOfSpecialDisplays) {
    const auto code = [](double luminance, const Settings& settings) {
        const NodeHandle output = make("output", "special", settings);
        std::string why;
        node::Value identity{std::vector<float>{0, 1, 0, 0, 1, 0, 0, 1, 0}};  // each primary shows Y
        EXPECT_TRUE(output->set("xyz_to_rgb", identity, why)) << why;
        const auto content = film(1, 1, xyzChannels(), [&](int, int, int) { return luminance; });
        return int(core::makeDisplayImage(*result(content, nullptr, output), false).bytes[0]);
    };
    EXPECT_EQ(code(0.5, {}), std::lround(255 * std::pow(0.5, 1 / 2.2)));
    EXPECT_EQ(code(1.0, {{"curve", text("pq")}}), std::lround(255 * 0.5080784)) << "100 cd/m2";
    EXPECT_EQ(code(0.5, {{"curve", text("pq")}, {"peak_luminance", number(2000)}}), std::lround(255 * 0.7518271));
    EXPECT_EQ(code(1.0 / 12, {{"curve", text("hlg")}}), 128);
    EXPECT_EQ(code(1.0, {{"curve", text("hlg")}}), 255);
    EXPECT_EQ(code(0.5, {{"curve", text("srgb")}}), 188);
    auto table = std::make_shared<node::Table>();
    table->columns = {{"code", {{0.0}, {0.5}, {1.0}}}, {"luminance", {{0.0}, {10.0}, {100.0}}}};
    table->rows = 3;
    const node::Value samples{std::shared_ptr<const node::Table>(table)};
    EXPECT_EQ(code(0.10, {{"curve", text("table")}, {"curve_samples", samples}}), 128);
    EXPECT_EQ(code(0.55, {{"curve", text("table")}, {"curve_samples", samples}}), std::lround(255 * 0.75));
    // Light of the display's black is there already: half of 100 is (50 - 10) / 90 of what it can add.
    EXPECT_EQ(code(0.5, {{"black_luminance", number(10)}}), std::lround(255 * std::pow(40.0 / 90.0, 1 / 2.2)));
}

/// X, Y, Z relative to the display's white, of codes from 0 to 1 by an ICC profile. The profile speaks of D50; back from it by
/// the inverse of Bradford's adaptation (Lam 1985, as ICC.1:2010 annex E has it) from that white.
std::array<double, 3> throughProfile(const std::vector<char>& profile, const std::array<double, 3>& rgb,
                                     const core::Vec3& white) {
    cmsHPROFILE from = cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size()));
    cmsHPROFILE to = cmsCreateXYZProfile();
    cmsHTRANSFORM transform =
        cmsCreateTransform(from, TYPE_RGB_DBL, to, TYPE_XYZ_DBL, INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);
    double xyz[3] = {};
    cmsDoTransform(transform, rgb.data(), xyz, 1);
    cmsDeleteTransform(transform);
    cmsCloseProfile(to);
    cmsCloseProfile(from);
    const core::Affine cones{{core::Vec3{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}, {}};
    const core::Vec3 here = cones.vector(white);
    const core::Vec3 d50 = cones.vector({0.9642, 1.0, 0.8249});
    core::Vec3 seen = cones.vector({xyz[0], xyz[1], xyz[2]});
    for (int i = 0; i < 3; ++i) seen[i] *= here[i] / d50[i];
    const core::Vec3 result = cones.inverse().vector(seen);
    return {result[0], result[1], result[2]};
}

/// Colours that went into a picture come out of its codes by its own profile.
TEST(Outputs, ProfilesOfSpecialDisplaysGiveTheColoursThatWentIn) {
    auto measured = std::make_shared<node::Table>();
    measured->columns = {{"code", {{0.0}, {0.2}, {0.5}, {0.8}, {1.0}}}, {"luminance", {{0.4}, {3.0}, {21.0}, {67.0}, {120.0}}}};
    measured->rows = 5;
    const node::Value samples{std::shared_ptr<const node::Table>(measured)};
    // A display of wide gamut with the white (0.31, 0.33).
    const core::ColorSpace wide = core::linearColorSpace({0.68, 0.32}, {0.265, 0.69}, {0.15, 0.06}, {0.31, 0.33});
    const node::Value matrix{std::vector<float>(wide.fromXyz.begin(), wide.fromXyz.end())};
    const core::Vec3 white{0.31 / 0.33, 1.0, 0.36 / 0.33};
    const std::vector<std::array<double, 3>> colours{
        {0.95, 1, 0.98}, {0.5, 0.5, 0.5}, {0.3, 0.2, 0.1}, {0.04, 0.2, 0.1}, {0.05, 0.04, 0.2}};
    const auto expectFit = [&](const char* what, const Settings& settings) {
        const NodeHandle output = make("output", "special", settings);
        std::string why;
        ASSERT_TRUE(output->set("xyz_to_rgb", matrix, why) && output->set("bit_depth", integer(16), why)) << why;
        for (const auto& rgb : colours) {
            const auto xyz = wide.toXyz(rgb[0], rgb[1], rgb[2]);
            const auto content = film(1, 1, xyzChannels(), [&](int, int, int c) { return xyz[std::size_t(c)]; });
            const auto shown = core::makeDisplayImage(*result(content, nullptr, output), false, 16);
            std::array<double, 3> codes{};
            for (std::size_t c = 0; c < 3; ++c) codes[c] = (shown.bytes[2 * c] * 256 + shown.bytes[2 * c + 1]) / 65535.0;
            const auto profile = core::profileOf(shown);
            ASSERT_FALSE(profile.empty()) << what;
            const auto back = throughProfile(profile, codes, white);
            // Half a step of code and of what reads the profile, where the curve is some 16 times as steep as light.
            for (std::size_t c = 0; c < 3; ++c) EXPECT_NEAR(back[c], xyz[c], 3.0e-4) << what << " " << rgb[0] << " " << c;
        }
    };
    expectFit("gamma", {{"curve", text("gamma")}, {"gamma", number(2.4)}});
    expectFit("gamma, black", {{"curve", text("gamma")}, {"black_luminance", number(2.0)}});
    expectFit("srgb", {{"curve", text("srgb")}});
    expectFit("srgb, black", {{"curve", text("srgb")}, {"black_luminance", number(1.0)}});
    expectFit("pq", {{"curve", text("pq")}});
    expectFit("pq, black", {{"curve", text("pq")}, {"peak_luminance", number(1000)}, {"black_luminance", number(5.0)}});
    expectFit("hlg", {{"curve", text("hlg")}});
    expectFit("hlg, black", {{"curve", text("hlg")}, {"black_luminance", number(0.5)}});
    const std::pair<const char*, node::Value> curve{"curve", text("table")};
    expectFit("table", {curve, {"curve_samples", samples}, {"peak_luminance", number(120)}, {"black_luminance", number(0.4)}});
    expectFit("table below its end", {curve, {"curve_samples", samples}, {"peak_luminance", number(90)}});
}

TEST(Outputs, ProfilesOfColourSpacesGiveTheColoursThatWentIn) {
    for (const auto& [name, white] :
         {std::pair{"srgb", core::Vec3{0.3127 / 0.3290, 1.0, 0.3583 / 0.3290}},
          std::pair{"rec2020", core::Vec3{0.3127 / 0.3290, 1.0, 0.3583 / 0.3290}}, std::pair{"xyz", core::Vec3{1.0, 1.0, 1.0}}}) {
        for (const double gamma : {0.0, 1.0, 2.2}) {
            for (const auto& xyz : {std::array{0.8, 0.85, 0.85}, std::array{0.3, 0.25, 0.2}, std::array{0.03, 0.03, 0.035}}) {
                const core::XyzImage colour{1, 1, {float(xyz[0]), float(xyz[1]), float(xyz[2])}};
                const auto shown = core::encodeDisplay(colour, name, gamma, 16);
                std::array<double, 3> codes{};
                for (std::size_t c = 0; c < 3; ++c) codes[c] = (shown.bytes[2 * c] * 256 + shown.bytes[2 * c + 1]) / 65535.0;
                const auto back = throughProfile(core::profileOf(shown), codes, white);
                for (std::size_t c = 0; c < 3; ++c) EXPECT_NEAR(back[c], xyz[c], 1.0e-4) << name << " " << gamma << " " << c;
            }
        }
    }
}

TEST(Outputs, SpecialDisplaysAreTaggedWithTheirPrimaries) {
    const auto shown = [](const Settings& settings, int bits = 8) {
        const auto content = film(1, 1, xyzChannels(), [](int, int, int c) {
            return 0.5 * std::array{0.9505, 1.0, 1.089}[std::size_t(c)];
        });
        return core::makeDisplayImage(*result(content, nullptr, make("output", "special", settings)), false, bits);
    };
    const auto usual = shown({});
    ASSERT_TRUE(usual.device && usual.hasProfile);
    EXPECT_NEAR(usual.device->red.x, 0.64, 1e-3);  // the default matrix is that of IEC 61966-2-1
    EXPECT_NEAR(usual.device->blue.y, 0.06, 1e-3);
    EXPECT_NEAR(usual.device->white.x, 0.3127, 1e-3);
    EXPECT_EQ(usual.gamma, 2.2);
    EXPECT_FALSE(core::profileOf(usual).empty());
    EXPECT_EQ(core::profileOf(shown({{"curve", text("pq")}})), core::profileOf(shown({{"curve", text("pq")}})));
    // Ten bits, in a picture of 16: codes of 1023 steps.
    const auto fine = shown({{"bit_depth", integer(10)}}, 16);
    ASSERT_EQ(fine.bytes.size(), 6U);
    const double code = (fine.bytes[2] * 256 + fine.bytes[3]) / 65535.0 * 1023.0;
    EXPECT_NEAR(code, std::round(code), 0.01);
    EXPECT_NEAR(code, 1023 * std::pow(0.5, 1 / 2.2), 1.0);
}

// What a result carries must not need the scene any more: links in slots of outputs are replaced as those in lists are.
TEST(Outputs, LinksBelowOutputsAreReplacedByWhatTheyStandFor) {
    node::Scene scene;
    scene.nodes = {make("text", "default", {{"content", text("from the scene")}}, "heading")};
    const NodeHandle report = lighttest::with(make("output", "glarereport", {}, "report"), "title",
                                              make("text", "linked", {{"node", text("heading")}}));
    const NodeHandle camera = make("instrument", "idealrectcam");
    std::string why;
    ASSERT_TRUE(camera->setChild(report, why)) << why;
    core::Translation translation(scene);
    const auto complete = core::withoutLinks(camera, translation);
    ASSERT_EQ(complete->list().size(), 1U);
    EXPECT_EQ(complete->list()[0]->child("title")->text("content"), "from the scene");
    EXPECT_EQ(camera->list()[0]->child("title")->type(), "linked") << "the scene's own node stays as it is";
}

TEST(Outputs, BsdfTables) {
    const NodeHandle output = make("output", "bsdf", {{"spectral", text("channels")}});
    const auto raw =
        result(film(2, 1, bands({500, 600}, 10), [](int x, int, int c) { return 0.1 * (x + 1) * (c + 1); }), nullptr, output);
    EXPECT_EQ(written(*raw), "500 nm [sr^-1],0,1\n0,0.1,0.2\n\n600 nm [sr^-1],0,1\n0,0.2,0.4\n");
    // Bands so narrow that the sun's table itself says their weights: 1.3391 and 1.3278 W/(m2 nm) of direct light.
    const NodeHandle solar = make("output", "bsdf", {{"spectral", text("solar")}});
    const auto weighed = [&](const std::vector<double>& centres) {
        return written(
            *result(film(1, 1, bands(centres, 0.01), [](int, int, int c) { return c == 0 ? 0.0 : 1.0; }), nullptr, solar));
    };
    const std::string sun = weighed({500, 600});
    ASSERT_TRUE(sun.starts_with("solar [sr^-1],0\n0,")) << sun;
    EXPECT_NEAR(std::stod(sun.substr(18)), 1.3278 / (1.3391 + 1.3278), 1.0e-4);
    EXPECT_EQ(weighed({500, 1300}), "nothing") << "the sun isn't known there";
}

}  // namespace
}  // namespace nemra::outputtest
