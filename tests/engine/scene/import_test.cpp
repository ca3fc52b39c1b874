// Imports: what another file brings, where files are looked for, how names are kept apart, what is refused.
#include <gtest/gtest.h>

#include "engine/node/import/load_imports.h"
#include "engine/node/read_scene.h"
#include "engine/node/svbin/svbin.h"
#include "module/flat/nemra_common.h"
#include "module/flat/nemra_scene.h"
#include "tests/engine/scene/mesh_files.h"
#include "tests/engine/scene/messages.h"
#include "tests/engine/scene/small_scene.h"

namespace nemra::node {
namespace {

using test::Messages;
using test::svxmlOf;

class Imports : public testing::Test {
protected:
    static void SetUpTestSuite() { registerClasses(); }

    /// Reads the file as a scene and loads what it refers to. On failure there is one error and the scene is as it was read.
    bool load(const std::string& name, std::string* said = nullptr) {
        Messages messages;
        scene_ = Scene{};
        if (!readSceneFile(folder_ / name, scene_)) {
            ADD_FAILURE() << messages.text();
            return false;
        }
        const std::string before = svxmlOf(scene_);
        const bool isLoaded = loadImports(scene_, folder_ / name, Unknown::refuse);
        EXPECT_EQ(messages.errors(), isLoaded ? 0 : 1) << messages.text();
        if (!isLoaded) {
            EXPECT_EQ(svxmlOf(scene_), before);
        }
        if (said != nullptr) *said = messages.text();
        return isLoaded;
    }

    test::Folder folder_;
    Scene scene_;
};

constexpr std::string_view kRoom = R"(<scene version="1" name="room" active_setup="rooms">
    <search_path path="textures"/>
    <node family="material" type="generic" name="white">
        <child slot="bsdf" type="linked"><parameter name="node" value="paint"/></child>
    </node>
    <node family="bsdf" type="lambertian" name="paint"/>
    <node family="setup" type="default" name="rooms"/>
    <sphere name="ball" radius="0.5" material="white"/>
    <instance geometry="ball"/>
    <instance geometry="theirs" material="steel"/>
</scene>)";

TEST_F(Imports, PrefixGoesBeforeWhatTheFileDefines) {
    std::string room(kRoom);
    folder_.write("parts/room.svxml", room);
    folder_.write("main.svxml", R"(<scene><import path="parts/room.svxml" prefix="r_"/><sphere name="theirs"/>
        <node family="setup" type="default" name="mine"/></scene>)");
    ASSERT_TRUE(load("main.svxml"));
    EXPECT_TRUE(scene_.imports.empty());
    ASSERT_TRUE(scene_.findNode("material", "r_white"));
    EXPECT_EQ(scene_.findNode("material", "r_white")->child("bsdf")->text("node"), "r_paint");
    EXPECT_EQ(scene_.findGeometry("r_ball")->materialName, "r_white");
    ASSERT_EQ(scene_.instances.size(), 2U);
    EXPECT_EQ(scene_.instances[0]->geometryName, "r_ball");
    EXPECT_EQ(scene_.instances[1]->geometryName, "theirs");  // somebody else's names stay
    EXPECT_EQ(scene_.instances[1]->materialName, "steel");
    EXPECT_FALSE(scene_.findNode("setup", "r_rooms")) << "a scene with a setup takes no other";
    EXPECT_TRUE(scene_.activeSetup.empty());

    folder_.write("main.svxml", R"(<scene><import path="parts/room.svxml" prefix="r_" instances="false"/></scene>)");
    ASSERT_TRUE(load("main.svxml"));
    EXPECT_TRUE(scene_.instances.empty());
    EXPECT_EQ(scene_.activeSetup, "r_rooms");
}

TEST_F(Imports, FilesAreLookedForBesideTheFileAndInSearchPaths) {
    folder_.write("assets/a.ply", test::plyFile("ascii"));
    folder_.write("inner/b.obj", test::kObjFile);
    folder_.write("inner/picture.png", "");
    folder_.write("inner/inner.svxml", R"(<scene><import path="b.obj" prefix="b_"/><import path="a.ply" unit="cm" up="z"/>
        <node family="image" type="file" name="i"><parameter name="path" value="picture.png"/></node></scene>)");
    folder_.write("main.svxml", R"(<scene><search_path path="assets"/><import path="inner/inner.svxml" prefix="x_"/></scene>)");
    std::string said;
    ASSERT_TRUE(load("main.svxml", &said)) << said;
    ASSERT_EQ(scene_.geometries.size(), 4U);
    EXPECT_EQ(scene_.geometries[0]->name, "x_b_top");
    EXPECT_EQ(scene_.geometries[0]->materialName, "steel");  // the importing scene's
    EXPECT_EQ(scene_.instances[3]->geometryName, "x_a");
    EXPECT_DOUBLE_EQ(std::get<Mesh>(scene_.geometries[3]->shape).vertices[3], 0.02);
    EXPECT_EQ(scene_.nodes[0]->text("path"), std::filesystem::canonical(folder_ / "inner/picture.png"));
}

TEST_F(Imports, MeshThatNamesAFile) {
    folder_.write("w.glb", test::glbFile());
    folder_.write("r.obj", test::kObjFile);
    folder_.write("main.svxml", R"(<scene><mesh name="w" file="w.glb"/><mesh name="t" file="r.obj" part="top_2" unit="mm"/>
        <mesh name="all" file="r.obj" material="own"/></scene>)");
    ASSERT_TRUE(load("main.svxml"));
    const auto mesh = [&](const char* name) -> const Mesh& { return std::get<Mesh>(scene_.findGeometry(name)->shape); };
    EXPECT_EQ(mesh("w").triangles, (std::vector<std::int32_t>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(mesh("w").vertices[2], 5.0);
    EXPECT_EQ(scene_.findGeometry("w")->materialName, "brass");
    EXPECT_EQ(mesh("t").vertices[3], 2e-3);
    EXPECT_EQ(scene_.findGeometry("t")->materialName, "green glass");
    EXPECT_EQ(mesh("all").triangles.size(), 9U);
    EXPECT_EQ(scene_.findGeometry("all")->materialName, "own");
}

TEST_F(Imports, TagsSurviveEveryEncoding) {
    const std::string_view text = R"(<scene version="1" name="tags">
    <import path="a.ply" prefix="p_" unit="mm" up="z" instances="false"/>
    <import path="b.svxml"/>
    <mesh name="m" file="c.glb" part="lid" unit="in" up="y"/>
</scene>
)";
    Scene read;
    ASSERT_TRUE(readScene(text, "test", read));
    EXPECT_NE(svxmlOf(read).find(text.substr(text.find("<import"))), std::string::npos) << svxmlOf(read);
    Scene again;
    ASSERT_TRUE(readScene(writeSvbin(read).bytes(), "test", again));
    EXPECT_EQ(svxmlOf(again), svxmlOf(read));
}

TEST_F(Imports, Refused) {
    folder_.write("ball.svxml", R"(<scene><sphere name="ball"/></scene>)");
    folder_.write("broken.svxml", R"(<scene><sphere name="ball" radius="-1"/></scene>)");
    folder_.write("broken.ply", test::plyFile("ascii").substr(0, 200));
    folder_.write("good.ply", test::plyFile("ascii"));
    folder_.write("notes.txt", "buy milk");
    folder_.write("a.svxml", R"(<scene><import path="b.svxml"/></scene>)");
    folder_.write("b.svxml", R"(<scene><import path="sub/../a.svxml"/></scene>)");
    folder_.write("sub/x", "");
    const std::pair<const char*, const char*> cases[] = {
        {R"(<import path="nosuch.ply"/>)", "main.svxml: can't import 'nosuch.ply': there is no such file"},
        {R"(<import path="sub"/>)", "it isn't a regular file"},
        {R"(<import path="notes.txt"/>)", "notes.txt: unknown format"},
        {R"(<import path="broken.svxml"/>)", "broken.svxml:1:9: sphere 'ball': the radius"},
        {R"(<import path="broken.ply"/>)", "broken.ply: "},
        {R"(<import path="main.svxml"/>)", "the file imports itself"},
        {R"(<import path="a.svxml"/>)", "the file imports itself"},
        {R"(<import path="ball.svxml" unit="mm"/>)", "a scene says its lengths and axes itself"},
        {R"(<import path="ball.svxml"/><import path="ball.svxml"/>)", "brings a second geometry 'ball'; a prefix"},
        {R"(<mesh name="m" file="good.ply" part="lid"/>)", "mesh 'm': "},
        {R"(<mesh name="m" file="ball.svxml"/>)", "unknown format"},
    };
    for (const auto& [what, why] : cases) {
        folder_.write("main.svxml", "<scene>" + std::string(what) + "</scene>");
        std::string said;
        EXPECT_FALSE(load("main.svxml", &said)) << what;
        EXPECT_NE(said.find(why), std::string::npos) << "said:     " << said << "expected: " << why;
    }
    Messages messages;
    Scene scene;
    EXPECT_FALSE(readScene(std::string_view(R"(<scene><import path="a.ply" unit="league"/></scene>)"), "test", scene));
    EXPECT_FALSE(readScene(std::string_view(R"(<scene><mesh name="m" file="a.ply"><vertices>0 0 0</vertices></mesh></scene>)"),
                           "test", scene));
    EXPECT_NE(messages.text().find("test:1:35: unknown unit 'league'"), std::string::npos) << messages.text();
    EXPECT_NE(messages.text().find("it names a file and has arrays of its own"), std::string::npos) << messages.text();
}

// Each file imports the next one twice: 2^30 readings if nobody counted.
TEST_F(Imports, BombOfImports) {
    for (int i = 0; i < 30; ++i) {
        const std::string next = std::to_string(i + 1) + ".svxml";
        folder_.write(std::to_string(i) + ".svxml",
                      "<scene><import path=\"" + next + "\" prefix=\"a\"/><import path=\"" + next + "\" prefix=\"b\"/></scene>");
    }
    folder_.write("30.svxml", "<scene/>");
    std::string said;
    EXPECT_FALSE(load("0.svxml", &said));
    EXPECT_NE(said.find("more than 4096 imports"), std::string::npos) << said;
}

TEST_F(Imports, ThroughTheFlatInterface) {
    const std::string ply = folder_.write("a.ply", test::plyFile("ascii"));
    nemra_scene_t* scene = nemraScene_create("s");
    const auto text = [&] {
        std::int32_t size = 0;
        char* const printed = nemraScene_writeToChar(scene, 0, &size);
        std::string copy(printed, static_cast<std::size_t>(size));
        freeCharArray(printed);
        return copy;
    };
    EXPECT_TRUE(nemraScene_addImport(scene, "later.svxml", false, 0, "l_"));
    EXPECT_TRUE(nemraScene_addImport(scene, ply.c_str(), true, NEMRA_IMPORT_MM + NEMRA_IMPORT_UP_Z, "one_"));
    std::uint32_t count = 0;
    nemra_geom_t** meshes = nemraScene_getMeshes(scene, &count);
    ASSERT_EQ(count, 1U);
    EXPECT_STREQ(nemraGeometry_name(meshes[0]), "one_a");
    EXPECT_EQ(nemraMesh_getVertices(meshes[0])[3], 2e-3);
    nemraScene_getInstances(scene, &count);
    EXPECT_EQ(count, 1U);
    EXPECT_TRUE(nemraScene_removeGeom(scene, meshes[0])) << "what came in has handles like anything else";
    nemraScene_addSearchPath(scene, std::filesystem::path(ply).parent_path().c_str());
    EXPECT_TRUE(nemraScene_addImport(scene, "a.ply", true, NEMRA_IMPORT_NO_INSTANCES, "two_"));

    const std::string before = text();
    EXPECT_NE(before.find("<import path=\"later.svxml\" prefix=\"l_\"/>"), std::string::npos) << before;
    Messages messages;
    EXPECT_FALSE(nemraScene_addImport(scene, "a.ply", true, 0, "two_"));
    EXPECT_FALSE(nemraScene_addImport(scene, "nosuch.ply", true, 0, ""));
    EXPECT_FALSE(nemraScene_addImport(scene, "", false, 0, ""));
    for (const std::int32_t flags : {8, 48, 128, -1})
        EXPECT_FALSE(nemraScene_addImport(scene, "a.ply", false, flags, "")) << flags;
    EXPECT_EQ(messages.errors(), 7);
    EXPECT_EQ(text(), before);
    nemraScene_release(&scene);
}

}  // namespace
}  // namespace nemra::node
