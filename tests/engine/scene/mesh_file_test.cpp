// Files of meshes: what is in them comes out in metres and the engine's axes; what is broken is refused with its place.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/node/import/read_mesh_file.h"
#include "engine/node/import/triangulate.h"
#include "engine/node/mesh.h"
#include "tests/engine/scene/mesh_files.h"
#include "tests/engine/scene/messages.h"

namespace nemra::node {
namespace {

using test::Messages;

bool readMeshes(std::string_view bytes, const std::string& path, MeshParts& parts, const MeshFrame& frame = {}) {
    return readMeshFile({bytes.data(), bytes.size()}, path, frame, parts);
}

constexpr std::string_view kPlyFormats[] = {"ascii", "binary_little_endian", "binary_big_endian"};

TEST(MeshFiles, PlyInItsThreeForms) {
    for (const std::string_view format : kPlyFormats) {
        MeshParts read;
        ASSERT_TRUE(readMeshes(test::plyFile(std::string(format)), "x/quad.any", read)) << format;
        ASSERT_EQ(read.parts.size(), 1U);
        EXPECT_EQ(read.parts[0].name, "quad");
        const Mesh& mesh = read.parts[0].mesh;
        EXPECT_EQ(mesh.vertices, (std::vector<double>{0, 0, 0, 2, 0, 0, 2, 1, 0, 0, 1, 3})) << format;
        EXPECT_EQ(mesh.normals, (std::vector<float>{0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1}));
        EXPECT_EQ(mesh.triangles.size(), 6U);
    }
}

TEST(MeshFiles, ObjGivesAPartForEachGroupAndMaterial) {
    MeshParts read;
    ASSERT_TRUE(readMeshes(test::kObjFile, "room.OBJ", read));
    ASSERT_EQ(read.parts.size(), 3U);
    EXPECT_EQ(read.parts[0].name, "top");
    EXPECT_EQ(read.parts[0].materialName, "steel");
    EXPECT_EQ(read.parts[0].mesh.vertices, (std::vector<double>{0, 0, 0, 2, 0, 0, 2, 1, 0}));
    EXPECT_EQ(read.parts[0].mesh.uvs, (std::vector<float>{0, 0, 1, 0, 1, 1}));
    EXPECT_EQ(read.parts[1].name, "top_2");
    EXPECT_EQ(read.parts[1].materialName, "green glass");
    EXPECT_EQ(read.parts[1].mesh.vertices, (std::vector<double>{0, 0, 0, 2, 1, 0, 0, 1, 3}));
    EXPECT_TRUE(read.parts[1].mesh.normals.empty());
    EXPECT_EQ(read.parts[2].name, "side");
    EXPECT_EQ(read.parts[2].mesh.normals.size(), 9U);
    EXPECT_TRUE(read.parts[2].mesh.uvs.empty());
}

TEST(MeshFiles, GltfInItsThreeForms) {
    const test::Folder folder;
    folder.write("the data.bin", test::triangleBytes());
    const std::string files[] = {test::glbFile(), test::gltfText("the%20data.bin"),
                                 test::gltfText("data:application/octet-stream;base64,"
                                                "AAAAAAAAAAAAAAAAAAAAQAAAAAAAAAAAAAAAAAAAgD8AAAAAAAABAAIAAAA=")};
    for (const std::string& file : files) {
        MeshParts read;
        Messages messages;
        ASSERT_TRUE(readMeshes(file, folder / "wedge.gltf", read)) << messages.text();
        ASSERT_EQ(read.parts.size(), 1U);
        EXPECT_EQ(read.parts[0].name, "wedge");
        EXPECT_EQ(read.parts[0].materialName, "brass");
        EXPECT_EQ(read.parts[0].mesh.vertices, (std::vector<double>{0, 0, 0, 2, 0, 0, 0, 1, 0}));
        ASSERT_EQ(read.placings.size(), 2U);
        EXPECT_EQ(read.placings[0].transform[11], 5.0);
        // A quarter turn about z takes x to y, and the parent moves it.
        const auto& turned = read.placings[1].transform;
        const double expected[] = {0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 5, 0, 0, 0, 1};
        for (std::size_t i = 0; i < 16; ++i) EXPECT_NEAR(turned[i], expected[i], 1e-15) << i;
    }
}

// Points C p of the changed part under the changed placing must be where C takes the points of the file.
TEST(MeshFiles, UnitAndUpAxis) {
    MeshFrame frame;
    ASSERT_EQ(setUnit(frame, "mm"), "");
    ASSERT_EQ(setUp(frame, "z"), "");
    EXPECT_NE(setUnit(frame, "furlong"), "");
    EXPECT_NE(setUp(frame, "x"), "");
    MeshParts read;
    ASSERT_TRUE(readMeshes(test::plyFile("ascii"), "a.ply", read, frame));
    const std::vector<double> expected{0, 0, 0, 2e-3, 0, 0, 2e-3, 0, -1e-3, 0, 3e-3, -1e-3};
    ASSERT_EQ(read.parts[0].mesh.vertices.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_NEAR(read.parts[0].mesh.vertices[i], expected[i], 1e-18) << i;
    EXPECT_EQ(read.parts[0].mesh.normals[1], 1.0F);

    MeshParts plain;
    ASSERT_TRUE(readMeshes(test::glbFile(), "a.glb", plain));
    ASSERT_TRUE(readMeshes(test::glbFile(), "a.glb", read, frame));
    const Mesh before = joinParts(plain, "");
    const Mesh after = joinParts(read, "wedge");
    ASSERT_EQ(before.vertices.size(), after.vertices.size());
    for (std::size_t i = 0; i < before.vertices.size(); i += 3) {
        EXPECT_NEAR(after.vertices[i], 1e-3 * before.vertices[i], 1e-17);
        EXPECT_NEAR(after.vertices[i + 1], 1e-3 * before.vertices[i + 2], 1e-17);
        EXPECT_NEAR(after.vertices[i + 2], -1e-3 * before.vertices[i + 1], 1e-17);
    }
}

TEST(MeshFiles, JoinedPartsKeepTheirFront) {
    MeshParts parts;
    ASSERT_TRUE(
        readMeshes("ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
                   "property float nx\nproperty float ny\nproperty float nz\nelement face 1\n"
                   "property list uchar int vertex_index\nend_header\n0 0 0 0 0 1\n1 0 0 0 0 1\n0 1 0 0 0 1\n3 0 1 2\n",
                   "a.ply", parts));
    parts.placings[0].transform[0] = -2.0;  // mirrored, and not by the same factor everywhere
    const Mesh whole = joinParts(parts, "");
    EXPECT_EQ(whole.vertices[3], -2.0);
    const auto& normals = triangleNormals(whole);
    EXPECT_EQ(normals[2], 1.0F) << "front and shading normal must stay on one side";
    EXPECT_EQ(whole.normals[2], 1.0F);
    EXPECT_THROW(joinParts(parts, "nosuch"), MeshFault);
}

// Areas of pieces add up to the area of the whole only if none lies outside or over another.
TEST(MeshFiles, DentedPolygons) {
    const std::vector<std::vector<std::pair<double, double>>> shapes = {
        {{0, 0}, {4, 0}, {4, 4}, {2, 1}, {0, 4}},
        {{0, 0}, {5, 0}, {5, 1}, {1, 1}, {1, 4}, {5, 4}, {5, 5}, {0, 5}},
        {{0, 0}, {3, 1}, {6, 0}, {5, 3}, {6, 6}, {3, 5}, {0, 6}, {1, 3}},
    };
    for (const auto& shape : shapes) {
        for (const bool backwards : {false, true}) {
            std::vector<double> vertices;
            std::vector<std::int32_t> corners;
            double area = 0.0;
            for (std::size_t i = 0; i < shape.size(); ++i) {
                const auto& p = shape[i];
                const auto& q = shape[(i + 1) % shape.size()];
                area += 0.5 * (p.first * q.second - p.second * q.first);
                vertices.insert(vertices.end(), {p.second, 2.0, p.first});  // in the plane y = 2
                corners.insert(backwards ? corners.begin() : corners.end(), static_cast<std::int32_t>(i));
            }
            Mesh mesh;
            mesh.vertices = vertices;
            triangulate(vertices, corners, mesh.triangles.edit());
            ASSERT_EQ(mesh.triangles.size(), 3 * (shape.size() - 2));
            double sum = 0.0;
            for (std::size_t t = 0; t < mesh.triangles.size(); t += 3) {
                const auto at = [&](std::size_t k) { return &vertices[3 * static_cast<std::size_t>(mesh.triangles[t + k])]; };
                const double ux = at(1)[0] - at(0)[0];
                const double uz = at(1)[2] - at(0)[2];
                const double vx = at(2)[0] - at(0)[0];
                const double vz = at(2)[2] - at(0)[2];
                const double piece = 0.5 * (uz * vx - ux * vz);
                EXPECT_GT(backwards ? -piece : piece, 0.0);
                sum += std::abs(piece);
            }
            EXPECT_NEAR(sum, area, 1e-12);
        }
    }
}

struct Broken {
    std::string bytes;
    const char* path;
    const char* said;
};

std::string changed(std::string text, std::string_view what, std::string_view by) {
    const auto at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return text.replace(at, what.size(), by);
}

TEST(MeshFiles, SaysWhatIsWrongAndWhere) {
    const std::string ply = test::plyFile("ascii");
    const std::string obj(test::kObjFile);
    const std::string gltf = test::gltfText("data:;base64," + std::string(60, 'A'));
    const Broken cases[] = {
        {"", "a.obj", "a.obj: there is nothing in it"},
        {"P6 4 4", "a.png", "unknown format"},
        {"v 0 0 0\n", "a.obj", "it holds no triangles"},
        {changed(ply, "vertex 4", "vertex 4000000000000000000"), "a.ply", "can't hold 4000000000000000000"},
        {changed(ply, "face 1", "face 3"), "a.ply", "cut off"},
        {changed(ply, "4 0 1 2 3", "4 0 1 2 9"), "a.ply", "face 0 refers to a vertex that isn't there; the file has 4"},
        {changed(ply, "4 0 1 2 3", "4 0 1 2 -1"), "a.ply", "refers to a vertex"},
        {changed(ply, "4 0 1 2 3", "4e9 0 1 2 3"), "a.ply", "can't have that many"},
        {changed(ply, "3.000000", "nan"), "a.ply", "vertex 3 has a component (2) that is not finite"},
        {changed(ply, "3.000000", "3,0"), "a.ply", "'3,0' isn't a number"},
        {changed(ply, "format ascii", "format morse"), "a.ply", "a.ply: line 2: unknown format 'morse'"},
        {changed(ply, "property double x", "property double q"), "a.ply", "lack x, y or z"},
        {changed(obj, "v 2 1 0", "v 2 1,5 0"), "a.obj", "a.obj: line 5: '1,5' isn't a number"},
        {changed(obj, "v 2 1 0", "v 2 inf 0"), "a.obj", "not finite"},
        {changed(obj, "v 2 1 0", "v 2"), "a.obj", "line 5: 3 numbers expected"},
        {changed(obj, "2/2/1", "2/2/7"), "a.obj", "line 14: the face refers to normal 7, so far there are 1"},
        {changed(obj, "2/2/1", "0/2/1"), "a.obj", "refers to vertex 0"},
        {changed(obj, "-4 -2 -1", "-4 -2 -5"), "a.obj", "refers to vertex -5"},
        {changed(obj, "-4 -2 -1", "1 2"), "a.obj", "a face needs three corners"},
        {changed(obj, "-4 -2 -1", "1 2 3/"), "a.obj", nullptr},
        {changed(gltf, "\"2.0\"", "\"1.0\""), "a.gltf", "asset: version 2"},
        {changed(gltf, "\"count\":3,\"type\":\"VEC3\"", "\"count\":4,\"type\":\"VEC3\""), "a.gltf",
         "accessors[0]: it reaches beyond"},
        {changed(gltf, "\"count\":3,\"type\":\"VEC3\"", "\"count\":2147483647,\"type\":\"VEC3\""), "a.gltf", "too often"},
        {changed(gltf, "\"byteLength\":36", "\"byteLength\":360"), "a.gltf", "bufferViews[0]: it reaches beyond"},
        {changed(gltf, "\"POSITION\":0", "\"POSITION\":7"), "a.gltf", "accessors[7]: it is referred to and isn't there"},
        {changed(gltf, "\"POSITION\":0", "\"POSITION\":-1"), "a.gltf", "POSITION: a whole number"},
        {changed(gltf, "[0,0,5],\"children\":[1]", "[0,0,5],\"children\":[0]"), "a.gltf",
         "nodes[0]: it stands in the tree of nodes twice"},
        {changed(gltf, "\"asset\":", "\"extensionsRequired\":[\"KHR_draco_mesh_compression\"],\"asset\":"), "a.gltf",
         "isn't known"},
        {test::gltfText("../secret.bin"), "a.gltf", "isn't a file in the folder"},
        {test::gltfText("/etc/passwd"), "a.gltf", "isn't a file in the folder"},
        {test::gltfText("nosuch.bin"), "a.gltf", "buffers[0]: can't read 'nosuch.bin'"},
    };
    for (const Broken& broken : cases) {
        Messages messages;
        MeshParts read;
        const bool isRead = readMeshes(broken.bytes, broken.path, read);
        EXPECT_EQ(isRead, broken.said == nullptr) << messages.text();
        EXPECT_EQ(messages.errors(), isRead ? 0 : 1);
        if (broken.said != nullptr) {
            EXPECT_NE(messages.text().find(broken.said), std::string::npos)
                << "said:     " << messages.text() << "expected: " << broken.said;
        }
    }
}

// Whatever is left of a file: one message and nothing read, or sound parts. Binary forms know their own size.
TEST(MeshFiles, CutAndDamaged) {
    const std::pair<std::string, const char*> files[] = {{test::plyFile("ascii"), "a.ply"},
                                                         {test::plyFile("binary_little_endian"), "a.ply"},
                                                         {test::plyFile("binary_big_endian"), "a.ply"},
                                                         {std::string(test::kObjFile), "a.obj"},
                                                         {test::glbFile(), "a.glb"},
                                                         {test::gltfText("data:;base64," + std::string(60, 'A')), "a.gltf"}};
    const auto readOrExplain = [](std::string_view bytes, const char* path) {
        Messages messages;
        MeshParts read;
        const bool isRead = readMeshes(bytes, path, read);
        EXPECT_EQ(messages.errors(), isRead ? 0 : 1) << messages.text();
        for (const MeshPart& part : read.parts) EXPECT_EQ(whyRefused(part.mesh), "");
        if (isRead) {
            EXPECT_EQ(whyRefused(joinParts(read, "")), "");
        }
        return isRead;
    };
    std::mt19937 random(20250112);
    for (const auto& [bytes, path] : files) {
        const std::size_t whole = bytes.find_last_not_of("\n ") + 1;
        const bool hasNoEnd = std::string_view(path) == "a.obj";
        for (std::size_t size = 0; size < whole; ++size) {
            const bool isRead = readOrExplain(std::string_view(bytes).substr(0, size), path);
            EXPECT_TRUE(hasNoEnd || !isRead) << path << " cut at " << size;
        }
        EXPECT_TRUE(readOrExplain(bytes, path)) << path;
        for (int i = 0; i < 1500; ++i) {
            std::string damaged = bytes;
            for (unsigned k = 0; k < 1 + (i % 4 == 0 ? random() % 8 : 0); ++k)
                damaged[random() % damaged.size()] ^= static_cast<char>(1U << random() % 8);
            readOrExplain(damaged, path);
        }
    }
}

}  // namespace
}  // namespace nemra::node
