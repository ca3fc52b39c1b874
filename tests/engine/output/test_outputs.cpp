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

TEST(Outputs, TableLayouts) {
    const auto table = [](const Settings& settings) {
        return written(*result(ramp(xyzChannels()), nullptr, make("output", "table", settings)));
    };
    EXPECT_EQ(table({}),
              "x,y,X [cd.m^-2],Y [cd.m^-2],Z [cd.m^-2]\n"
              "0,0,0.25,100.25,200.25\n1,0,1.25,101.25,201.25\n0,1,10.25,110.25,210.25\n1,1,11.25,111.25,211.25\n");
    EXPECT_EQ(table({{"layout", text("grid")}, {"channels", text("Y")}, {"separator", text("semicolon")}}),
              "Y [cd.m^-2];0;1\n0;100,25;101,25\n1;110,25;111,25\n");
    EXPECT_EQ(
        table({{"layout", text("summary")}, {"channels", text(" Z ,X")}, {"digits", integer(3)}, {"separator", text("tab")}}),
        "channel\tunit\tmean\tminimum\tmaximum\tminimum/mean\tminimum/maximum\n"
        "Z\tcd.m^-2\t206\t200\t211\t0.973\t0.948\nX\tcd.m^-2\t5.75\t0.25\t11.2\t0.0435\t0.0222\n");
    EXPECT_NE(table({{"channels", text("spp")}}).find("\n1,1,4\n"), std::string::npos) << "meta channels by their name";
    lighttest::Messages messages;
    EXPECT_EQ(table({{"channels", text("Y,W")}}), "nothing");
    EXPECT_TRUE(messages.mention("there is no channel \"W\""));
}

TEST(Outputs, TablesOfQuantitiesAndOfFilteredChannels) {
    NoScene scene;
    scene.content = ramp(xyzChannels());
    scene.factors = {0.25, 1.0e-9, 0.01};
    core::Raw raw(scene.content, scene, {});
    raw.setOutput(make("output", "table", {{"quantity", text("sensor_irradiance")}, {"channels", text("Y")}}));
    EXPECT_EQ(written(raw).substr(0, 21), "x,y,Y [lx]\n0,0,25.062");
    lighttest::Messages messages;
    raw.setOutput(make("output", "table", {{"quantity", text("bsdf")}}));
    EXPECT_NE(written(raw).find("Y [cd.m^-2]"), std::string::npos);
    EXPECT_TRUE(messages.mention("has no bsdf"));
    const NodeHandle filtered = make("output", "table", {{"channels", text("Y")}});
    std::string why;
    ASSERT_TRUE(filtered->addItem(make("filter", "gain", {{"gain", number(2)}}), why)) << why;
    raw.setOutput(filtered);
    EXPECT_NE(written(raw).find("\n0,0,200.5\n"), std::string::npos) << written(raw);
}

TEST(Outputs, CellsWithSeparatorsAreQuoted) {
    Channels odd{{"a,\"b\"", core::ChannelKind::unknown, 0, 0, ""}};
    EXPECT_EQ(
        written(*result(film(1, 1, odd, [](int, int, int) { return 1.0; }), nullptr, make("output", "table"))).substr(0, 13),
        "x,y,\"a,\"\"b\"\"\"");
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

TEST(Outputs, SpecialDisplaysHaveAProfileAndCodesOfTheirBits) {
    const auto shown = [](const Settings& settings) {
        const auto content = film(1, 1, xyzChannels(), [](int, int, int c) {
            return 0.5 * std::array{0.9505, 1.0, 1.089}[std::size_t(c)];
        });
        return core::makeDisplayImage(*result(content, nullptr, make("output", "special", settings)), false);
    };
    EXPECT_FALSE(core::profileOf(shown({})).empty());
    EXPECT_FALSE(core::profileOf(shown({{"curve", text("pq")}})).empty());
    const auto fine = shown({{"bit_depth", integer(10)}});
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
