// Libraries of named nodes: what the package's own hold, against published numbers, and how a scene comes to them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <thread>

#include "engine/core/dielectricfunc/dielectricfunc.h"
#include "engine/core/library/libraries.h"
#include "engine/core/library/nearest_names.h"
#include "engine/core/spectrum/observer.h"
#include "engine/node/read_scene.h"
#include "tests/engine/light/render_scene.h"

namespace nemra::lighttest {
namespace {

namespace fs = std::filesystem;
using core::Libraries;
using core::SpectralCurve;

const std::string kShipped = std::string(NEMRA_SOURCE_DIR) + "/sarvo/svlib";

NodeHandle preset(const char* name) { return make("spectrum", "preset", {{"preset", text(name)}}); }

SpectralCurve shippedSpectrum(const char* name) {
    const node::Scene empty;
    Libraries libraries({kShipped});
    core::Translation translation(empty, &libraries);
    return core::makeSpectrum(preset(name), translation);
}

core::ComplexIndex shippedIndex(const char* name) {
    const node::Scene empty;
    Libraries libraries({kShipped});
    core::Translation translation(empty, &libraries);
    return core::makeDielectric(make("dielectricfunc", "nk", {{"source", text("preset")}, {"preset", text(name)}}), translation);
}

// ---- What is shipped --------------------------------------------------------------------------------------------------------

/// CIE 015:2018: chromaticities of the 2 degree observer, printed to 4 decimals (5 for A and the D series). The shipped samples
/// are 5 nm apart, which moves lamps with lines by up to 2.7e-4.
TEST(ShippedLibraries, IlluminantsHaveThePublishedChromaticities) {
    struct Row {
        const char* name;
        double x, y, tolerance;
    };
    const Row rows[] = {
        {"cie_a", 0.44758, 0.40745, 3e-5},     {"cie_c", 0.31006, 0.31616, 1e-4},      {"cie_d50", 0.34567, 0.35851, 3e-5},
        {"cie_d55", 0.33243, 0.34744, 3e-5},   {"cie_d65", 0.31272, 0.32903, 3e-5},    {"cie_d75", 0.29903, 0.31488, 4e-5},
        {"cie_e", 1.0 / 3, 1.0 / 3, 5e-5},     {"cie_fl1", 0.3131, 0.3371, 3e-4},      {"cie_fl2", 0.3721, 0.3751, 3e-4},
        {"cie_fl3", 0.4091, 0.3941, 3e-4},     {"cie_fl4", 0.4402, 0.4031, 3e-4},      {"cie_fl5", 0.3138, 0.3452, 3e-4},
        {"cie_fl6", 0.3779, 0.3882, 3e-4},     {"cie_fl7", 0.3129, 0.3292, 3e-4},      {"cie_fl8", 0.3458, 0.3586, 3e-4},
        {"cie_fl9", 0.3741, 0.3727, 3e-4},     {"cie_fl10", 0.3458, 0.3588, 3e-4},     {"cie_fl11", 0.3805, 0.3769, 3e-4},
        {"cie_fl12", 0.4370, 0.4042, 3e-4},    {"cie_f11", 0.3805, 0.3769, 3e-4},      {"cie_fl3.1", 0.4407, 0.4033, 3e-4},
        {"cie_fl3.15", 0.3127, 0.3288, 3e-4},  {"cie_hp1", 0.5330, 0.4150, 3e-4},      {"cie_hp2", 0.4778, 0.4158, 3e-4},
        {"cie_hp3", 0.4302, 0.4075, 3e-4},     {"cie_hp4", 0.3812, 0.3797, 3e-4},      {"cie_hp5", 0.3776, 0.3713, 3e-4},
        {"cie_led_b1", 0.4560, 0.4078, 4e-4},  {"cie_led_b3", 0.3756, 0.3723, 4e-4},   {"cie_led_b5", 0.3118, 0.3236, 4e-4},
        {"cie_led_bh1", 0.4474, 0.4066, 4e-4}, {"cie_led_rgb1", 0.4557, 0.4211, 4e-4}, {"cie_led_v1", 0.4548, 0.4044, 4e-4},
        {"cie_led_v2", 0.3781, 0.3775, 4e-4},
    };
    for (const Row& row : rows) {
        const auto xyz = core::curveXyz(shippedSpectrum(row.name), core::Observer::cie1931);
        const double sum = xyz[0] + xyz[1] + xyz[2];
        EXPECT_NEAR(xyz[0] / sum, row.x, row.tolerance) << row.name;
        EXPECT_NEAR(xyz[1] / sum, row.y, row.tolerance) << row.name;
        EXPECT_NEAR(xyz[1], 1.0, 1.0e-5) << row.name;
    }
}

/// Fresnel at normal incidence; numbers from the papers' own n and k by an outside computation.
TEST(ShippedLibraries, MetalsReflectAsMeasured) {
    struct Row {
        const char* name;
        double at450, at550, at650;
    };
    for (const Row& row : {Row{"Au_johnson", 0.408, 0.792, 0.957},
                           {"Ag_johnson", 0.980, 0.983, 0.990},
                           {"Cu_johnson", 0.538, 0.624, 0.935},
                           {"Al_rakic", 0.922, 0.915, 0.906},
                           {"Cr_johnson", 0.555, 0.554, 0.556},
                           {"Fe_johnson", 0.496, 0.512, 0.531},
                           {"Ni_johnson", 0.571, 0.644, 0.701},
                           {"Ti_johnson", 0.545, 0.582, 0.616},
                           {"Si_schinke", 0.419, 0.367, 0.344}}) {
        const core::ComplexIndex index = shippedIndex(row.name);
        const auto reflectance = [&](double lambda) {
            const double n = index.n(lambda);
            const double k = index.k(lambda);
            return ((n - 1) * (n - 1) + k * k) / ((n + 1) * (n + 1) + k * k);
        };
        EXPECT_NEAR(reflectance(450.0), row.at450, 6.0e-4) << row.name;
        EXPECT_NEAR(reflectance(550.0), row.at550, 6.0e-4) << row.name;
        EXPECT_NEAR(reflectance(650.0), row.at650, 6.0e-4) << row.name;
    }
}

/// n_d and V_d as the makers' catalogues print them, and of the papers' formulas.
TEST(ShippedLibraries, GlassesHaveTheirCatalogueIndexAndDispersion) {
    struct Row {
        const char* name;
        double nd, vd;
    };
    for (const Row& row : {Row{"N-BK7", 1.51680, 64.17},
                           {"N-SF11", 1.78472, 25.68},
                           {"N-SF6", 1.80518, 25.36},
                           {"N-SF66", 1.92286, 20.88},
                           {"F2", 1.62004, 36.37},
                           {"N-FK51A", 1.48656, 84.47},
                           {"fused_silica", 1.458464, 67.82},
                           {"sapphire_ordinary", 1.768172, 72.31},
                           {"sapphire_extraordinary", 1.760096, 72.99},
                           {"diamond", 2.417486, 55.30},
                           {"PMMA", 1.490618, 53.18},
                           {"water_20C", 1.333403, 55.76}}) {
        for (const SpectralCurve& n : {shippedSpectrum(row.name), shippedIndex(row.name).n}) {
            EXPECT_NEAR(n(587.5618), row.nd, 6.0e-6) << row.name;
            EXPECT_NEAR((n(587.5618) - 1.0) / (n(486.1327) - n(656.2725)), row.vd, 0.03) << row.name;
        }
    }
    // Ciddor (1996), table 1: dry air at 15 C, 101325 Pa, 450 ppm.
    EXPECT_NEAR(shippedSpectrum("air")(633.0), 1.0002765, 1.0e-7);
}

TEST(ShippedLibraries, AbsorptionComesFromTheMeasurements) {
    const auto perMetre = [](const core::ComplexIndex& index, double lambda) {
        return 4.0 * 3.14159265358979 * index.k(lambda) / (lambda * 1.0e-9);
    };
    const core::ComplexIndex water = shippedIndex("water_20C");
    EXPECT_NEAR(perMetre(water, 500.0), 0.0204, 1.0e-4);
    EXPECT_NEAR(perMetre(water, 600.0), 0.2224, 1.0e-3);
    EXPECT_NEAR(perMetre(water, 700.0), 0.624, 2.0e-3);
    EXPECT_NEAR(perMetre(shippedIndex("H2O_hale"), 500.0), 0.0251, 2.0e-4);
    EXPECT_NEAR(shippedSpectrum("water_absorption_popefry")(600.0), 0.2224, 1.0e-12);
    const core::ComplexIndex glass = shippedIndex("N-BK7");
    EXPECT_NEAR(glass.k(300.0), 2.8607e-6, 1.0e-10);
}

/// McCamy (1976), Lab under illuminant C: the chart differs from batch to batch by about 1 in CIE76.
TEST(ShippedLibraries, ColourChartHasItsColours) {
    const SpectralCurve light = shippedSpectrum("cie_c");
    const auto white = core::curveXyz(light, core::Observer::cie1931);
    const auto lab = [&](const char* name) {
        const SpectralCurve patch = shippedSpectrum(name);
        SpectralCurve seen{[&](double l) { return light(l) * patch(l); }, light.knots};
        const auto xyz = core::curveXyz(seen, core::Observer::cie1931);
        const auto f = [](double t) { return t > 216.0 / 24389.0 ? std::cbrt(t) : (24389.0 / 27.0 * t + 16.0) / 116.0; };
        const double fx = f(xyz[0] / white[0]), fy = f(xyz[1] / white[1]), fz = f(xyz[2] / white[2]);
        return std::array<double, 3>{116 * fy - 16, 500 * (fx - fy), 200 * (fy - fz)};
    };
    // Munsell notation of the neutrals gives L*: 9.5/, 6.5/ and 2/ are 96.0, 66.7 and 20.5 (ASTM D1535).
    EXPECT_NEAR(lab("colorchecker_19_white")[0], 96.0, 1.0);
    EXPECT_NEAR(lab("colorchecker_21_neutral_6.5")[0], 66.7, 1.0);
    EXPECT_NEAR(lab("colorchecker_24_black")[0], 20.5, 1.5);
    const auto sky = lab("colorchecker_03_blue_sky");
    EXPECT_LT(sky[2], -20.0);
    EXPECT_GT(lab("colorchecker_15_red")[1], 45.0);
    EXPECT_LT(lab("colorchecker_14_green")[1], -35.0);
}

TEST(ShippedLibraries, EachNodeTellsSourceAndLicenceAndReadsWithoutComplaint) {
    node::registerClasses();
    const Messages messages;
    int count = 0;
    for (const auto& entry : fs::directory_iterator(kShipped)) {
        if (entry.path().extension() != ".svlib") continue;
        node::Scene scene;
        ASSERT_TRUE(node::readSceneFile(entry.path(), scene));
        Libraries libraries({kShipped});
        core::Translation translation(scene, &libraries);
        for (const auto& node : scene.nodes) {
            ++count;
            EXPECT_NE(node->comments().find("\nSource: "), std::string::npos) << node->label();
            EXPECT_NE(node->comments().find("\nLicence: "), std::string::npos) << node->label();
            EXPECT_EQ(node->comments().find("BY-SA"), std::string::npos) << node->label();
            const bool isIndex = node->family() == "dielectricfunc";
            const SpectralCurve curve =
                isIndex ? core::makeDielectric(node, translation).n : core::makeSpectrum(node, translation);
            EXPECT_GT(curve(550.0), 0.0) << node->label();
        }
    }
    EXPECT_GT(count, 150);
    EXPECT_TRUE(messages.all.empty()) << messages.all.front();
}

/// Scenes that set nothing must find what the catalogue names: presets that are a class's or a child's default.
TEST(ShippedLibraries, HaveEveryPresetThatTheCatalogueNames) {
    node::registerClasses();
    Libraries libraries({kShipped});
    const auto check = [&](const std::string& family, const std::string& name, const std::string& where) {
        if (!name.empty()) {
            EXPECT_NE(libraries.find(family, name), nullptr) << where << ": " << name;
        }
        return !name.empty();
    };
    int count = 0;
    for (const node::NodeClass* const nodeClass : node::allClasses()) {
        for (const node::ParameterSpec& parameter : nodeClass->parameters) {
            if (parameter.name != "preset" || parameter.type != NEMRA_PARAMETER_TEXT) continue;
            count += check(nodeClass->family, std::get<std::string>(parameter.defaultValue.data), nodeClass->type);
        }
        for (const auto& child : nodeClass->defaultChildren) {
            const auto preset = child->findParameter("preset");
            if (!preset.spec || preset.spec->type != NEMRA_PARAMETER_TEXT) continue;
            count += check(child->family(), std::get<std::string>(preset.value->data), nodeClass->family + '/' + nodeClass->type);
        }
    }
    EXPECT_GE(count, 3);
}

// ---- How names are looked up ------------------------------------------------------------------------------------------------

/// A folder of libraries of its own, gone with the test.
class NamedNodes : public testing::Test {
protected:
    void SetUp() override {
        node::registerClasses();
        fs::create_directories(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string write(const std::string& file, const std::string& nodes) const {
        const fs::path path = folder_ / file;
        std::ofstream(path) << "<scene version=\"1\">" << nodes << "</scene>";
        return path;
    }
    static std::string uniformNode(const std::string& name, double value) {
        return "<node family=\"spectrum\" type=\"uniform\" name=\"" + name + "\"><parameter name=\"value\" value=\"" +
               std::to_string(value) + "\"/></node>";
    }
    /// The value of a spectrum that a scene with these nodes and libraries makes of it.
    double valueOf(const NodeHandle& node, const std::vector<std::string>& paths) const {
        Libraries libraries(paths);
        core::Translation translation(scene_, &libraries);
        return core::makeSpectrum(node, translation)(550.0);
    }

    fs::path folder_ = fs::temp_directory_path() / ("nemra-libraries-" + std::to_string(::getpid()));
    node::Scene scene_;
    Messages messages_;
};

TEST_F(NamedNodes, SceneComesFirstThenLibrariesInOrder) {
    const std::string first = write("z.svlib", uniformNode("grey", 0.1) + uniformNode("other", 0.5));
    const std::string second = write("a.svlib", uniformNode("grey", 0.2));
    EXPECT_EQ(valueOf(preset("grey"), {first, second}), 0.1);
    EXPECT_EQ(valueOf(preset("grey"), {second, first}), 0.2);
    EXPECT_EQ(valueOf(preset("grey"), {folder_}), 0.2) << "files of a folder in the order of their names";
    EXPECT_EQ(valueOf(preset("other"), {folder_}), 0.5);
    EXPECT_EQ(valueOf(make("spectrum", "linked", {{"node", text("grey")}}), {first}), 0.1);
    scene_.nodes.push_back(make("spectrum", "uniform", {{"value", number(0.3)}}, "grey"));
    EXPECT_EQ(valueOf(preset("grey"), {first}), 0.3);
    EXPECT_TRUE(messages_.all.empty());
}

TEST_F(NamedNodes, NodeOfTheSameNameAsWhatItNames) {
    const std::string library = write("a.svlib", uniformNode("grey", 0.1));
    scene_.nodes.push_back(make("spectrum", "preset", {{"preset", text("grey")}, {"scale", number(2.0)}}, "grey"));
    EXPECT_EQ(valueOf(scene_.nodes[0], {library}), 0.2);
    scene_.nodes[0] = make("spectrum", "linked", {{"node", text("grey")}}, "grey");
    EXPECT_EQ(valueOf(scene_.nodes[0], {library}), 0.1);
    EXPECT_TRUE(messages_.all.empty());
}

TEST_F(NamedNodes, ChainsOfPresetsEndAndCirclesDoToo) {
    scene_.nodes.push_back(make("spectrum", "uniform", {{"value", number(0.5)}}, "end"));
    scene_.nodes.push_back(make("spectrum", "preset", {{"preset", text("end")}, {"scale", number(3.0)}}, "middle"));
    EXPECT_EQ(valueOf(make("spectrum", "preset", {{"preset", text("middle")}, {"scale", number(2.0)}}), {}), 3.0);
    EXPECT_TRUE(messages_.all.empty());
    scene_.nodes[0] = make("spectrum", "preset", {{"preset", text("middle")}}, "end");
    EXPECT_EQ(valueOf(preset("middle"), {}), 0.0);
    EXPECT_EQ(messages_.all.size(), 1U);
    EXPECT_TRUE(messages_.mention("round in a circle"));
}

TEST_F(NamedNodes, MissingNameIsToldOnceWithWhatComesNear) {
    const std::string library = write("a.svlib", uniformNode("cie_d65", 0.1) + uniformNode("cie_a", 0.2));
    Libraries libraries({library});
    core::Translation translation(scene_, &libraries);
    const NodeHandle lost = make("spectrum", "preset", {{"preset", text("cie_d56")}}, "lamp");
    EXPECT_EQ(core::makeSpectrum(lost, translation)(550.0), 0.0);
    core::makeSpectrum(lost, translation);
    ASSERT_EQ(messages_.all.size(), 1U);
    for (const char* part : {"spectrum/preset lamp", "\"cie_d56\"", "names near it: \"cie_d65\""}) {
        EXPECT_TRUE(messages_.mention(part)) << messages_.all[0];
    }
    const NodeHandle metal = make("dielectricfunc", "nk", {{"source", text("preset")}, {"preset", text("Unobtainium")}}, "metal");
    EXPECT_EQ(core::makeDielectric(metal, translation).n(550.0), 1.0);
    EXPECT_EQ(messages_.all.size(), 2U);
}

TEST_F(NamedNodes, BrokenLibrariesAreToldAndTheOthersCount) {
    const std::string good = write("b.svlib", uniformNode("grey", 0.1));
    std::ofstream(folder_ / "a.svlib") << "<scene version=\"1\"><node family=";
    std::ofstream(folder_ / "empty.svlib");
    EXPECT_EQ(valueOf(preset("grey"), {folder_, folder_ / "missing"}), 0.1);
    EXPECT_EQ(messages_.all.size(), 2U);  // empty.svlib wasn't needed
    EXPECT_TRUE(messages_.mention("a.svlib"));
    EXPECT_TRUE(messages_.mention("this library is left out"));
    EXPECT_TRUE(messages_.mention("missing: there is no such library"));
    EXPECT_EQ(valueOf(preset("gold"), {folder_}), 0.0);
    EXPECT_TRUE(messages_.mention("empty.svlib"));
}

TEST_F(NamedNodes, ChangedFileIsReadAgainAndAnUnneededOneNever) {
    const std::string file = write("a.svlib", uniformNode("grey", 0.1));
    const auto before = core::readLibrary(file);
    EXPECT_EQ(core::readLibrary(file), before);
    write("a.svlib", uniformNode("grey", 0.25));
    fs::last_write_time(file, fs::last_write_time(file) + std::chrono::seconds(2));
    EXPECT_EQ(valueOf(preset("grey"), {file}), 0.25);
    std::ofstream(folder_ / "broken.svlib") << "no scene";
    scene_.nodes.push_back(make("spectrum", "uniform", {{"value", number(0.3)}}, "white"));
    EXPECT_EQ(valueOf(preset("white"), {folder_ / "broken.svlib"}), 0.3);
    EXPECT_TRUE(messages_.all.empty());
}

TEST_F(NamedNodes, ManyThreadsMayAskAtOnce) {
    std::vector<std::thread> threads;
    std::atomic<int> right{0};
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 20; ++i) {
                Libraries libraries({kShipped});
                core::Translation translation(scene_, &libraries);
                right += std::abs(core::curveLuminance(core::makeSpectrum(preset("cie_d50"), translation)) - 1.0) < 1.0e-5;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(right, 8 * 20);
}

/// A whole render: a material and an environment's spectrum from a library.
TEST_F(NamedNodes, RenderTakesMaterialsAndSpectraFromLibraries) {
    const std::string file =
        write("a.svlib", uniformNode("grey", 0.25) +
                             "<node family=\"material\" type=\"generic\" name=\"paint\"><child slot=\"bsdf\" type=\"lambertian\">"
                             "<child slot=\"reflectance\" type=\"linked\"><parameter name=\"node\" value=\"grey\"/></child>"
                             "</child></node>");
    SceneMaker made;
    made.add(polygon({{{-9, 0, -9}, {-9, 0, 9}, {9, 0, 9}, {9, 0, -9}}}), make("material", "linked", {{"node", text("paint")}}));
    with(made.setup, "environment", with(make("environment", "uniform"), "radiance", preset("cie_d65")));
    with(made.setup, "instrument", camera({0, 1, 0}, {0, 0, 0}, 5.0, 1, 1, colorSensor()));
    Libraries libraries({file, kShipped});
    const Estimate luminance = renderPixel(made.finish(), 256, {.libraries = &libraries});
    EXPECT_NEAR(luminance.mean, 0.25, 4.0 * luminance.error + 1.0e-4);
    EXPECT_TRUE(messages_.all.empty()) << messages_.all.front();
}

TEST(NearestNames, SlipsComeBeforeParts) {
    const std::vector<std::string> names{"Au_johnson", "Au_mcpeak", "Ag_johnson", "N-BK7", "cie_d65", "cie_d55", "water_20C"};
    using List = std::vector<std::string>;
    EXPECT_EQ(core::nearestNames("cie_D56", names), (List{"cie_d55", "cie_d65"}));
    EXPECT_EQ(core::nearestNames("nbk7", names), List{"N-BK7"});
    EXPECT_EQ(core::nearestNames("Au", names), (List{"Au_mcpeak", "Au_johnson"}));
    EXPECT_EQ(core::nearestNames("d65", names), List{"cie_d65"});
    EXPECT_TRUE(core::nearestNames("chocolate", names).empty());
    EXPECT_TRUE(core::nearestNames("", names).empty());
}

}  // namespace
}  // namespace nemra::lighttest
