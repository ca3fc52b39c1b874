// Scenes to bytes and back: a grid of two million triangles with normals and texture coordinates, in svbin and svxml, beside
// memcpy of the bytes that the scene holds. Memory is the largest resident set above what was there before, as a multiple of
// these bytes.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>

#include "engine/node/encoding/encode.h"
#include "engine/node/read_scene.h"

using namespace nemra;
using namespace nemra::node;

namespace {

constexpr int kSide = 1000;  // squares of the grid along one side, of two triangles each
constexpr int kRuns = 5;

Scene gridScene() {
    auto geometry = std::make_shared<Geometry>();
    Mesh& mesh = geometry->shape.emplace<Mesh>();
    auto& vertices = mesh.vertices.edit();
    auto& normals = mesh.normals.edit();
    auto& uvs = mesh.uvs.edit();
    auto& triangles = mesh.triangles.edit();
    for (int y = 0; y <= kSide; ++y) {
        for (int x = 0; x <= kSide; ++x) {
            const double u = x / static_cast<double>(kSide);
            const double v = y / static_cast<double>(kSide);
            vertices.insert(vertices.end(), {u, v, 0.1 * std::sin(7.0 * u) * std::cos(5.0 * v)});
            const double slope = 0.7 * std::cos(7.0 * u) * std::cos(5.0 * v);
            const double length = std::hypot(1.0, slope);
            normals.insert(normals.end(), {static_cast<float>(-slope / length), 0.0F, static_cast<float>(1.0 / length)});
            uvs.insert(uvs.end(), {static_cast<float>(u), static_cast<float>(v)});
            if (x == kSide || y == kSide) continue;
            const int a = y * (kSide + 1) + x;
            const int b = a + kSide + 1;
            triangles.insert(triangles.end(), {a, a + 1, b, a + 1, b + 1, b});
        }
    }
    Scene scene;
    scene.geometries = {geometry};
    return scene;
}

/// From /proc/self/status, in bytes.
double memory(const char* key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(key)) return 1024.0 * std::atof(line.c_str() + std::strlen(key) + 1);
    return 0.0;
}

struct Result {
    double seconds;  // the best of the runs
    double memory;   // bytes at most, above what was there before the first run
};

Result measure(const std::function<void()>& body) {
    Result result{1e9, 0.0};
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak counts from here
    const double before = memory("VmRSS:");
    body();
    result.memory = memory("VmHWM:") - before;
    for (int run = 0; run < kRuns; ++run) {
        const auto start = std::chrono::steady_clock::now();
        body();
        result.seconds =
            std::min(result.seconds, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return result;
}

void print(const char* what, const Result& result, double bytes, double data) {
    std::printf("%-18s %8.0f MB/s  %6.1f ms  memory %.2f times the data\n", what, bytes / result.seconds / 1e6,
                1e3 * result.seconds, result.memory / data);
}

void check(bool right, const char* what) {
    if (right) return;
    std::fprintf(stderr, "%s went wrong\n", what);
    std::exit(1);
}

}  // namespace

int main() {
    registerClasses();
    const Scene scene = gridScene();
    const Mesh& mesh = std::get<Mesh>(scene.geometries[0]->shape);
    const auto data =
        static_cast<double>(8 * mesh.vertices.size() + 4 * (mesh.normals.size() + mesh.uvs.size() + mesh.triangles.size()));
    std::printf("%zu triangles, %.1f MB\n", mesh.triangles.size() / 3, data / 1e6);

    const std::string source(static_cast<std::size_t>(data), 'x');
    print("memcpy", measure([&] {
              Buffer copy(source.size());
              copy.append(source);
              if (copy.data()[source.size() / 2] != 'x') std::abort();
          }),
          data, data);
    for (const Format format : {Format::svbin, Format::svxml, Format::svbinz, Format::svxmlz}) {
        constexpr const char* kNames[] = {"svxml", "svbin", "svxmlz", "svbinz"};
        const std::string name = kNames[static_cast<int>(format)];
        const Buffer file = encode(scene, format);
        {
            Scene again;
            check(readScene(file.bytes(), "benchmark", again), "reading");
            check(std::get<Mesh>(again.geometries.at(0)->shape).vertices == mesh.vertices, "the round trip");
        }
        std::printf("%s: %.1f MB\n", name.c_str(), static_cast<double>(file.size()) / 1e6);
        print((name + " write").c_str(), measure([&] { std::free(encode(scene, format).release()); }),
              static_cast<double>(file.size()), data);
        print((name + " read").c_str(), measure([&] {
                  Scene again;
                  check(readScene(file.bytes(), "benchmark", again), "reading");
              }),
              static_cast<double>(file.size()), data);
    }
    return 0;
}
