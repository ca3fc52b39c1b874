// What is written must be read back the same: awkward texts and numbers, whole scenes, in each encoding.
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <locale>

#include "engine/node/encoding/encode.h"
#include "engine/node/mesh.h"
#include "engine/node/read_scene.h"
#include "engine/node/svxml/numbers.h"
#include "tests/engine/scene/messages.h"
#include "tests/engine/scene/same_nodes.h"
#include "tests/engine/scene/small_scene.h"

namespace nemra::node {
namespace {

using test::expectSame;
using test::kSmallScene;
using test::Messages;
using test::svxmlOf;

class RoundTrip : public testing::Test {
protected:
    static void SetUpTestSuite() { registerClasses(); }
};

Scene readWhole(std::string_view text) {
    Messages messages;
    Scene scene;
    EXPECT_TRUE(readScene(text, "test", scene)) << messages.text();
    EXPECT_EQ(messages.errors() + messages.warnings(), 0) << messages.text();
    return scene;
}

TEST_F(RoundTrip, AwkwardTexts) {
    for (const std::string text :
         {" ",     "\n",         "\r\n",   "a\rb",         "\t",       "<![CDATA[x]]>", "]]>", "&amp;",
          "&#10;", "\x01",       "\"'",    "äö\U0001F4A1", " leading", "trailing ",     "--",  "<!-- x -->",
          "\x1f",  "a\x02\x03z", "\u241b", "\u241b0001",   "\u241bzz", "\uFFFE\uFFFF"}) {
        Scene scene;
        scene.name = text;
        scene.searchPaths = {text};
        auto node = std::make_shared<Node>(*findClass("spectrum", "linked"), text);
        std::string why;
        ASSERT_TRUE(node->set("node", {text}, why)) << why;
        node->setComments(text);
        scene.nodes = {node};
        auto sphere = std::make_shared<Geometry>();
        sphere->name = text;
        sphere->shape = Sphere{};
        scene.geometries = {sphere};
        auto instance = std::make_shared<Instance>();
        instance->layers = {{text, "b/c\\"}, {}};
        scene.instances = {instance};
        const std::string written = svxmlOf(scene);
        for (const char c : written) ASSERT_TRUE(static_cast<unsigned char>(c) >= 0x20 || c == '\n' || c == '\t') << written;
        for (const char* const notXml : {"&#1;", "&#2;", "\uFFFE", "\uFFFF"}) ASSERT_EQ(written.find(notXml), std::string::npos);
        const Scene read = readWhole(written);
        EXPECT_EQ(read.name, text);
        EXPECT_EQ(read.searchPaths, scene.searchPaths);
        ASSERT_EQ(read.nodes.size() + read.geometries.size() + read.instances.size(), 3U);
        EXPECT_EQ(read.nodes[0]->name(), text);
        EXPECT_EQ(read.nodes[0]->text("node"), text);
        EXPECT_EQ(read.nodes[0]->comments(), text);
        EXPECT_EQ(read.geometries[0]->name, text);
        EXPECT_EQ(read.instances[0]->layers, instance->layers);
    }
}

TEST_F(RoundTrip, NumbersKeepTheirBits) {
    Geometry geometry{.name = "m", .materialName = "", .material = nullptr, .shape = Mesh{}};
    Mesh& mesh = std::get<Mesh>(geometry.shape);
    mesh.vertices = {0.1, -0.0, 1.0 / 3.0, 5e-324, 1e18, -2.2250738585072014e-308, 0.30000000000000004, 123456789.123456789,
                     1e-5};
    mesh.normals = {0.1F, 1e-45F, 3.4e17F, 0, 0, 1, 1, 0, 0};
    mesh.uvs = {0.1F, 0.2F, -3, 4, 5, 16777216};
    mesh.triangles = {0, 1, 2, 2, 1, 0};
    const auto read = readSvxmlGeometry(svxmlOf(geometry), "test");
    ASSERT_TRUE(read);
    const Mesh& again = std::get<Mesh>(read->shape);
    EXPECT_EQ(again.vertices, mesh.vertices);
    EXPECT_TRUE(std::signbit(again.vertices[1]));
    EXPECT_EQ(again.normals, mesh.normals);
    EXPECT_EQ(again.uvs, mesh.uvs);
    EXPECT_EQ(again.triangles, mesh.triangles);
}

// As other programs write numbers.
TEST_F(RoundTrip, NumbersOfOthers) {
    const Scene scene = readWhole(R"(<scene><sphere name="s" radius=" 1.5 "/><mesh name="m"><vertices>
        1e-400 -0.00000e-399 +2  1e-99999999999999999999 0.5E+00 -4.9e-324 0e999 123e-2 1E-330</vertices></mesh></scene>)");
    EXPECT_EQ(std::get<Sphere>(scene.geometries.at(0)->shape).radius, 1.5F);
    const auto& numbers = std::get<Mesh>(scene.geometries.at(1)->shape).vertices;
    EXPECT_EQ(numbers, SharedArray<double>({0, 0, 2, 0, 0.5, -4.9e-324, 0, 1.23, 0}));
    double number = 1.0;
    EXPECT_EQ(svxml::parseNumber("-1e-400", number), svxml::NumberFault::none);
    EXPECT_TRUE(number == 0.0 && std::signbit(number));
    float single = 1.0F;
    EXPECT_EQ(svxml::parseNumber("0." + std::string(60, '0') + "1", single), svxml::NumberFault::none);
    EXPECT_EQ(single, 0.0F);
    for (const std::string& large :
         std::vector<std::string>{"1e400", "-1e400", "1e99999999999999999999", "1" + std::string(400, '0') + "e-5"})
        EXPECT_EQ(svxml::parseNumber(large, number), svxml::NumberFault::outOfRange) << large;
}

TEST_F(RoundTrip, WholeScene) {
    const Scene scene = readWhole(kSmallScene);
    const std::string text = svxmlOf(scene);
    const Scene again = readWhole(text);
    EXPECT_EQ(svxmlOf(again), text);
    EXPECT_EQ(again.name, "small & whole");
    EXPECT_EQ(again.activeSetup, "main");
    EXPECT_EQ(again.imports.at(0).prefix, "o_");
    ASSERT_EQ(again.nodes.size(), scene.nodes.size());
    for (std::size_t i = 0; i < scene.nodes.size(); ++i) expectSame(*scene.nodes[i], *again.nodes[i]);
    const auto setup = again.findNode("setup", "main");
    ASSERT_TRUE(setup);
    EXPECT_EQ(setup->child("instrument")->real("f_number"), 4.0);
    EXPECT_EQ(setup->child("instrument")->list().at(0)->name(), "image");
    EXPECT_TRUE(std::get<Sphere>(again.findGeometry("s")->shape).reverse);
    EXPECT_EQ(again.findGeometry("s")->material->name(), "own");
    EXPECT_EQ(again.instances.at(0)->transform[3], 5.0);
    EXPECT_TRUE(again.instances.at(0)->materialIsFallback);
}

// A material that is a node of the scene is written once, by its name elsewhere.
TEST_F(RoundTrip, SharedMaterials) {
    Scene scene;
    auto inside = std::make_shared<Node>(*findClass("material", "generic"), "inside");
    auto outside = std::make_shared<Node>(*findClass("material", "generic"), "outside");
    scene.nodes = {inside};
    for (const auto& material : {inside, outside}) {
        auto instance = std::make_shared<Instance>();
        instance->material = material;
        scene.instances.push_back(instance);
    }
    const Scene read = readWhole(svxmlOf(scene));
    EXPECT_EQ(read.instances.at(0)->materialName, "inside");
    EXPECT_FALSE(read.instances.at(0)->material);
    ASSERT_TRUE(read.instances.at(1)->material);
    EXPECT_EQ(read.instances.at(1)->material->name(), "outside");
}

// A parameter that comes before its choice, or beside it, is set all the same.
TEST_F(RoundTrip, ChoicesFirst) {
    Messages messages;
    const auto node = readSvxmlNode(std::string_view(R"(<node family="instrument" type="stdcam" name="n">
        <parameter name="f_number" value="4"/><parameter name="aperture" value="lens"/></node>)"),
                                    "test");
    ASSERT_TRUE(node) << messages.text();
    EXPECT_EQ(node->real("f_number"), 4.0);
}

struct CommaPunctuation : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(RoundTrip, LocaleDoesNotMatter) {
    const std::string expected = svxmlOf(readWhole(kSmallScene));
    const std::locale old = std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation));
    EXPECT_EQ(svxmlOf(readWhole(kSmallScene)), expected);
    std::locale::global(old);

    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    const char* found = nullptr;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"})
        if (found == nullptr) found = std::setlocale(LC_NUMERIC, name);
    // tools/test makes such a locale and says so: there it has to be found.
    ASSERT_TRUE(found != nullptr || std::getenv("NEMRA_TEST_LOCALE") == nullptr) << "the locale that was made isn't found";
    if (found == nullptr) GTEST_SKIP() << "no locale with a decimal comma is installed: only the C++ locale was tried";
    ASSERT_EQ(*std::localeconv()->decimal_point, ',');
    EXPECT_EQ(svxmlOf(readWhole(kSmallScene)), expected);
    std::setlocale(LC_NUMERIC, before.c_str());
}

TEST_F(RoundTrip, CornellBoxAsMeasured) {
    const auto file = std::filesystem::path(NEMRA_SOURCE_DIR) / "sarvo/examples/cornellbox.svxml";
    Messages messages;
    Scene scene;
    ASSERT_TRUE(readSceneFile(file.string(), scene)) << messages.text();
    EXPECT_EQ(messages.warnings(), 0) << messages.text();
    EXPECT_EQ(scene.geometries.size(), 16U);
    EXPECT_EQ(scene.instances.size(), 16U);
    ASSERT_TRUE(scene.findNode("setup", scene.activeSetup));

    const auto area = [](const Mesh& mesh) {
        double sum = 0.0;
        for (std::size_t t = 0; t < mesh.triangles.size(); t += 3) {
            const double* a = mesh.vertices.data() + 3 * mesh.triangles[t];
            const double* b = mesh.vertices.data() + 3 * mesh.triangles[t + 1];
            const double* c = mesh.vertices.data() + 3 * mesh.triangles[t + 2];
            const double u[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
            const double v[3] = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
            sum += 0.5 * std::hypot(u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]);
        }
        return sum;
    };
    const auto& light = std::get<Mesh>(scene.findGeometry("light")->shape);
    const auto& ceiling = std::get<Mesh>(scene.findGeometry("ceiling")->shape);
    EXPECT_NEAR(area(light), 0.130 * 0.105, 1e-12);
    EXPECT_NEAR(area(light) + area(ceiling), 0.556 * 0.5592, 1e-12);
    for (const Mesh* mesh : {&light, &ceiling})
        for (std::size_t i = 1; i < mesh->triangles.size(); i += 3) EXPECT_FLOAT_EQ(triangleNormals(*mesh)[i], -1.0F);
    // Red is on the left as the camera sees it, which looks along +z: at large x.
    EXPECT_EQ(scene.findGeometry("left_wall")->materialName, "red");
    EXPECT_GT(std::get<Mesh>(scene.findGeometry("left_wall")->shape).vertices[0], 0.5);
    const auto red = scene.findNode("material", "red")->child("bsdf")->child("reflectance")->table("samples");
    EXPECT_EQ(red->rows, 76U);
    EXPECT_GT(red->numbers("value").back(), 5.0 * red->numbers("value").front());
    EXPECT_EQ(scene.findNode("material", "light")->child("emitter")->choice("side"), "front");
}

}  // namespace
}  // namespace nemra::node
