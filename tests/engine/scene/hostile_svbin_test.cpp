// svbin files that were made to mislead their reader: sound in their structure, wrong in what they say.
#include <flatbuffers/flatbuffers.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <functional>

#include "engine/node/read_scene.h"
#include "engine/node/svbin/svbin.h"
#include "scene_generated.h"
#include "tests/engine/scene/messages.h"

namespace nemra::node {
namespace {

using test::Messages;
using Builder = flatbuffers::FlatBufferBuilder;
template <class T>
using Offset = flatbuffers::Offset<T>;

class HostileSvbin : public testing::Test {
protected:
    static void SetUpTestSuite() { registerClasses(); }
};

std::string finished(Builder& builder, Offset<fb::Scene> scene, std::uint16_t version = 1) {
    fb::FinishFileBuffer(builder, fb::CreateFile(builder, version, fb::Contents_Scene, scene.Union()));
    return {reinterpret_cast<const char*>(builder.GetBufferPointer()), builder.GetSize()};
}

/// A scene of one node.
std::string fileOf(const std::function<Offset<fb::Node>(Builder&)>& node) {
    Builder builder;
    const std::vector<Offset<fb::Node>> nodes{node(builder)};
    return finished(builder, fb::CreateSceneDirect(builder, "s", nullptr, nullptr, nullptr, &nodes));
}

std::string fileOf(const std::function<Offset<fb::Geometry>(Builder&)>& geometry) {
    Builder builder;
    const std::vector<Offset<fb::Geometry>> geometries{geometry(builder)};
    return finished(builder, fb::CreateSceneDirect(builder, "s", nullptr, nullptr, nullptr, nullptr, &geometries));
}

Offset<fb::Node> withParameter(Builder& builder, const char* family, const char* type, const char* name,
                               Offset<fb::Value> value) {
    const std::vector<Offset<fb::Parameter>> parameters{fb::CreateParameterDirect(builder, name, value)};
    return fb::CreateNodeDirect(builder, family, type, "n", nullptr, nullptr, &parameters);
}

Offset<fb::Value> real(Builder& builder, double number) {
    fb::ValueBuilder value(builder);
    value.add_real(number);
    return value.Finish();
}

Offset<fb::Value> samples(Builder& builder, const std::vector<double>& wavelengths, const std::vector<double>& values,
                          const char* valueName = "value") {
    const std::vector<Offset<fb::Run>> a{fb::CreateRunDirect(builder, &wavelengths)};
    const std::vector<Offset<fb::Run>> b{fb::CreateRunDirect(builder, &values)};
    const std::vector<Offset<fb::Column>> columns{fb::CreateColumnDirect(builder, "wavelength", &a),
                                                  fb::CreateColumnDirect(builder, valueName, &b)};
    const auto table = fb::CreateTableDataDirect(builder, &columns);
    fb::ValueBuilder value(builder);
    value.add_table(table);
    return value.Finish();
}

Offset<fb::Geometry> mesh(Builder& builder, const std::vector<double>& vertices, const std::vector<std::int32_t>& triangles) {
    const auto shape = fb::CreateMeshDirect(builder, &vertices, nullptr, nullptr, &triangles);
    return fb::CreateGeometryDirect(builder, "m", nullptr, 0, fb::Shape_Mesh, shape.Union());
}

bool read(std::string_view file, std::string& said, Unknown unknown = Unknown::refuse) {
    Messages messages;
    Scene scene;
    scene.name = "mark";
    const bool done = readScene(file, "test", scene, unknown);
    EXPECT_EQ(messages.errors(), done ? 0 : 1) << messages.text();
    if (!done) {
        EXPECT_EQ(scene.name, "mark");
    }
    said = messages.text();
    return done;
}

TEST_F(HostileSvbin, SaysWhatIsWrong) {
    const struct {
        std::string file;
        const char* said;
    } cases[] = {
        {fileOf([](Builder& b) { return fb::CreateNodeDirect(b, "bsdf", "nosuch", "n"); }), "unknown class 'bsdf/nosuch'"},
        {fileOf([](Builder& b) { return fb::CreateNodeDirect(b, "b\xff", "nosuch", "n"); }), "a text isn't UTF-8"},
        {fileOf([](Builder& b) { return withParameter(b, "setup", "default", "max_deep", real(b, 1)); }),
         "setup/default n: unknown parameter 'max_deep'"},
        {fileOf([](Builder& b) { return withParameter(b, "setup", "default", "max_depth", real(b, 1.5)); }), "whole number"},
        {fileOf([](Builder& b) { return withParameter(b, "setup", "default", "max_depth", real(b, -7)); }), "max_depth"},
        {fileOf([](Builder& b) { return withParameter(b, "setup", "default", "max_depth", {}); }), "max_depth"},
        {fileOf([](Builder& b) {
             return withParameter(b, "spectrum", "tabulated", "samples", samples(b, {400, 500}, {1}));
         }),
         "column 'value' has 1 cells, the one before it 2"},
        {fileOf([](Builder& b) {
             return withParameter(b, "spectrum", "tabulated", "samples", samples(b, {400}, {1}, "wavelength"));
         }),
         "a second column 'wavelength'"},
        {fileOf([](Builder& b) { return withParameter(b, "spectrum", "tabulated", "samples", samples(b, {400}, {1}, "x")); }),
         "has no column 'x'"},
        {fileOf([](Builder& b) {
             return mesh(b, {0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 3});
         }),
         "mesh 'm': triangle 0 refers to vertex 3"},
        {fileOf([](Builder& b) {
             return mesh(b, {0, 0, 0, 1, 0, 0, 0, 1, NAN}, {0, 1, 2});
         }),
         "mesh 'm': vertex 2"},
        {fileOf([](Builder& b) {
             return mesh(b, {0, 0, 0, 1, 0, 0, 0, 1}, {0, 1, 2});
         }),
         "mesh 'm': 8 numbers for the vertices"},
        {[] {
             Builder b;
             return finished(b, fb::CreateScene(b), 2);
         }(),
         "written in version 2"},
        {std::string(writeSvbin(Node(*findClass("bsdf", "black"), "b")).text()), "a scene expected, the file holds a node"},
    };
    for (const auto& broken : cases) {
        std::string said;
        EXPECT_FALSE(read(broken.file, said)) << broken.said;
        EXPECT_NE(said.find(broken.said), std::string::npos) << "said:     " << said << "expected: " << broken.said;
        EXPECT_NE(said.find("test:byte "), std::string::npos) << said;
    }
}

TEST_F(HostileSvbin, UnknownIsSkippedWhereThatIsAskedFor) {
    Builder b;
    const std::vector<Offset<fb::Parameter>> parameters{fb::CreateParameterDirect(b, "max_deep", real(b, 1)),
                                                        fb::CreateParameterDirect(b, "max_depth", real(b, 9))};
    const std::vector<Offset<fb::Node>> nodes{fb::CreateNodeDirect(b, "bsdf", "nosuch", "x"),
                                              fb::CreateNodeDirect(b, "setup", "default", "n", nullptr, nullptr, &parameters)};
    const std::string file = finished(b, fb::CreateSceneDirect(b, "s", nullptr, nullptr, nullptr, &nodes));
    std::string said;
    EXPECT_FALSE(read(file, said));
    Messages messages;
    Scene scene;
    ASSERT_TRUE(readScene(file, "test", scene, Unknown::skip));
    EXPECT_EQ(messages.warnings(), 2);
    EXPECT_NE(messages.text().find("unknown class 'bsdf/nosuch', skipped"), std::string::npos) << messages.text();
    ASSERT_EQ(scene.nodes.size(), 1U);
    EXPECT_EQ(scene.nodes[0]->integer("max_depth"), 9);
}

// Each level holds the one below it twice, so that 40 tables would unfold into 2^40 nodes.
TEST_F(HostileSvbin, SharedTablesDoNotUnfold) {
    Builder builder;
    auto node = fb::CreateNodeDirect(builder, "layer", "generic", "l");
    for (int level = 0; level < 40; ++level) {
        const std::vector<Offset<fb::Node>> twice{node, node};
        node = fb::CreateNodeDirect(builder, "layer", "generic", "l", nullptr, nullptr, nullptr, nullptr, nullptr, &twice);
    }
    const std::vector<Offset<fb::Node>> nodes{node};
    const auto start = std::chrono::steady_clock::now();
    std::string said;
    EXPECT_FALSE(read(finished(builder, fb::CreateSceneDirect(builder, "s", nullptr, nullptr, nullptr, &nodes)), said));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

// One array and one text that a thousand tables use: a small file that would fill the memory.
TEST_F(HostileSvbin, SharedArraysAndTextsDoNotUnfold) {
    Builder builder;
    const auto vertices = builder.CreateVector(std::vector<double>(30000));
    std::vector<Offset<fb::Geometry>> geometries;
    for (int i = 0; i < 1000; ++i) {
        const auto shape = fb::CreateMesh(builder, vertices);
        geometries.push_back(fb::CreateGeometry(builder, 0, 0, 0, fb::Shape_Mesh, shape.Union()));
    }
    std::string said;
    EXPECT_FALSE(
        read(finished(builder, fb::CreateSceneDirect(builder, "s", nullptr, nullptr, nullptr, nullptr, &geometries)), said));
    EXPECT_NE(said.find("used too often"), std::string::npos) << said;

    Builder second;
    const auto name = second.CreateString(std::string(100000, 'x'));
    const std::vector<Offset<flatbuffers::String>> paths(1000, name);
    EXPECT_FALSE(read(finished(second, fb::CreateSceneDirect(second, "s", nullptr, &paths)), said));
    EXPECT_NE(said.find("used too often"), std::string::npos) << said;
}

TEST_F(HostileSvbin, TooDeep) {
    for (const auto& [levels, taken] : {std::pair{250, true}, std::pair{300, false}, std::pair{100000, false}}) {
        Builder builder;
        auto node = fb::CreateNodeDirect(builder, "layer", "generic", "l");
        for (int level = 0; level < levels; ++level) {
            const std::vector<Offset<fb::Node>> items{node};
            node = fb::CreateNodeDirect(builder, "layer", "generic", "l", nullptr, nullptr, nullptr, nullptr, nullptr, &items);
        }
        const std::vector<Offset<fb::Node>> nodes{node};
        std::string said;
        EXPECT_EQ(read(finished(builder, fb::CreateSceneDirect(builder, "s", nullptr, nullptr, nullptr, &nodes)), said), taken)
            << said;
    }
}

// Bytes that a caller hands over may begin anywhere.
TEST_F(HostileSvbin, AnyAddress) {
    const std::string file = fileOf([](Builder& b) { return mesh(b, {0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2}); });
    for (std::size_t shift = 0; shift < 16; ++shift) {
        const std::string moved = std::string(shift, '\0') + file;
        std::string said;
        EXPECT_TRUE(read(std::string_view(moved).substr(shift), said)) << shift << said;
    }
}

}  // namespace
}  // namespace nemra::node
