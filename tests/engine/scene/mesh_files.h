/// Small mesh files of each format, made by the tests themselves.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace nemra::test {

/// A folder of its own that goes with the test.
class Folder {
public:
    Folder() : path_(std::filesystem::temp_directory_path() / ("mesh_files_" + std::to_string(std::random_device{}()))) {
        std::filesystem::create_directories(path_);
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string operator/(const std::string& name) const { return (path_ / name).string(); }
    std::string write(const std::string& name, std::string_view bytes) const {
        std::filesystem::create_directories((path_ / name).parent_path());
        std::ofstream(path_ / name, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return *this / name;
    }

private:
    std::filesystem::path path_;
};

/// Appends numbers as they lie in memory, turned round if asked.
template <class Number>
void put(std::string& bytes, Number number, bool bigEndian = false) {
    char raw[sizeof number];
    std::memcpy(raw, &number, sizeof number);
    if (bigEndian) std::reverse(raw, raw + sizeof raw);
    bytes.append(raw, sizeof raw);
}

/// A quadrilateral (0 0 0) (2 0 0) (2 1 0) (0 1 3) with a normal for each vertex, behind an element that readers don't know.
inline std::string plyFile(const std::string& format) {
    std::string file = "ply\nformat " + format +
                       " 1.0\ncomment made by a test\nelement scanner 1\nproperty list uchar short settings\n"
                       "element vertex 4\nproperty double x\nproperty float y\nproperty float z\nproperty uchar red\n"
                       "property float nx\nproperty float ny\nproperty float nz\n"
                       "element face 1\nproperty list uchar int vertex_indices\nend_header\n";
    constexpr double kVertices[4][3] = {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 3}};
    if (format == "ascii") {
        file += "2 -7 8\n";
        for (const auto& v : kVertices)
            file += std::to_string(v[0]) + " " + std::to_string(v[1]) + " " + std::to_string(v[2]) + " 255 0 0 1\n";
        return file + "4 0 1 2 3\n";
    }
    const bool big = format == "binary_big_endian";
    put(file, std::uint8_t{2});
    put(file, std::int16_t{-7}, big);
    put(file, std::int16_t{8}, big);
    for (const auto& v : kVertices) {
        put(file, v[0], big);
        put(file, static_cast<float>(v[1]), big);
        put(file, static_cast<float>(v[2]), big);
        put(file, std::uint8_t{255});
        for (const float n : {0.0F, 0.0F, 1.0F}) put(file, n, big);
    }
    put(file, std::uint8_t{4});
    for (const std::int32_t i : {0, 1, 2, 3}) put(file, i, big);
    return file;
}

/// Two groups, of which one has two materials; numbers counted backwards, missing pieces, a line that goes on in the next.
inline constexpr std::string_view kObjFile = R"(# made by a test
mtllib nowhere.mtl
v 0 0 0
v 2 0 0
v 2 1 0
v 0 1 3 1.0
vt 0 0
vt 1 0
vt 1 1
vn 0 0 1
g top
usemtl steel
f 1/1/1 2/2/1 \
  3/3/1
usemtl green glass
f -4 -2 -1
g side
f 1//1 2//1 4//1
)";

/// A triangle of floats (0 0 0) (2 0 0) (0 1 0), then indices 0 1 2 of 16 bits.
inline std::string triangleBytes() {
    std::string bytes;
    for (const float x : {0.0F, 0.0F, 0.0F, 2.0F, 0.0F, 0.0F, 0.0F, 1.0F, 0.0F}) put(bytes, x);
    for (const std::uint16_t i : {0, 1, 2, 0}) put(bytes, i);
    return bytes;
}

/// A parent that moves by (0 0 5) and its child that turns by a quarter about z, both with the same triangle.
inline std::string gltfText(const std::string& uri) {
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],
"nodes":[{"mesh":0,"translation":[0,0,5],"children":[1]},{"mesh":0,"rotation":[0,0,0.70710678118654752,0.70710678118654752]}],
"meshes":[{"name":"wedge","primitives":[{"attributes":{"POSITION":0},"indices":1,"material":0}]}],
"materials":[{"name":"brass"}],
"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3"},
{"bufferView":1,"componentType":5123,"count":3,"type":"SCALAR"}],
"bufferViews":[{"buffer":0,"byteLength":36},{"buffer":0,"byteOffset":36,"byteLength":8}],
"buffers":[{"byteLength":44)" +
           (uri.empty() ? "" : ",\"uri\":\"" + uri + "\"") + "}]}";
}

inline std::string glbFile() {
    std::string text = gltfText("");
    text.append((4 - text.size() % 4) % 4, ' ');
    const std::string data = triangleBytes();
    std::string file = "glTF";
    put(file, std::uint32_t{2});
    put(file, static_cast<std::uint32_t>(28 + text.size() + data.size()));
    put(file, static_cast<std::uint32_t>(text.size()));
    file += "JSON" + text;
    put(file, static_cast<std::uint32_t>(data.size()));
    file += std::string("BIN\0", 4) + data;
    return file;
}

}  // namespace nemra::test
