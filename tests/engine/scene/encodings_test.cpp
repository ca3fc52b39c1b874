// Scenes in all four encodings: what comes back is equal, and what is damaged is refused with one message.
#include <gtest/gtest.h>
#include <libdeflate.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "engine/node/encoding/encode.h"
#include "engine/node/encoding/limits.h"
#include "engine/node/read_scene.h"
#include "tests/engine/scene/changed_node.h"
#include "tests/engine/scene/messages.h"
#include "tests/engine/scene/peak_memory.h"
#include "tests/engine/scene/read_or_explain.h"
#include "tests/engine/scene/small_scene.h"

namespace nemra::node {
namespace {

using test::kSmallScene;
using test::Messages;
using test::svxmlOf;

constexpr Format kFormats[] = {Format::svxml, Format::svbin, Format::svxmlz, Format::svbinz};

class Encodings : public testing::TestWithParam<Format> {
protected:
    static void SetUpTestSuite() { registerClasses(); }
};

std::string encoded(const Scene& scene, Format format) { return std::string(encode(scene, format).text()); }

Scene smallScene() {
    Scene scene;
    EXPECT_TRUE(readScene(kSmallScene, "small scene", scene));
    return scene;
}

/// A node of each class, changed, and geometries with materials of their own.
Scene sceneOfEveryClass() {
    Scene scene;
    scene.name = "of every class";
    for (const NodeClass* const nodeClass : allClasses())
        scene.nodes.push_back(test::changedNode(*nodeClass, nodeClass->type, 1));
    auto geometry = std::make_shared<Geometry>();
    geometry->name = "square";
    geometry->material = test::changedNode(*findClass("material", "generic"), "own", 2);
    geometry->shape = Mesh{.vertices = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 1.0 / 3.0},
                           .normals = {},
                           .uvs = {0, 0, 1, 0, 1, 1, 0, 0.1F},
                           .triangles = {0, 1, 2, 0, 2, 3},
                           .triangleNormals = {},
                           .file = {}};
    auto empty = std::make_shared<Geometry>();
    empty->shape = Mesh{};
    auto instance = std::make_shared<Instance>();
    instance->geometryName = "square";
    instance->material = geometry->material;
    instance->layers = {{"a/b", "c\\"}, {}};
    scene.geometries = {geometry, empty};
    scene.instances = {instance, std::make_shared<Instance>()};
    return scene;
}

bool readOrExplain(std::string_view bytes) {
    Scene scene;
    return test::readOrExplain(bytes, scene);
}

TEST_P(Encodings, GiveTheSceneBack) {
    for (const Scene& scene : {smallScene(), sceneOfEveryClass(), Scene()}) {
        const std::string bytes = encoded(scene, GetParam());
        Messages messages;
        Scene again;
        ASSERT_TRUE(readScene(bytes, "test", again)) << messages.text();
        EXPECT_EQ(messages.errors() + messages.warnings(), 0) << messages.text();
        EXPECT_EQ(svxmlOf(again), svxmlOf(scene));
        EXPECT_EQ(encoded(again, GetParam()), bytes);
    }
}

std::string nameOf(const testing::TestParamInfo<Format>& info) {
    constexpr const char* kNames[] = {"svxml", "svbin", "svxmlz", "svbinz"};
    return kNames[static_cast<int>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(All, Encodings, testing::ValuesIn(kFormats), nameOf);

class Gzip : public testing::Test {
protected:
    static void SetUpTestSuite() { registerClasses(); }
};

testing::AssertionResult isRefused(std::string_view bytes, Length length, std::string_view reason) {
    Buffer out;
    std::string why;
    if (gunzip(bytes, out, why, length)) return testing::AssertionFailure() << "it was inflated";
    if (out.size() > 0) return testing::AssertionFailure() << "something came out";
    if (why.find(reason) == std::string::npos) return testing::AssertionFailure() << why;
    return testing::AssertionSuccess();
}

/// A gzip member as another program would make it, without regard to what our readers take.
std::string compressed(std::string_view text) {
    libdeflate_compressor* const compressor = libdeflate_alloc_compressor(9);
    std::string out(libdeflate_gzip_compress_bound(compressor, text.size()), '\0');
    out.resize(libdeflate_gzip_compress(compressor, text.data(), text.size(), out.data(), out.size()));
    libdeflate_free_compressor(compressor);
    return out;
}

std::string repeated(std::string_view piece, std::size_t bytes) {
    std::string text;
    while (text.size() < bytes) text += piece;
    return text;
}

TEST_F(Gzip, BombsAreRefusedAtOnce) {
    const std::string bomb = compressed("<scene>" + repeated("<a/>", 60'000'000) + "</scene>");
    ASSERT_LT(bomb.size(), 300000U);
    std::string lying = bomb;  // says that it is small
    for (std::size_t i = 0; i < 4; ++i) lying[lying.size() - 4 + i] = static_cast<char>(i == 1);
    std::string boasting = bomb;  // says 4 GiB - 1
    for (std::size_t i = 0; i < 4; ++i) boasting[boasting.size() - 4 + i] = '\xff';
    const auto start = std::chrono::steady_clock::now();
    const double memory = test::peakMemory([&] {
        EXPECT_TRUE(isRefused(bomb, Length::known, "times its size"));
        EXPECT_TRUE(isRefused(lying, Length::known, "inflates to more"));
        EXPECT_TRUE(isRefused(boasting, Length::known, "more than 1 GiB"));
        for (const std::string& bytes : {bomb, lying, boasting})
            EXPECT_TRUE(isRefused(bytes, Length::claimed, "which no scene of its size does"));
        for (const std::string& bytes : {bomb, lying, boasting}) EXPECT_FALSE(readOrExplain(bytes));
    });
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_LT(memory, 64e6);
}

// What may be inflated however small the file is, filled with what takes most memory for its bytes.
TEST_F(Gzip, SmallBombsTakeLittle) {
    const std::string table = R"(<node family="spectrum" type="tabulated" name="t"><table name="samples"><column name="value">)";
    const std::string layers = R"(<node family="layer" type="generic" name="l">)";
    const std::size_t room = kFreeInflatedBytes - 300;
    const std::string scenes[] = {
        repeated("<a/>", room),
        "<node " + repeated("a=\"\" ", room) + "/>",
        table + repeated("0 ", room) + "</column></table></node>",
        repeated(R"(<node family="bsdf" type="black" name=""/>)", room),
        layers + repeated(R"(<item type="generic"/>)", room) + "</node>",
        repeated(R"(<instance geometry=""/>)", room),
        repeated(R"(<mesh name=""/>)", room),
        "<mesh name=\"m\"><vertices>" + repeated("0 ", room) + "</vertices></mesh>",
    };
    for (const std::string& scene : scenes) {
        const std::string bytes = compressed("<scene>" + scene + "</scene>");
        const auto start = std::chrono::steady_clock::now();
        const double memory = test::peakMemory([&] {
            const Messages messages;
            Scene read;
            readScene(bytes, "test", read);
        });
        EXPECT_LT(memory, 64e6) << scene.substr(0, 60);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1)) << scene.substr(0, 60);
    }
}

TEST_F(Gzip, OneMemberAndNothingBehindIt) {
    for (const Format format : {Format::svxmlz, Format::svbinz}) {
        const std::string whole = encoded(smallScene(), format);
        EXPECT_TRUE(readOrExplain(whole));
        EXPECT_FALSE(readOrExplain(whole + whole)) << "two members";
        EXPECT_FALSE(readOrExplain(whole + '\0'));
        EXPECT_FALSE(readOrExplain(gzip(whole).text())) << "gzip inside gzip";
    }
}

TEST_F(Gzip, ABufferThatIsShorterThanItsCallerSaysIsReadFromTheFront) {
    const std::string whole = encoded(smallScene(), Format::svbinz);
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t room = (whole.size() + 2 * page) / page * page;
    void* const block = ::mmap(nullptr, room + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(block, MAP_FAILED);
    ASSERT_EQ(::mprotect(static_cast<char*>(block) + room, page, PROT_NONE), 0);
    char* const begin = static_cast<char*>(block) + room - whole.size() - 8;
    std::copy(whole.begin(), whole.end(), begin);
    EXPECT_TRUE(readOrExplain({begin, whole.size()}));
    for (const std::size_t claimed : {whole.size() + 4096, whole.size() + 2'000'000'000})
        EXPECT_TRUE(isRefused({begin, claimed}, Length::claimed, "but something follows"));
    ::munmap(block, room + page);
}

// A text in pieces: one file for any reader of gzip, and refused where a piece is cut off, missing its end or not what it says.
TEST_F(Gzip, PiecesAreMembersThatSayTheirSize) {
    const std::string texts[] = {repeated("1 0.25 7 ", 3'000'000), std::string(2'000'000, '\0'), "the end"};
    GzipPieces pieces;
    pieces.add(texts[0]);
    pieces.add(texts[1]);
    const std::string whole(std::move(pieces).finish(texts[2]).text());
    Buffer out;
    std::string why;
    ASSERT_TRUE(gunzip(whole, out, why, Length::known)) << why;
    EXPECT_TRUE(out.text() == texts[0] + texts[1] + texts[2]);
    Buffer fromFront;
    ASSERT_TRUE(gunzip(whole, fromFront, why, Length::claimed)) << why;
    EXPECT_TRUE(fromFront.text() == out.text());
    EXPECT_LT(whole.size(), 100'000U);

    std::string inflated(out.size(), '\0');  // as a program that knows nothing of our field reads it
    libdeflate_decompressor* const decompressor = libdeflate_alloc_decompressor();
    std::size_t in = 0;
    std::size_t done = 0;
    while (in < whole.size()) {
        std::size_t used = 0;
        std::size_t size = 0;
        ASSERT_EQ(libdeflate_gzip_decompress_ex(decompressor, whole.data() + in, whole.size() - in, inflated.data() + done,
                                                inflated.size() - done, &used, &size),
                  LIBDEFLATE_SUCCESS);
        in += used;
        done += size;
    }
    libdeflate_free_decompressor(decompressor);
    EXPECT_TRUE(inflated == out.text());

    for (std::size_t size = 0; size < whole.size(); size += size < 60 || size + 100 > whole.size() ? 1 : 97)
        for (const Length length : {Length::known, Length::claimed}) EXPECT_TRUE(isRefused(whole.substr(0, size), length, ""));
    for (const std::size_t at : {12U, 14U, 16U, 17U, 18U, 19U}) {  // the field
        std::string damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x41);
        for (const Length length : {Length::known, Length::claimed}) EXPECT_TRUE(isRefused(damaged, length, ""));
    }
    std::string bomb = whole;  // whose first member says that it holds 900 MB
    const auto member = static_cast<unsigned char>(whole[16]) + 256U * static_cast<unsigned char>(whole[17]) +
                        65536U * static_cast<unsigned char>(whole[18]);
    bomb[member - 1] = '\x36';
    EXPECT_TRUE(isRefused(bomb, Length::known, "times its size"));
}

TEST_F(Gzip, TakesBackWhatItWrote) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, kFreeInflatedBytes, kFreeInflatedBytes + 1, std::size_t{8} << 20}) {
        const std::string zeros(size, '\0');
        const Buffer bytes = gzip(zeros);
        EXPECT_LT(bytes.size(), 64 + kFreeInflatedBytes / 100 + size / 90);
        for (const Length length : {Length::known, Length::claimed}) {
            Buffer out;
            std::string why;
            ASSERT_TRUE(gunzip(bytes.bytes(), out, why, length)) << size << ": " << why;
            EXPECT_TRUE(out.text() == zeros);
        }
    }
    Scene scene;
    auto geometry = std::make_shared<Geometry>();
    Mesh empty;
    empty.vertices = std::vector<double>(3'000'000);
    geometry->shape = std::move(empty);
    scene.geometries = {geometry};
    for (const Format format : {Format::svxmlz, Format::svbinz}) {
        Messages messages;
        Scene read;
        ASSERT_TRUE(readScene(encode(scene, format).bytes(), "test", read)) << messages.text();
        EXPECT_EQ(std::get<Mesh>(read.geometries.at(0)->shape).vertices.size(), 3'000'000U);
    }
}

// Arrays lie where a reader can use them as they are.
TEST(Svbin, ArraysAreAligned) {
    Geometry geometry{.name = "odd", .materialName = "names", .material = nullptr, .shape = Mesh{}};
    Mesh& mesh = std::get<Mesh>(geometry.shape);
    mesh.vertices = {0.125, 0.25, 0.375, 0.5, 0.625, 0.75, 0.875, 1.125, 1.25};
    mesh.normals = {3.5F, 3.5F, 3.5F, 3.5F, 3.5F, 3.5F, 3.5F, 3.5F, 3.5F};
    mesh.triangles = {2, 1, 0};
    const Buffer bytes = writeSvbin(geometry);
    const auto find = [&](const auto& numbers) {
        return bytes.text().find({reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof numbers[0]});
    };
    for (const std::size_t at : {find(mesh.vertices), find(mesh.normals), find(mesh.triangles)}) {
        ASSERT_NE(at, std::string_view::npos);
        EXPECT_EQ(at % 16, 0U);
    }
}

TEST_F(Gzip, TooMuchIsNotWritten) {
    EXPECT_THROW(gzip({static_cast<const char*>(nullptr), kMaxInflatedBytes + 1}), std::length_error);
}

}  // namespace
}  // namespace nemra::node
