// Scenes, geometries and instances through the flat interface: who owns what, stale and foreign handles, refused input.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <ctime>
#include <limits>
#include <string>
#include <vector>

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
    EXPECT_EQ(nemraSphere_create("huge", 3e38F, false), nullptr);
    EXPECT_EQ(messages.errors(), 10) << messages.text();
    EXPECT_NE(messages.text().find("the radius is larger than 1e18"), std::string::npos) << messages.text();
    EXPECT_NE(messages.text().find("mesh 'b': not created: triangle 0 refers to vertex 3"), std::string::npos) << messages.text();

    const float short_[] = {0, 0, 1, 0, 0, 0, 0, 0, 0};  // as the module hands on one normal for three vertices
    nemra_geom_t* flat = nemraMesh_create("j", kVertices, short_, nullptr, 9, kTriangles, 3);
    EXPECT_NE(flat, nullptr);
    EXPECT_NE(messages.text().find("mesh 'j': 2 of its 3 normals have no length"), std::string::npos) << messages.text();
    nemraGeometry_release(&flat);

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
        std::uint32_t nodeSize = 7;
        EXPECT_TRUE(handle == node || taken(nemraNode_serialize(static_cast<nemra_onode_t*>(handle), 0, &nodeSize)).empty());
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

/// What a script does to a material of its own after adding must not reach into the scene.
TEST_F(SceneApi, ASceneHasItsOwnMaterials) {
    const auto text = [&] { return taken(nemraScene_writeToChar(scene_, 0, nullptr)); };
    const auto count = [](const std::string& where, const std::string& what) {
        std::size_t n = 0;
        for (std::size_t at = where.find(what); at != std::string::npos; at = where.find(what, at + 1)) ++n;
        return n;
    };
    nemra_onode_t* material = nemraNode_create("material", "generic", "white");
    nemra_geom_t* sphere = nemraSphere_create("s", 1.0F, false);
    nemra_instance_t* instance = nemraInstance_create();
    nemraGeometry_setMaterial(sphere, material);
    nemraInstance_setMaterial(instance, &material, false, true);
    nemra_geom_t* const inScene = nemraScene_addGeom(scene_, &sphere, true);
    nemraScene_addInstance(scene_, &instance, nullptr, true);
    std::uint32_t n = 0;
    nemra_instance_t* const placed = nemraScene_getInstances(scene_, &n)[0];
    EXPECT_NE(nemraGeometry_getMaterial(inScene), material);
    EXPECT_EQ(nemraGeometry_getMaterial(inScene), nemraInstance_material(placed)) << "one copy of one node";
    EXPECT_EQ(nemraGeometry_getMaterial(sphere), material) << "the original is as it was";
    const std::string before = text();
    nemraNode_setName(material, "changed");
    EXPECT_EQ(text(), before);

    // A changed node is another material; a scene's own node is shared, also when it is given to what is in the scene already.
    nemraScene_addInstance(scene_, &instance, nullptr, true);
    EXPECT_EQ(count(text(), "name=\"white\""), 2U);
    EXPECT_EQ(count(text(), "name=\"changed\""), 1U);
    nemra_onode_t* own = nemraScene_addNode(scene_, &material, true);
    nemraScene_addInstance(scene_, &instance, nullptr, true);
    EXPECT_EQ(nemraInstance_material(nemraScene_getInstances(scene_, &n)[2]), own) << "the scene has a copy of this node";
    nemraGeometry_setMaterial(inScene, own);
    EXPECT_EQ(nemraGeometry_getMaterial(inScene), own);
    nemra_onode_t* other = nemraNode_create("material", "generic", "other");
    nemraGeometry_setMaterial(inScene, other);
    nemraNode_setName(other, "renamed");
    EXPECT_EQ(taken(nemraGeometry_getMaterialName(inScene)), "other");

    // Given away with its material: what another scene gets is its own again.
    nemra_scene_t* second = nemraScene_create("second");
    nemra_geom_t* const there = nemraScene_addGeom(second, &sphere, false);
    EXPECT_NE(nemraGeometry_getMaterial(there), material);
    nemraNode_setName(material, "once more");
    EXPECT_EQ(taken(nemraGeometry_getMaterialName(there)), "changed");
    nemraScene_release(&second);
    for (nemra_onode_t** node : {&material, &other}) nemraNode_release(node);
    nemraInstance_release(&instance);
}

/// The link to a material is one of the scene: it outlives writing and reading, follows a new name, and becomes a name again when
/// the material leaves.
TEST_F(SceneApi, MaterialsAreLinkedByTheScene) {
    nemra_onode_t* node = nemraNode_create("material", "generic", "white");
    nemra_onode_t* const white = nemraScene_addNode(scene_, &node, true);
    nemra_geom_t* sphere = nemraSphere_create("s", 1.0F, false);
    nemraGeometry_setMaterialName(sphere, "white");
    nemra_geom_t* const named = nemraScene_addGeom(scene_, &sphere, true);
    EXPECT_EQ(nemraGeometry_getMaterial(sphere), nullptr) << "outside of a scene a name is a name";
    EXPECT_EQ(nemraGeometry_getMaterial(named), white);

    for (const int format : {0, 1, 2, 3}) {
        std::int32_t size = 0;
        char* const bytes = nemraScene_writeToChar(scene_, format, &size);
        ASSERT_TRUE(nemraScene_readFromChar(scene_, bytes, size));
        freeCharArray(bytes);
        std::uint32_t n = 0;
        nemra_geom_t* const again = nemraScene_getGeometries(scene_, &n)[0];
        nemra_onode_t* const material = nemraGeometry_getMaterial(again);
        ASSERT_EQ(material, nemraScene_getNodes(scene_, &n)[0]);
        nemraNode_setName(material, "snow");
        EXPECT_EQ(taken(nemraGeometry_getMaterialName(again)), "snow");
        nemraNode_setName(material, "white");
    }
    std::uint32_t n = 0;
    nemra_geom_t* const geometry = nemraScene_getGeometries(scene_, &n)[0];
    nemra_onode_t* const old = nemraScene_getNodes(scene_, &n)[0];
    nemraNode_setComments(old, "old");
    EXPECT_TRUE(nemraScene_removeNode(scene_, old));
    EXPECT_STREQ(nemraNode_name(old), "") << "nothing in the scene holds it";
    EXPECT_EQ(taken(nemraGeometry_getMaterialName(geometry)), "white");
    EXPECT_EQ(nemraGeometry_getMaterial(geometry), nullptr);
    nemra_onode_t* const next = nemraScene_addNode(scene_, &node, true);
    EXPECT_EQ(nemraGeometry_getMaterial(geometry), next) << "the next of that name takes its place";
    nemraGeometry_setMaterial(geometry, next);
    nemraScene_clearNodes(scene_);
    EXPECT_STREQ(nemraNode_name(next), "");
    EXPECT_EQ(taken(nemraScene_writeToChar(scene_, 0, nullptr)).find("<material"), std::string::npos);
    EXPECT_EQ(taken(nemraGeometry_getMaterialName(geometry)), "white");
    nemraGeometry_release(&sphere);
    nemraNode_release(&node);
}

/// A material without a name can't be referred to by it: it goes along with what has it, and with nothing else.
TEST_F(SceneApi, NamelessMaterialsStayWhereTheyAre) {
    nemra_onode_t* node = nemraNode_create("material", "generic", "");
    nemraNode_setComments(node, "nameless");
    nemra_onode_t* const material = nemraScene_addNode(scene_, &node, false);
    for (const char* const name : {"with", "without"}) {
        nemra_geom_t* sphere = nemraSphere_create(name, 1.0F, false);
        nemra_geom_t* const geometry = nemraScene_addGeom(scene_, &sphere, false);
        if (name == std::string_view("with")) nemraGeometry_setMaterial(geometry, material);
        nemra_instance_t* placed = nemraInstance_create();
        nemraInstance_setGeometryName(placed, name);
        nemraScene_addInstance(scene_, &placed, nullptr, false);
    }
    for (const int format : {0, 1, 2, 3}) {
        std::int32_t size = 0;
        char* const bytes = nemraScene_writeToChar(scene_, format, &size);
        ASSERT_TRUE(nemraScene_readFromChar(scene_, bytes, size));
        freeCharArray(bytes);
        std::uint32_t n = 0;
        nemra_geom_t** const geometries = nemraScene_getGeometries(scene_, &n);
        ASSERT_EQ(n, 2U);
        EXPECT_STREQ(nemraNode_comments(nemraGeometry_getMaterial(geometries[0])), "nameless") << format;
        EXPECT_EQ(nemraGeometry_getMaterial(geometries[1]), nullptr) << format;
        nemra_instance_t** const instances = nemraScene_getInstances(scene_, &n);
        ASSERT_EQ(n, 2U);
        for (nemra_instance_t* const instance : {instances[0], instances[1]})
            EXPECT_EQ(nemraInstance_material(instance), nullptr);
    }
}

/// What can't be text in any encoding is made text when it comes in, so that what was written can be read.
TEST_F(SceneApi, BytesThatAreNoTextCanBeWrittenAndRead) {
    const char* const bad = "a\xff\xc3";
    nemraScene_setName(scene_, bad);
    nemraScene_addSearchPath(scene_, bad);
    nemraScene_setActiveSetupName(scene_, bad);
    EXPECT_TRUE(nemraScene_addImport(scene_, bad, false, 0, bad));
    nemra_onode_t* node = nemraNode_create("text", "default", bad);
    nemraNode_setComments(node, bad);
    nemraScene_addNode(scene_, &node, false);
    nemra_geom_t* sphere = nemraSphere_create(bad, 1.0F, false);
    nemraGeometry_setMaterialName(sphere, bad);
    nemra_instance_t* placed = nemraInstance_create();
    nemraInstance_setGeometryName(placed, bad);
    const char* path[] = {bad, nullptr};
    const char** layers[] = {path, nullptr};
    nemraScene_addInstance(scene_, &placed, layers, false);
    nemraScene_addGeom(scene_, &sphere, false);
    for (const int format : {0, 1, 2, 3}) {
        std::int32_t size = 0;
        char* const bytes = nemraScene_writeToChar(scene_, format, &size);
        ASSERT_NE(bytes, nullptr);
        const Messages messages;
        EXPECT_TRUE(nemraScene_readFromChar(scene_, bytes, size)) << messages.text();
        freeCharArray(bytes);
        EXPECT_STREQ(nemraScene_name(scene_), "a\xEF\xBF\xBD\xEF\xBF\xBD");
    }
}

/// Names are found among those that there are now, whatever was renamed, removed or has the same name.
TEST_F(SceneApi, NamesAreThoseOfNow) {
    const auto addNode = [&](const char* name) {
        nemra_onode_t* node = nemraNode_create("setup", "default", name);
        return nemraScene_addNode(scene_, &node, false);
    };
    const auto warns = [](auto&& body) {
        Messages messages;
        body();
        return messages.warnings();
    };
    nemra_onode_t* const a = addNode("a");
    EXPECT_EQ(warns([&] { addNode("b"); }), 0);
    EXPECT_EQ(warns([&] { addNode("a"); }), 1);
    nemraNode_setName(a, "c");
    EXPECT_EQ(warns([&] { EXPECT_TRUE(nemraScene_setActiveSetupName(scene_, "c")); }), 0);
    EXPECT_TRUE(nemraScene_setActiveSetupName(scene_, "a")) << "the second is still there";
    nemraScene_removeNode(scene_, a);
    EXPECT_EQ(warns([&] { EXPECT_FALSE(nemraScene_setActiveSetupName(scene_, "c")); }), 1);
    EXPECT_STREQ(nemraScene_getActiveSetupName(scene_), "c") << "it may come later";
    EXPECT_EQ(warns([&] { addNode("c"); }), 0);
    EXPECT_EQ(warns([&] { EXPECT_TRUE(nemraScene_setActiveSetupName(scene_, "")); }), 0);

    const auto addSphere = [&](const char* name) {
        nemra_geom_t* sphere = nemraSphere_create(name, 1.0F, false);
        return nemraScene_addGeom(scene_, &sphere, false);
    };
    nemra_geom_t* const s = addSphere("s");
    nemraGeometry_setName(s, "t");
    EXPECT_EQ(warns([&] { addSphere("s"); }), 0);
    EXPECT_EQ(warns([&] { addSphere("t"); }), 1);
    nemraScene_removeGeom(scene_, s);
    EXPECT_EQ(warns([&] { addSphere("u"); }), 0);
    std::uint32_t n = 0;
    nemra_geom_t** const left = nemraScene_getGeometries(scene_, &n);
    ASSERT_EQ(n, 3U);
    std::string order;
    for (std::uint32_t i = 0; i < n; ++i) order += nemraGeometry_name(left[i]);
    EXPECT_EQ(order, "stu");
}

/// 100,000 of each, added, renamed and removed one by one, from the front: no step may go through all the others.
TEST_F(SceneApi, ManyObjectsComeAndGoAtOnce) {
    constexpr int kMany = 100000;
    std::vector<nemra_onode_t*> nodes;
    std::vector<nemra_geom_t*> spheres;
    std::vector<std::uint64_t> instances;
    nemra_onode_t* material = nemraNode_create("material", "generic", "shared");
    nemra_instance_t* instance = nemraInstance_create();
    nemraInstance_setMaterial(instance, &material, false, true);
    const std::clock_t start = std::clock();
    for (int i = 0; i < kMany; ++i) {
        const std::string name = "thing " + std::to_string(i);
        nemra_onode_t* node = nemraNode_create("material", "generic", name.c_str());
        nodes.push_back(nemraScene_addNode(scene_, &node, false));
        nemra_geom_t* sphere = nemraSphere_create(name.c_str(), 1.0F, false);
        nemraGeometry_setMaterialName(sphere, name.c_str());
        spheres.push_back(nemraScene_addGeom(scene_, &sphere, false));
        instances.push_back(nemraScene_addInstance(scene_, &instance, nullptr, true));
    }
    for (int i = 0; i < kMany; ++i) {
        ASSERT_EQ(nemraGeometry_getMaterial(spheres[i]), nodes[i]);
        const std::string name = "object " + std::to_string(kMany - i);
        nemraNode_setName(nodes[i], name.c_str());
        nemraGeometry_setName(spheres[i], name.c_str());
    }
    EXPECT_EQ(count(nemraScene_getInstances), static_cast<std::uint32_t>(kMany));
    for (int i = 0; i < kMany; ++i) {
        nemraScene_remove(scene_, instances[i]);
        ASSERT_TRUE(nemraScene_removeGeom(scene_, spheres[i]));
        ASSERT_TRUE(nemraScene_removeNode(scene_, nodes[i]));
    }
    EXPECT_LT(std::clock() - start, 10 * CLOCKS_PER_SEC) << "it takes a second; minutes where each step looks at all";
    EXPECT_EQ(count(nemraScene_getGeometries) + count(nemraScene_getInstances) + count(nemraScene_getNodes), 0U);
    nemraInstance_release(&instance);
    nemraNode_release(&material);
}

TEST_F(SceneApi, ReadingReplacesAndWritingGivesItBack) {
    nemra_geom_t* sphere = nemraSphere_create("old", 1.0F, false);
    nemra_geom_t* const old = nemraScene_addGeom(scene_, &sphere, false);
    {
        Messages messages;
        EXPECT_FALSE(nemraScene_readFromChar(scene_, kSmallScene.data(), 100));
        EXPECT_FALSE(nemraScene_readFromFile(scene_, "/nowhere/at/all"));
        EXPECT_FALSE(nemraScene_readFromChar(scene_, nullptr, 5));
        EXPECT_FALSE(nemraScene_readFromFile(scene_, ""));
        EXPECT_EQ(messages.errors(), 4) << messages.text();
        EXPECT_NE(messages.text().find("no scene file is named"), std::string::npos) << messages.text();
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
