#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "engine/node/catalogue/build.h"
#include "engine/node/color.h"
#include "engine/node/node.h"

namespace nemra::node {
namespace {

std::shared_ptr<Node> make(const char* family, const char* type, const char* name = "n") {
    registerClasses();
    return std::make_shared<Node>(*findClass(family, type), name);
}

std::string refusal(Node& node, const char* name, Value value) {
    std::string why;
    EXPECT_FALSE(node.set(name, std::move(value), why));
    return why;
}

TEST(Setting, ConvertsNumbersWhenNothingIsLost) {
    const auto camera = make("instrument", "stdcam");
    std::string why;
    EXPECT_TRUE(camera->set("focal_length", Value{35}, why)) << why;
    EXPECT_EQ(camera->real("focal_length"), 35.0);
    EXPECT_TRUE(camera->set("width", Value{256.0}, why)) << why;
    EXPECT_EQ(camera->integer("width"), 256);
    EXPECT_TRUE(camera->set("width", Value{std::uint64_t{512}}, why)) << why;
    EXPECT_EQ(camera->integer("width"), 512);
    EXPECT_TRUE(camera->set("position", Value{std::vector<float>{1, 2, 3}}, why)) << why;
    EXPECT_EQ(camera->vector("position"), (std::array<double, 3>{1, 2, 3}));
    EXPECT_NE(refusal(*camera, "width", Value{256.5}), "");
    EXPECT_NE(refusal(*camera, "width", Value{true}), "");
    EXPECT_NE(refusal(*camera, "width", Value{std::string("256")}), "");
    EXPECT_EQ(camera->integer("width"), 512) << "a refusal changes nothing";
}

TEST(Setting, SaysWhyItRefuses) {
    const auto body = make("spectrum", "blackbody");
    EXPECT_EQ(refusal(*body, "temperature", Value{0.5}), "parameter 'temperature': 0.5 K is below the least allowed value, 1 K");
    EXPECT_EQ(refusal(*body, "temperature", Value{std::nan("")}), "parameter 'temperature': is not a number");
    EXPECT_EQ(refusal(*body, "temperature", Value{std::numeric_limits<double>::infinity()}),
              "parameter 'temperature': is not finite");
    EXPECT_EQ(refusal(*body, "luminance", Value{1.0}), "parameter 'luminance' exists only with normalization = luminance");
    EXPECT_EQ(refusal(*body, "wattage", Value{1.0}), "there is no parameter 'wattage'");
    EXPECT_NE(refusal(*body, "normalization", Value{std::string("watt")}).find("none peak luminance"), std::string::npos);
    const auto setup = make("setup", "default");
    EXPECT_NE(refusal(*setup, "wavelengths_per_path", Value{5}).find("4 8"), std::string::npos);
    const auto camera = make("instrument", "stdcam");
    EXPECT_NE(refusal(*camera, "up", Value{std::vector<double>{0, 0, 0}}).find("zero"), std::string::npos);
    EXPECT_NE(refusal(*camera, "target", Value{std::vector<float>{0, NAN, 0}}).find("component 1"), std::string::npos);
    const auto rgb = make("spectrum", "rgb");
    EXPECT_NE(refusal(*rgb, "color", Value{Color{"cmyk", {0, 0, 0}}}).find("srgb"), std::string::npos);
}

TEST(Setting, TablesKeepTheirElementTypesAndGetTheColumnsOfTheSchema) {
    const auto spectrum = make("spectrum", "tabulated");
    auto table = std::make_shared<Table>();
    table->rows = 2;
    table->columns = {{"value", {Value{0.25F}, Value{0.5F}}}, {"wavelength", {Value{400}, Value{500}}}};
    std::string why;
    ASSERT_TRUE(spectrum->set("samples", Value{std::shared_ptr<const Table>(table)}, why)) << why;
    const auto kept = spectrum->table("samples");
    EXPECT_EQ(kept->columns[0].name, "wavelength");
    EXPECT_EQ(kept->numbers("wavelength"), (std::vector<double>{400, 500}));
    EXPECT_TRUE(std::holds_alternative<float>(kept->columns[1].cells[0].data));

    auto without = std::make_shared<Table>(*table);
    without->columns.pop_back();
    EXPECT_TRUE(spectrum->set("samples", Value{std::shared_ptr<const Table>(without)}, why)) << "a column may stay empty";
    EXPECT_TRUE(std::isnan(spectrum->table("samples")->numbers("wavelength")[0]));

    auto broken = std::make_shared<Table>(*table);
    broken->columns[1].cells[1] = Value{-5.0};
    EXPECT_EQ(refusal(*spectrum, "samples", Value{std::shared_ptr<const Table>(broken)}),
              "parameter 'samples': column 'wavelength', row 1: -5 nm is below the least allowed value, 1 nm");
    broken->columns[1].cells.pop_back();
    EXPECT_NE(refusal(*spectrum, "samples", Value{std::shared_ptr<const Table>(broken)}), "");
    broken->columns = {{"power", {Value{1.0}, Value{1.0}}}};
    EXPECT_NE(refusal(*spectrum, "samples", Value{std::shared_ptr<const Table>(broken)}).find("power"), std::string::npos);
}

// Two options may bring a parameter of the same name; each keeps its own setting.
TEST(Setting, SameNameUnderTwoOptionsIsTwoSettings) {
    const NodeClass nodeClass{
        .family = "test",
        .type = "two",
        .summary = "Two like-named parameters",
        .parameters = {choice("mode")
                           .option("a", "First", {real("level", 1.0).pure().range(0, 10).doc("Level")})
                           .option("b", "Second",
                                   {choice("inner")
                                        .option("off", "Nothing")
                                        .option("on", "More", {real("level", 2.0).pure().range(0, 10).doc("Level")})
                                        .doc("Inner")})
                           .doc("Outer")}};
    Node node(nodeClass, "n");
    std::string why;
    ASSERT_TRUE(node.set("level", Value{5.0}, why)) << why;
    ASSERT_TRUE(node.set("mode", Value{std::string("b")}, why));
    EXPECT_THROW(node.real("level"), std::logic_error);
    EXPECT_NE(refusal(node, "level", Value{1.0}).find("mode = a or inner = on"), std::string::npos);
    ASSERT_TRUE(node.set("inner", Value{std::string("on")}, why));
    EXPECT_EQ(node.real("level"), 2.0);
    EXPECT_EQ(node.findParameter("level").depth, 2);
    EXPECT_EQ(node.activeParameters().size(), 3U);
    ASSERT_TRUE(node.set("mode", Value{std::string("a")}, why));
    EXPECT_EQ(node.real("level"), 5.0);
}

TEST(Children, AreReplacedByNameAndGuarded) {
    const auto bsdf = make("bsdf", "lambertian");
    const auto spectrum = make("spectrum", "blackbody", "reflectance");
    std::string why;
    ASSERT_TRUE(bsdf->setChild(spectrum, why)) << why;
    EXPECT_EQ(bsdf->child("reflectance"), spectrum);
    EXPECT_FALSE(bsdf->isDefaultChild("reflectance"));
    EXPECT_FALSE(bsdf->setChild(make("bsdf", "black", "reflectance"), why));
    EXPECT_EQ(why, "child 'reflectance' must be of the family spectrum, not bsdf");
    EXPECT_FALSE(bsdf->setChild(make("spectrum", "uniform", "other"), why));
    EXPECT_FALSE(bsdf->setChild(nullptr, why));
    spectrum->setName("renamed");
    EXPECT_EQ(bsdf->child("reflectance"), spectrum) << "a slot finds its child whatever it is called";
    EXPECT_EQ(bsdf->findChild("renamed"), spectrum);
    const auto third = make("spectrum", "uniform", "renamed");
    ASSERT_TRUE(bsdf->setChild(third, why)) << why;
    EXPECT_EQ(bsdf->child("reflectance"), third);
}

TEST(Children, ListReplacesByNameAndRefusesCycles) {
    const auto root = make("layer", "generic", "root");
    const auto a = make("layer", "generic", "a");
    std::string why;
    ASSERT_TRUE(root->setChild(a, why));
    ASSERT_TRUE(root->setChild(make("layer", "generic", "b"), why));
    const auto second = make("layer", "generic", "a");
    ASSERT_TRUE(root->setChild(second, why));
    ASSERT_EQ(root->list().size(), 2U);
    EXPECT_EQ(root->list()[0], second);
    ASSERT_TRUE(second->setChild(a, why));
    EXPECT_FALSE(a->setChild(root, why));
    EXPECT_FALSE(a->setChild(a, why));
    EXPECT_FALSE(root->setChild(make("bsdf", "black"), why));
}

TEST(Children, TouchedDefaultsCount) {
    const auto material = make("material", "generic");
    EXPECT_TRUE(material->isDefaultChild("bsdf"));
    std::string why;
    ASSERT_TRUE(material->mutableChild("bsdf")->mutableChild("reflectance")->set("value", Value{0.2}, why));
    EXPECT_FALSE(material->isDefaultChild("bsdf")) << "also when the change is further down";
    EXPECT_TRUE(material->isDefaultChild("emitter"));
    EXPECT_EQ(make("material", "generic")->child("bsdf")->child("reflectance")->real("value"), 0.5)
        << "defaults are never changed";
}

TEST(Copying, CloneSharesCopyDoesNot) {
    const auto material = make("material", "generic");
    std::string why;
    ASSERT_TRUE(material->mutableChild("bsdf")->mutableChild("reflectance")->set("value", Value{0.2}, why));
    material->setComments("measured");
    const auto clone = material->clone();
    const auto copy = material->copy();
    EXPECT_EQ(clone->comments(), "measured");
    EXPECT_EQ(clone->child("bsdf"), material->child("bsdf"));
    EXPECT_EQ(clone->child("emitter"), material->child("emitter")) << "children never looked at are shared too";
    EXPECT_NE(copy->child("bsdf"), material->child("bsdf"));
    ASSERT_TRUE(material->mutableChild("bsdf")->mutableChild("reflectance")->set("value", Value{0.3}, why));
    EXPECT_EQ(clone->child("bsdf")->child("reflectance")->real("value"), 0.3);
    EXPECT_EQ(copy->child("bsdf")->child("reflectance")->real("value"), 0.2);
    clone->setName("other");
    EXPECT_EQ(material->name(), "n");
}

TEST(Copying, KeepsSharingAndBearsDeepNesting) {
    auto shared = make("layer", "generic", "leaf");
    std::string why;
    for (int i = 0; i < 100; ++i) {  // a diamond per level: 2^100 paths
        const auto left = make("layer", "generic", "left");
        const auto right = make("layer", "generic", "right");
        const auto top = make("layer", "generic", "top");
        ASSERT_TRUE(left->setChild(shared, why) && right->setChild(shared, why) && top->setChild(left, why) &&
                    top->setChild(right, why));
        shared = top;
    }
    const auto copy = shared->copy();
    EXPECT_EQ(copy->list()[0]->list()[0], copy->list()[1]->list()[0]);

    auto outer = make("layer", "generic", "outermost");
    auto inner = outer;
    for (int i = 0; i < 20000; ++i) {
        auto next = make("layer", "generic", "inner");
        ASSERT_TRUE(inner->setChild(next, why));
        inner = std::move(next);
    }
    EXPECT_THROW(outer->copy(), std::length_error);
    inner.reset();
    outer.reset();  // must not need a stack frame per level
}

// Known colours, from the definitions: white, the primaries of sRGB (IEC 61966-2-1), and a way there and back for every space.
TEST(Color, ConvertsBetweenItsSpaces) {
    const auto white = toXyz(Color{"srgb", {1, 1, 1}});
    ASSERT_TRUE(white);
    EXPECT_NEAR((*white)[0], 0.95046, 1e-5);
    EXPECT_NEAR((*white)[1], 1.0, 1e-12);
    EXPECT_NEAR((*white)[2], 1.08906, 1e-5);
    const auto red = toXyz(Color{"srgb", {1, 0, 0}});
    EXPECT_NEAR((*red)[0], 0.4124, 5e-5);
    EXPECT_NEAR((*red)[1], 0.2126, 5e-5);
    EXPECT_NEAR((*red)[2], 0.0193, 5e-5);
    const auto lab = convert(Color{"srgb", {0.5F, 0.5F, 0.5F}}, "lab");
    EXPECT_NEAR(lab->coords[0], 53.389F, 1e-3F);
    EXPECT_NEAR(lab->coords[1], 0.0F, 1e-3F);
    const Color color{"srgb", {0.8F, 0.01F, 0.3F}};
    for (const ColorSpace& space : colorSpaces()) {
        const auto back = convert(*convert(color, space.name), "srgb");
        for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(back->coords[i], color.coords[i], 2e-5F) << space.name;
    }
    const auto twentyTwenty = convert(Color{"rec2020", {1, 0, 0}}, "xyy");
    EXPECT_NEAR(twentyTwenty->coords[0], 0.708F, 1e-5F);
    EXPECT_NEAR(twentyTwenty->coords[1], 0.292F, 1e-5F);
    EXPECT_FALSE(toXyz(Color{"nowhere", {}}));
}

}  // namespace
}  // namespace nemra::node
