// Outputs that aren't plain pictures: tables, single channels, displays of their own kind.
#include <gtest/gtest.h>

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

TEST(Outputs, SpecialDisplaysAreTaggedWithTheirPrimariesWhereAProfileCan) {
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
    EXPECT_TRUE(core::profileOf(shown({{"curve", text("pq")}})).empty());
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
    EXPECT_EQ(written(*raw), "500 nm [sr^-1],0,1\n0,0.1,0.2\n\n600 nm [sr^-1],0,1\n0,0.2,0.4\n\n");
}

}  // namespace
}  // namespace nemra::outputtest
