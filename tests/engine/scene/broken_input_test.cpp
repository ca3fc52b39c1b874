// Damaged scenes: false with one error that says the place, and the scene as it was; never a crash.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "engine/node/read_scene.h"
#include "engine/node/svxml/svxml.h"
#include "tests/engine/scene/messages.h"
#include "tests/engine/scene/small_scene.h"

namespace nemra::node {
namespace {

using test::kSmallScene;
using test::Messages;
using test::svxmlOf;

class BrokenInput : public testing::Test {
protected:
    static void SetUpTestSuite() { registerClasses(); }
};

/// Reads over a scene with a mark. True if it was read; else checks that there is one error and the mark still stands.
bool readOrExplain(std::string_view text, std::string* said = nullptr) {
    Messages messages;
    Scene scene;
    scene.name = "mark";
    scene.searchPaths = {"kept"};
    const bool read = readScene(text, "test", scene);
    EXPECT_EQ(messages.errors(), read ? 0 : 1) << messages.text() << text;
    if (!read) {
        EXPECT_EQ(scene.name, "mark");
        EXPECT_EQ(scene.searchPaths.size(), 1U);
    } else {
        Scene again;
        EXPECT_TRUE(readScene(svxmlOf(scene), "again", again)) << messages.text();
    }
    if (said != nullptr) *said = messages.text();
    return read;
}

std::string replaced(std::string_view what, std::string_view by) {
    std::string text(kSmallScene);
    const auto at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return text.replace(at, what.size(), by);
}

TEST_F(BrokenInput, CutAtEveryByte) {
    const std::size_t whole = kSmallScene.find("</scene>") + 8;
    for (std::size_t size = 0; size < kSmallScene.size(); ++size)
        EXPECT_EQ(readOrExplain(kSmallScene.substr(0, size)), size >= whole) << "cut at " << size;
}

TEST_F(BrokenInput, FlippedBits) {
    std::mt19937 random(20240607);
    for (int i = 0; i < 4000; ++i) {
        std::string text(kSmallScene);
        const auto flips = 1 + random() % (i % 4 == 0 ? 16 : 1);
        for (unsigned k = 0; k < flips; ++k) text[random() % text.size()] ^= static_cast<char>(1U << random() % 8);
        readOrExplain(text);
    }
}

struct Case {
    std::string text;
    const char* said;
};

TEST_F(BrokenInput, SaysWhatAndWhere) {
    const Case cases[] = {
        {"", "nothing in it"},
        {"P6 512 512", "no scene"},
        {"\x1f\x8b\x08", "test: the gzip data is cut off at byte 3"},
        {"<node family=\"bsdf\" type=\"black\" name=\"b\"/>", "test:1:2: element 'scene' expected"},
        {replaced("version=\"1\"", "version=\"2\""), "test:2:17: written in version 2"},
        {replaced("0 1 2</tri", "0 1 3</tri"), "mesh 'm': triangle 0 refers to vertex 3, the mesh has 3 vertices"},
        {replaced("0 1 2</tri", "0 -1 2</tri"), "refers to vertex -1"},
        {replaced("0 1 2</tri", "0 1 2147483648</tri"), "'2147483648' at position 2 is out of the range"},
        {replaced("0 1 2</tri", "0 1</tri"), "mesh 'm': 2 numbers for the triangles"},
        {replaced("0 1 0</vert", "0 nan 0</vert"), "test:27:6: mesh 'm': vertex 2 has a component (1) that is not finite"},
        {replaced("0 1 0</vert", "0 1e999 0</vert"), "at position 7 is out of the range"},
        {replaced("0 1 0</vert", "0 1,5 0</vert"), "'1,5' at position 7 isn't a number"},
        {replaced("0 1 0</vert", "0 1e30 0</vert"), "larger than 1e18"},
        {replaced("<normals>0 ", "<normals>"), "8 numbers for the normals, expected 9"},
        {replaced("<uvs>0 ", "<uvs>"), "5 numbers for the uvs, expected 6"},
        {replaced("radius=\"0.5\"", "radius=\"-1\""), "sphere 's': the radius"},
        {replaced("1 0 0 5 0", "1 0 0 inf 0"), "transform: element 3 isn't finite"},
        {replaced("1 0 0 5 0", "1 0 0 0"), "16 numbers expected, 15 found"},
        {replaced("type=\"rgbimage\"", "type=\"nosuch\""),
         "test:24:14: instrument/stdcam instrument: unknown class 'output/nosuch'"},
        {replaced("\"max_depth\"", "\"max_deep\""), "test:20:10: setup/default main: unknown parameter 'max_deep'"},
        {replaced("value=\"7\"", "value=\"seven\""), "test:20:44: setup/default main: parameter 'max_depth': 'seven'"},
        {replaced("value=\"7\"", "value=\"-7\""), "setup/default main"},
        {replaced("value=\"lens\"", "value=\"lense\""), "aperture"},
        {replaced("space=\"srgb\"", "space=\"nosuch\""), "nosuch"},
        {replaced("space=\"srgb\" ", ""), "lacks the attribute 'space'"},
        {replaced("value=\"1 2 -3\"", "value=\"1 2\""), "position"},
        {replaced("slot=\"bsdf\"", "slot=\"bsdff\""), "no child slot 'bsdff'"},
        {replaced("<column name=\"value\">0.1", "<column name=\"value\">"), "column 'value' has 2 cells, the one before it 3"},
        {replaced("<column name=\"value\">", "<column name=\"values\">"), "no column 'values'"},
        {replaced("family=\"material\" ", ""), "lacks the attribute 'family'"},
        {replaced("small &amp; whole", "small \xff"), "test:2:32: the text isn't UTF-8"},
        {replaced("small &amp; whole", std::string_view("\0", 1)), "zero byte"},
        {std::string(kSmallScene) + "<scene/>", "second outermost"},
        {std::string(kSmallScene) + "garbage", "text stands outside of the outermost element"},
        {std::string(kSmallScene.substr(0, kSmallScene.find("<search_path") + 7)), "it may be cut off"},
        {std::string(kSmallScene.substr(0, kSmallScene.find("</scene>"))), "it may be cut off"},
        {replaced("radius=\"0.5\"", "radius=\"0.5 1\""), "radius isn't a number"},
        {"<!DOCTYPE scene [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;\">]>\n<scene name=\"&b;\"/>",
         "document type declaration isn't allowed"},
        {"<!DOCTYPE scene SYSTEM \"file:///etc/passwd\"><scene/>", "document type declaration isn't allowed"},
    };
    for (const Case& broken : cases) {
        std::string said;
        EXPECT_FALSE(readOrExplain(broken.text, &said)) << broken.said;
        EXPECT_NE(said.find(broken.said), std::string::npos) << "said:     " << said << "expected: " << broken.said;
    }
}

TEST_F(BrokenInput, UnknownIsSkippedWithAWarning) {
    const Case cases[] = {
        {replaced("<cone name", "<torus name=\"t\"><cone/></torus><cone name"), "test:34:6: unknown element 'torus', skipped"},
        {replaced("reverse=\"true\"", "reverse=\"true\" colour=\"red\""), "test:33:50: unknown attribute 'colour'"},
        {replaced("value=\"lens\"", "value=\"pinhole\""), "parameter 'f_number' has no effect"},
        {replaced("name=\"paint\"", "name=\"paint\" x=\"\""), "unknown attribute 'x'"},
        {replaced("<instance geometry=\"s\"/>", "<cone name=\"c\"/>"), "a second geometry 'c'"},
    };
    for (const Case& odd : cases) {
        std::string said;
        EXPECT_TRUE(readOrExplain(odd.text, &said)) << odd.said;
        EXPECT_NE(said.find(odd.said), std::string::npos) << "said:     " << said << "expected: " << odd.said;
    }
}

// Places stay right where long arrays are looked at by themselves, and where these have been given back already.
TEST_F(BrokenInput, PlacesBehindLongArrays) {
    std::string lines;
    for (int i = 0; i < 200000; ++i) lines += "0 0 1\n";
    const std::string mesh = "<mesh name=\"m\"><vertices>\n" + lines + "</vertices></mesh>\n";
    const std::string broken =
        "<scene>\n" + mesh + "<mesh name=\"n\"><vertices>\n" + lines + "0 0 x1\n" + lines + "</vertices></mesh></scene>";
    const auto folder = std::filesystem::temp_directory_path() / ("scene_places_" + std::to_string(std::random_device{}()));
    std::filesystem::create_directories(folder);
    const std::string file = (folder / "s.svxml").string();
    std::ofstream(file) << broken;
    Scene scene;
    Messages inMemory;
    EXPECT_FALSE(readScene(broken, "test", scene));
    EXPECT_NE(inMemory.text().find("test:400005:5: mesh 'n': vertices: 'x1' at position 600002"), std::string::npos)
        << inMemory.text();
    Messages inFile;
    EXPECT_FALSE(readSceneFile(file, scene));
    EXPECT_NE(inFile.text().find("s.svxml:400005:5: mesh 'n'"), std::string::npos) << inFile.text();

    std::ofstream(file) << "<scene>\n" + mesh + "\n  <odd/>\n</scene>";
    Messages behind;
    EXPECT_TRUE(readSceneFile(file, scene));
    EXPECT_NE(behind.text().find("s.svxml:200005:4: unknown element 'odd'"), std::string::npos) << behind.text();
    std::filesystem::remove_all(folder);
}

// A comment or a quoted '>' doesn't mislead the search for long arrays.
TEST_F(BrokenInput, LongArraysBesideOddMarkup) {
    std::string zeros;
    for (int i = 0; i < 3000; ++i) zeros += " 0";
    const std::string text =
        "<?xml version='1.0'?><!-- > <a> \" --><scene name='a>b\"'><!-- <mesh> --><mesh name=\"c>d'\"><vertices>" + zeros +
        "<!-- " + zeros + "-->" + zeros + "<![CDATA[" + zeros + "]]></vertices></mesh></scene>";
    Messages messages;
    Scene scene;
    ASSERT_TRUE(readScene(text, "test", scene)) << messages.text();
    EXPECT_EQ(messages.warnings(), 0) << messages.text();
    EXPECT_EQ(scene.name, "a>b\"");
    EXPECT_EQ(scene.geometries.at(0)->name, "c>d'");
    EXPECT_EQ(std::get<Mesh>(scene.geometries[0]->shape).vertices.size(), 9000U);
}

TEST_F(BrokenInput, Bombs) {
    std::string deep = "<scene>";
    for (int i = 0; i < 100000; ++i) deep += "<x>";
    for (int i = 0; i < 100000; ++i) deep += "</x>";
    std::string said;
    EXPECT_FALSE(readOrExplain(deep + "</scene>", &said));
    EXPECT_NE(said.find("nest deeper than 256"), std::string::npos) << said;

    std::string layers = "<scene><node family=\"layer\" type=\"generic\" name=\"l\">";
    for (int i = 0; i < 300; ++i) layers += "<item type=\"generic\" name=\"l\">";
    for (int i = 0; i < 300; ++i) layers += "</item>";
    EXPECT_FALSE(readOrExplain(layers + "</node></scene>"));

    std::string odd = "<scene>";
    for (int i = 0; i < 20000; ++i) odd += "<x/>\n";
    Messages messages;
    Scene scene;
    EXPECT_TRUE(readScene(odd + "</scene>", "test", scene));
    EXPECT_LE(messages.warnings(), 101);
}

TEST_F(BrokenInput, Files) {
    const auto folder = std::filesystem::temp_directory_path() / ("scene_files_" + std::to_string(std::random_device{}()));
    std::filesystem::create_directories(folder);
    const auto file = folder / "s.svxml";
    std::ofstream(file) << "\xEF\xBB\xBF" << kSmallScene;
    Scene scene;
    EXPECT_TRUE(readSceneFile(file.string(), scene));
    const std::string pipe = (folder / "pipe").string();  // nobody will ever write into it
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {folder.string(), (folder / "missing").string(), pipe, std::string("/dev/zero"), std::string(),
                                    std::string(5000, 'x')}) {
        Messages messages;
        EXPECT_FALSE(readSceneFile(path, scene));
        EXPECT_EQ(messages.errors(), 1) << messages.text();
    }
    EXPECT_EQ(scene.name, "small & whole");
    std::filesystem::remove_all(folder);
}

// Layers can be nested without end through the interface, a reader takes 256 levels.
TEST_F(BrokenInput, TooDeepIsNotWritten) {
    auto inner = std::make_shared<Node>(*findClass("layer", "generic"), "l");
    std::string why;
    for (int i = 0; i < 400; ++i) {
        auto outer = std::make_shared<Node>(*findClass("layer", "generic"), "l");
        if (!outer->setChild(inner, why)) break;
        inner = outer;
    }
    try {
        const std::string text = svxmlOf(*inner);
        EXPECT_TRUE(readSvxmlNode(text, "test"));
    } catch (const std::length_error&) {
        SUCCEED();
    }
}

}  // namespace
}  // namespace nemra::node
