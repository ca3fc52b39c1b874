// Large meshes: copies share their arrays, and reading takes little more memory than what is read.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

#include "engine/node/encoding/encode.h"
#include "engine/node/mesh.h"
#include "engine/node/read_scene.h"
#include "tests/engine/scene/messages.h"
#include "tests/engine/scene/peak_memory.h"

namespace nemra::node {
namespace {

TEST(MeshMemory, CopiesShareUntilOneIsChanged) {
    SharedArray<double> first{1.0, 2.0, 3.0};
    SharedArray<double> second = first;
    EXPECT_EQ(second.data(), first.data());
    second.edit()[1] = 7.0;
    EXPECT_EQ(first, SharedArray<double>({1.0, 2.0, 3.0}));
    EXPECT_EQ(second, SharedArray<double>({1.0, 7.0, 3.0}));
    const double* const own = second.data();
    second.edit()[1] = 8.0;
    EXPECT_EQ(second.data(), own);
    EXPECT_TRUE(SharedArray<double>().empty());
    EXPECT_EQ(SharedArray<double>(), SharedArray<double>({}));
}

// What is wrong is found wherever it stands, also where arrays are checked piece by piece while they are copied.
TEST(MeshMemory, CheckedCopiesFindEachFault) {
    const std::vector<double> vertices(30000, 0.5);
    const std::vector<float> normals(30000, 0.5F), uvs(20000, 0.5F);
    const std::vector<std::int32_t> triangles(9000, 9999);
    Mesh mesh;
    ASSERT_EQ(copyChecked(mesh, vertices, normals, uvs, triangles), "");
    EXPECT_EQ(mesh.vertices, SharedArray<double>(vertices));
    EXPECT_EQ(mesh.triangles, SharedArray<std::int32_t>(triangles));
    EXPECT_EQ(whyRefused(mesh), "");
    for (const std::size_t at : {0U, 2047U, 2048U, 8999U}) {
        const auto refused = [&](const auto& array, auto number, const char* said, auto&& put) {
            auto damaged = array;
            damaged[at] = number;
            Mesh copy = mesh;
            const std::string why = put(copy, damaged);
            EXPECT_NE(why.find(said), std::string::npos) << why;
        };
        for (const double number : std::vector<double>{NAN, INFINITY, -INFINITY, 1.1e18, -1.1e18})
            refused(vertices, number, "vertex", [&](Mesh& copy, const auto& damaged) {
                const std::string why = copyChecked(copy, damaged, normals, uvs, triangles);
                copy.vertices = damaged;
                EXPECT_EQ(whyRefused(copy), why);
                return why;
            });
        refused(normals, NAN, "normal",
                [&](Mesh& copy, const auto& damaged) { return copyChecked(copy, vertices, damaged, uvs, triangles); });
        refused(uvs, NAN, "uv",
                [&](Mesh& copy, const auto& damaged) { return copyChecked(copy, vertices, normals, damaged, triangles); });
        for (const std::int32_t index : {-1, 10000, std::numeric_limits<std::int32_t>::min()})
            refused(triangles, index, "refers to vertex", [&](Mesh& copy, const auto& damaged) {
                const std::string why = copyChecked(copy, vertices, normals, uvs, damaged);
                copy.triangles = damaged;
                EXPECT_EQ(whyRefused(copy), why);
                return why;
            });
    }
}

// Numbers of full precision, as measuring and simulating programs have them, are the longest text.
class MeshMemoryOfEncodings : public testing::Test {
protected:
    static void SetUpTestSuite() { registerClasses(); }

    void SetUp() override {
        std::mt19937 random(7);
        const auto number = [&] { return static_cast<double>(random()) / 4294967296.0; };
        for (int k = 0; k < 2; ++k) {
            auto geometry = std::make_shared<Geometry>();
            geometry->name = std::to_string(k);
            Mesh& mesh = geometry->shape.emplace<Mesh>();
            for (int i = 0; i < 3 * kVertices; ++i) {
                mesh.vertices.edit().push_back(number());
                mesh.normals.edit().push_back(static_cast<float>(number()));
                for (int twice = 0; twice < 2; ++twice)
                    mesh.triangles.edit().push_back(static_cast<std::int32_t>(random() % kVertices));
            }
            scene_.geometries.push_back(geometry);
        }
    }

    static constexpr int kVertices = 300000;
    static constexpr double kData = 2.0 * 3 * kVertices * (sizeof(double) + sizeof(float) + 2 * sizeof(std::int32_t));
    Scene scene_;
};

constexpr Format kFormats[] = {Format::svxml, Format::svbin, Format::svxmlz, Format::svbinz};

TEST_F(MeshMemoryOfEncodings, ReadingTakesLittleMoreThanTheFileOrTheArrays) {
    const auto folder = std::filesystem::temp_directory_path() / ("scene_memory_" + std::to_string(std::random_device{}()));
    std::filesystem::create_directories(folder);
    const std::string file = (folder / "s").string();
    const auto text = static_cast<double>(encode(scene_, Format::svxml).size());
    for (const Format format : kFormats) {
        {
            const Buffer bytes = encode(scene_, format);
            std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        }
        Scene read;
        const double memory = test::peakMemory([&] { EXPECT_TRUE(readSceneFile(file, read)); });
        EXPECT_LT(memory, 2.5 * kData) << static_cast<int>(format);
        // A text goes as the numbers come, and what it was inflated from as the text comes.
        const bool isText = format == Format::svxml || format == Format::svxmlz;
        EXPECT_TRUE(!isText || memory < text + 0.3 * kData) << static_cast<int>(format) << ": " << memory;
        EXPECT_EQ(std::get<Mesh>(read.geometries.at(1)->shape).vertices, std::get<Mesh>(scene_.geometries[1]->shape).vertices);
    }
    std::filesystem::remove_all(folder);
}

// The text takes 2.3 bytes for each of the arrays; where it is gzipped it is never there as a whole.
TEST_F(MeshMemoryOfEncodings, WritingTakesWhatIsWritten) {
    for (const Format format : kFormats) {
        Buffer bytes;
        const double memory = test::peakMemory([&] { bytes = encode(scene_, format); });
        const double plain = format == Format::svbinz ? kData : 0.0;
        EXPECT_LT(memory, static_cast<double>(bytes.size()) + plain + 0.5 * kData) << static_cast<int>(format);
        EXPECT_LT(memory, 2.5 * kData) << static_cast<int>(format);
    }
}

}  // namespace
}  // namespace nemra::node
