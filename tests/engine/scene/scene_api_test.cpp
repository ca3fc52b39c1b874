// Scenes, geometries and instances through the flat interface: who owns what, stale and foreign handles, refused input.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "module/flat/nemra_common.h"
#include "module/flat/nemra_node.h"
#include "module/flat/nemra_scene.h"
#include "tests/engine/scene/messages.h"
#include "tests/engine/scene/small_scene.h"

namespace {

using nemra::test::kSmallScene;
using nemra::test::Messages;

constexpr double kVertices[] = {0, 0, 0, 2, 0, 0, 0, 3, 0};
constexpr std::int32_t kTriangles[] = {0, 1, 2};

std::string taken(char* text) {
    const std::string copy = text == nullptr ? "(null)" : text;
    freeCharArray(text);
    return copy;
}

class SceneApi : public testing::Test {
protected:
    static void SetUpTestSuite() { nemraNode_register(); }
    void SetUp() override { scene_ = nemraScene_create("test"); }
    void TearDown() override { nemraScene_release(&scene_); }

    static nemra_geom_t* makeMesh() { return nemraMesh_create("m", kVertices, nullptr, nullptr, 9, kTriangles, 3); }
    template <class Function, class... Arguments>
    std::uint32_t count(Function function, Arguments... arguments) {
        std::uint32_t n = 77;
        function(scene_, arguments..., &n);
        return n;
    }

    nemra_scene_t* scene_ = nullptr;
};

TEST_F(SceneApi, MeshGivesBackWhatItGot) {
    nemra_geom_t* mesh = makeMesh();
    ASSERT_EQ(nemraMesh_getVerticesSize(mesh), 9U);
    EXPECT_EQ(std::memcmp(nemraMesh_getVertices(mesh), kVertices, sizeof kVertices), 0);
    ASSERT_EQ(nemraMesh_getTrianglesSize(mesh), 3U);
    EXPECT_EQ(std::memcmp(nemraMesh_getTriangles(mesh), kTriangles, sizeof kTriangles), 0);
    EXPECT_EQ(nemraMesh_getVextexNormalsSize(mesh), 0U);
    EXPECT_EQ(nemraMesh_getUvs(mesh), nullptr);
    ASSERT_EQ(nemraMesh_getTriangleNormalsSize(mesh), 3U);
    EXPECT_FLOAT_EQ(nemraMesh_getTriangleNormals(mesh)[2], 1.0F);
    EXPECT_EQ(nemraGeometry_numPrimitives(mesh), 1);
    // Some callers free the type's text, others keep it.
    for (int i = 0; i < 3; ++i) EXPECT_EQ(taken(nemraGeometry_getType(mesh)), "mesh");
    EXPECT_STREQ(nemraGeometry_getType(mesh), "mesh");
    nemraGeometry_release(&mesh);
    EXPECT_EQ(mesh, nullptr);
}

TEST_F(SceneApi, UnsoundGeometryIsRefusedWithAMessage) {
    const double infinite[] = {0, 0, 0, 2, 0, HUGE_VAL, 0, 3, 0};
    const std::int32_t beyond[] = {0, 1, 3};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float normals[] = {0, 0, 1, 0, 0, nan, 0, 0, 1};
    Messages messages;
    EXPECT_EQ(nemraMesh_create("a", infinite, nullptr, nullptr, 9, kTriangles, 3), nullptr);
    EXPECT_EQ(nemraMesh_create("b", kVertices, nullptr, nullptr, 9, beyond, 3), nullptr);
    EXPECT_EQ(nemraMesh_create("c", kVertices, normals, nullptr, 9, kTriangles, 3), nullptr);
    EXPECT_EQ(nemraMesh_create("d", kVertices, nullptr, nullptr, 8, kTriangles, 3), nullptr);
    EXPECT_EQ(nemraMesh_create("e", kVertices, nullptr, nullptr, -9, kTriangles, 3), nullptr);
    EXPECT_EQ(nemraMesh_create("f", nullptr, nullptr, nullptr, 9, kTriangles, 3), nullptr);
    EXPECT_EQ(nemraMesh_create("g", nullptr, nullptr, nullptr, 0, kTriangles, 3), nullptr);
    EXPECT_EQ(nemraSphere_create("h", 0.0F, false), nullptr);
    EXPECT_EQ(nemraCone_create("i", nan, false), nullptr);
    EXPECT_EQ(messages.errors(), 9) << messages.text();
    EXPECT_NE(messages.text().find("mesh 'b': not created: triangle 0 refers to vertex 3"), std::string::npos) << messages.text();

    nemra_geom_t* sphere = nemraSphere_create("s", 2.0F, false);
    EXPECT_FALSE(nemraSphere_setRadius(sphere, -1.0F));
    EXPECT_FALSE(nemraCone_setRtop(sphere, 1.0F));
    EXPECT_EQ(nemraSphere_getRadius(sphere), 2.0F);
    nemra_geom_t* empty = nemraMesh_create(nullptr, nullptr, nullptr, nullptr, 0, nullptr, 0);
    EXPECT_EQ(nemraGeometry_numPrimitives(empty), 0);
    nemraGeometry_release(&empty);
    nemraGeometry_release(&sphere);
}

TEST_F(SceneApi, AddingCopies) {
    nemra_geom_t* sphere = nemraSphere_create("s", 1.0F, false);
    nemra_geom_t* const inScene = nemraScene_addGeom(scene_, &sphere, true);
    ASSERT_NE(sphere, nullptr);
    ASSERT_NE(inScene, sphere);
    EXPECT_TRUE(nemraSphere_setRadius(sphere, 5.0F));
    EXPECT_EQ(nemraSphere_getRadius(inScene), 1.0F);

    nemra_onode_t* node = nemraNode_create("material", "generic", "white");
    nemra_onode_t* const nodeInScene = nemraScene_addNode(scene_, &node, true);
    nemraNode_setName(node, "other");
    EXPECT_STREQ(nemraNode_name(nodeInScene), "white");
    EXPECT_EQ(count(nemraScene_findNodes, "material", "", "white"), 1U);
    EXPECT_EQ(count(nemraScene_findNodes, "", "", "other"), 0U);
    std::uint32_t n = 0;
    EXPECT_EQ(nemraScene_getNodes(scene_, &n)[0], nodeInScene) << "the scene's copy has one handle";
    nemraNode_release(&node);
    nemraGeometry_release(&sphere);
    EXPECT_STREQ(nemraNode_name(nodeInScene), "white");
    EXPECT_EQ(nemraSphere_getRadius(inScene), 1.0F);
}

TEST_F(SceneApi, OriginalGivenAwayIsGone) {
    nemra_geom_t* mesh = makeMesh();
    nemra_geom_t* const stale = mesh;
    nemra_geom_t* const inScene = nemraScene_addGeom(scene_, &mesh, false);
    EXPECT_EQ(mesh, nullptr);
    EXPECT_STREQ(nemraGeometry_name(stale), "");
    EXPECT_STREQ(nemraGeometry_name(inScene), "m");

    nemra_onode_t* node = nemraNode_create("bsdf", "black", "b");
    nemra_onode_t* const staleNode = node;
    nemra_onode_t* const nodeInScene = nemraScene_addNode(scene_, &node, false);
    EXPECT_EQ(node, nullptr);
    EXPECT_STREQ(nemraNode_name(staleNode), "");
    EXPECT_STREQ(nemraNode_name(nodeInScene), "b");

    nemra_instance_t* instance = nemraInstance_create();
    const std::uint64_t number = nemraScene_addInstance(scene_, &instance, nullptr, false);
    EXPECT_EQ(instance, nullptr);
    EXPECT_NE(number, 0U);

    // What another scene keeps can't be taken from it; the wrapper that was given away reads as deleted all the same.
    nemra_scene_t* other = nemraScene_create("other");
    nemra_geom_t* field = inScene;
    nemra_geom_t* const copy = nemraScene_addGeom(other, &field, false);
    EXPECT_EQ(field, nullptr);
    EXPECT_NE(copy, inScene);
    EXPECT_STREQ(nemraGeometry_name(inScene), "m");
    EXPECT_EQ(count(nemraScene_getMeshes), 1U);
    nemraScene_release(&other);
    EXPECT_STREQ(nemraGeometry_name(copy), "");
    EXPECT_STREQ(nemraGeometry_name(inScene), "m");
}

TEST_F(SceneApi, RemovingEndsHandles) {
    nemra_geom_t* sphere = nemraSphere_create("s", 1.0F, false);
    nemra_geom_t* const a = nemraScene_addGeom(scene_, &sphere, true);
    nemra_geom_t* const b = nemraScene_addGeom(scene_, &sphere, true);
    nemra_instance_t* instance = nemraInstance_create();
    const std::uint64_t number = nemraScene_addInstance(scene_, &instance, nullptr, true);
    EXPECT_LT(number, std::uint64_t{1} << 31) << "scripts see the low 31 bits";
    nemra_onode_t* node = nemraNode_create("bsdf", "black", "b");
    nemra_onode_t* const nodeInScene = nemraScene_addNode(scene_, &node, true);

    EXPECT_FALSE(nemraScene_removeGeom(scene_, sphere)) << "the original isn't in the scene";
    EXPECT_FALSE(nemraScene_removeNode(scene_, node));
    EXPECT_TRUE(nemraScene_removeGeom(scene_, a));
    EXPECT_FALSE(nemraScene_removeGeom(scene_, a));
    EXPECT_EQ(nemraSphere_getRadius(a), 0.0F);
    EXPECT_STREQ(nemraGeometry_getType(a), "");
    EXPECT_EQ(count(nemraScene_getSpheres), 1U);

    nemraScene_remove(scene_, reinterpret_cast<std::uintptr_t>(b));
    nemraScene_remove(scene_, number);
    nemraScene_remove(scene_, reinterpret_cast<std::uintptr_t>(nodeInScene));
    EXPECT_EQ(count(nemraScene_getGeometries) + count(nemraScene_getInstances) + count(nemraScene_getNodes), 0U);
    EXPECT_STREQ(nemraNode_name(nodeInScene), "");
    Messages messages;
    nemraScene_remove(scene_, 0);
    nemraScene_remove(scene_, ~std::uint64_t{0});
    EXPECT_EQ(messages.errors(), 0);

    nemra_geom_t* const c = nemraScene_addGeom(scene_, &sphere, true);
    nemraScene_clear(scene_);
    EXPECT_STREQ(nemraGeometry_name(c), "");
    EXPECT_STREQ(nemraScene_name(scene_), "test");
    nemraGeometry_release(&sphere);
    nemraInstance_release(&instance);
    nemraNode_release(&node);
}

TEST_F(SceneApi, NullStaleAndForeignHandlesAreAnswered) {
    nemra_onode_t* node = nemraNode_create("bsdf", "black", "b");
    nemra_geom_t* released = makeMesh();
    nemra_geom_t* const stale = released;
    nemraGeometry_release(&released);
    for (void* handle : {static_cast<void*>(nullptr), static_cast<void*>(node), static_cast<void*>(stale),
                         reinterpret_cast<void*>(0x7fffffffffff)}) {
        auto* geometry = static_cast<nemra_geom_t*>(handle);
        auto* instance = static_cast<nemra_instance_t*>(handle);
        auto* scene = static_cast<nemra_scene_t*>(handle);
        EXPECT_STREQ(nemraGeometry_name(geometry), "");
        EXPECT_EQ(taken(nemraGeometry_getType(geometry)), "");
        EXPECT_EQ(taken(nemraGeometry_getMaterialName(geometry)), "");
        EXPECT_EQ(nemraGeometry_getMaterial(geometry), nullptr);
        EXPECT_EQ(nemraGeometry_numPrimitives(geometry), 0);
        std::int32_t size = 7;
        EXPECT_EQ(taken(nemraGeometry_serialize(geometry, 0, &size)), "");  // a null text would be an exception in scripts
        EXPECT_EQ(taken(nemraInstance_serialize(instance, 1, &size)), "");
        EXPECT_EQ(size, 0);
        EXPECT_EQ(nemraMesh_getTriangleNormals(geometry), nullptr);
        EXPECT_STREQ(nemraInstance_geometryName(instance), "");
        EXPECT_EQ(nemraInstance_getTransform(instance), nullptr);
        EXPECT_EQ(nemraInstance_copy(instance), nullptr);
        EXPECT_EQ(nemraInstance_material(instance), nullptr);
        EXPECT_STREQ(nemraScene_name(scene), "");
        EXPECT_STREQ(nemraScene_getActiveSetupName(scene), "");
        EXPECT_FALSE(nemraScene_setActiveSetupName(scene, "x"));
        EXPECT_FALSE(nemraScene_readFromChar(scene, kSmallScene.data(), 10));
        std::uint32_t n = 7;
        EXPECT_EQ(nemraScene_getGeometries(scene, &n), nullptr);
        EXPECT_EQ(n, 0U);
        EXPECT_EQ(nemraScene_addGeom(scene_, &geometry, false), nullptr);
        EXPECT_EQ(nemraScene_addInstance(scene_, &instance, nullptr, true), 0U);
        nemraScene_clear(scene);
        nemraScene_remove(scene, 1);
    }
    EXPECT_EQ(nemraScene_addNode(scene_, nullptr, true), nullptr);
    EXPECT_EQ(nemraScene_addGeom(scene_, nullptr, true), nullptr);
    nemraGeometry_release(nullptr);
    nemraInstance_setTransform(nullptr, nullptr);
    EXPECT_STREQ(nemraNode_name(node), "b") << "a foreign handle must not be touched";
    nemraNode_release(&node);
}

TEST_F(SceneApi, InstancesShareMaterialsAndKeepLayers) {
    nemra_onode_t* material = nemraNode_create("material", "generic", "white");
    nemra_instance_t* instance = nemraInstance_create();
    EXPECT_EQ(nemraInstance_getTransform(instance)[15], 1.0);
    const double notFinite[16] = {NAN};
    {
        Messages messages;
        nemraInstance_setTransform(instance, notFinite);
        EXPECT_EQ(messages.errors(), 1);
    }
    EXPECT_EQ(nemraInstance_getTransform(instance)[0], 1.0);
    nemraInstance_setGeometryName(instance, "s");
    nemraInstance_setMaterial(instance, &material, false, true);
    nemra_instance_t* copy = nemraInstance_copy(instance);
    EXPECT_EQ(nemraInstance_material(copy), nemraInstance_material(instance));
    EXPECT_EQ(nemraInstance_material(copy), material);

    const char* first[] = {"layer_0", nullptr};
    const char* second[] = {"layer_0", "a/b", nullptr};
    const char* none[] = {nullptr};
    const char** layers[] = {first, second, none, nullptr};
    EXPECT_NE(nemraScene_addInstance(scene_, &copy, layers, true), 0U);
    std::int32_t size = 0;
    const std::string text = taken(nemraScene_writeToChar(scene_, 0, &size));
    EXPECT_EQ(text.size(), static_cast<std::size_t>(size));
    EXPECT_NE(text.find("<layer path=\"layer_0/a\\/b\"/>"), std::string::npos) << text;
    EXPECT_NE(text.find("<layer path=\"\"/>"), std::string::npos) << text;
    EXPECT_NE(text.find("<material type=\"generic\" name=\"white\"/>"), std::string::npos)
        << "a material outside the scene goes along";

    // Without paths an instance goes in without layers, wherever it was before.
    std::uint32_t n = 0;
    nemra_instance_t* filed = nemraInstance_copy(nemraScene_getInstances(scene_, &n)[0]);
    nemra_scene_t* other = nemraScene_create("other");
    const char** nowhere[] = {nullptr};
    EXPECT_NE(nemraScene_addInstance(other, &filed, nowhere, false), 0U);
    EXPECT_EQ(taken(nemraScene_writeToChar(other, 0, nullptr)).find("<layer"), std::string::npos);
    nemraScene_release(&other);

    nemraInstance_setMaterial(instance, &material, true, false);
    EXPECT_EQ(material, nullptr);
    EXPECT_STREQ(nemraNode_name(nemraInstance_material(instance)), "white");
    nemraInstance_release(&instance);
    nemraInstance_release(&copy);
}

TEST_F(SceneApi, GeometryMaterialByNodeAndByName) {
    nemra_geom_t* mesh = makeMesh();
    nemra_onode_t* material = nemraNode_create("material", "generic", "white");
    nemra_onode_t* bsdf = nemraNode_create("bsdf", "black", "b");
    nemraGeometry_setMaterial(mesh, material);
    EXPECT_EQ(taken(nemraGeometry_getMaterialName(mesh)), "white");
    EXPECT_EQ(nemraGeometry_getMaterial(mesh), material);
    {
        Messages messages;
        nemraGeometry_setMaterial(mesh, bsdf);
        EXPECT_EQ(messages.warnings(), 1);
    }
    EXPECT_EQ(nemraGeometry_getMaterial(mesh), material);
    nemraGeometry_setMaterialName(mesh, "green");
    EXPECT_EQ(taken(nemraGeometry_getMaterialName(mesh)), "green");
    EXPECT_EQ(nemraGeometry_getMaterial(mesh), nullptr);
    nemraGeometry_release(&mesh);
    nemraNode_release(&material);
    nemraNode_release(&bsdf);
}

TEST_F(SceneApi, ReadingReplacesAndWritingGivesItBack) {
    nemra_geom_t* sphere = nemraSphere_create("old", 1.0F, false);
    nemra_geom_t* const old = nemraScene_addGeom(scene_, &sphere, false);
    {
        Messages messages;
        EXPECT_FALSE(nemraScene_readFromChar(scene_, kSmallScene.data(), 100));
        EXPECT_FALSE(nemraScene_readFromFile(scene_, "/nowhere/at/all"));
        EXPECT_FALSE(nemraScene_readFromChar(scene_, nullptr, 5));
        EXPECT_EQ(messages.errors(), 3) << messages.text();
    }
    EXPECT_STREQ(nemraGeometry_name(old), "old");
    ASSERT_TRUE(nemraScene_readFromChar(scene_, kSmallScene.data(), static_cast<std::int32_t>(kSmallScene.size())));
    EXPECT_STREQ(nemraGeometry_name(old), "");
    EXPECT_EQ(count(nemraScene_getGeometries), 3U);
    EXPECT_EQ(count(nemraScene_getMeshes) + count(nemraScene_getSpheres) + count(nemraScene_getCones), 3U);
    EXPECT_EQ(count(nemraScene_getInstances), 2U);
    EXPECT_STREQ(nemraScene_getActiveSetupName(scene_), "main");
    const std::string text = taken(nemraScene_writeToChar(scene_, 0, nullptr));
    ASSERT_TRUE(nemraScene_readFromChar(scene_, text.data(), static_cast<std::int32_t>(text.size())));
    EXPECT_EQ(taken(nemraScene_writeToChar(scene_, 0, nullptr)), text);

    for (const int format : {1, 2, 3}) {
        std::int32_t size = 0;
        char* const bytes = nemraScene_writeToChar(scene_, format, &size);
        ASSERT_NE(bytes, nullptr) << format;
        nemraScene_clear(scene_);
        EXPECT_TRUE(nemraScene_readFromChar(scene_, bytes, size)) << format;
        EXPECT_EQ(taken(nemraScene_writeToChar(scene_, 0, nullptr)), text) << format;
        freeCharArray(bytes);
    }
    Messages messages;
    std::int32_t size = 7;
    for (const int format : {4, -1}) EXPECT_EQ(nemraScene_writeToChar(scene_, format, &size), nullptr);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(messages.warnings(), 2);
}

}  // namespace
