// Scenes to bytes and back: a grid of triangles with normals and texture coordinates in each encoding, beside memcpy of the bytes
// that the scene holds. Time is the processor's. Memory is the largest resident set above what was there before, as a multiple of
// these bytes.
//
//   scene_rate [millions of triangles] [folder]     two million if not given
//
// With a folder the bytes go through files in it, which are read back from the page cache (or from the disk, if they don't fit).
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "benchmarks/process.h"
#include "engine/node/encoding/encode.h"
#include "engine/node/read_scene.h"

using namespace nemra;
using namespace nemra::node;
using nemra::benchmark::memory;
using nemra::benchmark::processorSeconds;

namespace {

/// With so many squares along one side, of two triangles each.
Scene gridScene(int side) {
    auto geometry = std::make_shared<Geometry>();
    Mesh& mesh = geometry->shape.emplace<Mesh>();
    auto& vertices = mesh.vertices.edit();
    auto& normals = mesh.normals.edit();
    auto& uvs = mesh.uvs.edit();
    auto& triangles = mesh.triangles.edit();
    for (int y = 0; y <= side; ++y) {
        for (int x = 0; x <= side; ++x) {
            const double u = x / static_cast<double>(side);
            const double v = y / static_cast<double>(side);
            vertices.insert(vertices.end(), {u, v, 0.1 * std::sin(7.0 * u) * std::cos(5.0 * v)});
            const double slope = 0.7 * std::cos(7.0 * u) * std::cos(5.0 * v);
            const double length = std::hypot(1.0, slope);
            normals.insert(normals.end(), {static_cast<float>(-slope / length), 0.0F, static_cast<float>(1.0 / length)});
            uvs.insert(uvs.end(), {static_cast<float>(u), static_cast<float>(v)});
            if (x == side || y == side) continue;
            const int a = y * (side + 1) + x;
            const int b = a + side + 1;
            triangles.insert(triangles.end(), {a, a + 1, b, a + 1, b + 1, b});
        }
    }
    Scene scene;
    scene.geometries = {geometry};
    return scene;
}

struct Result {
    double seconds;  // of the processor, the best of the runs
    double memory;   // bytes at most, above what was there before the first run
};

Result measure(int runs, const std::function<void()>& body) {
    Result result{1e9, 0.0};
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak counts from here
    const double before = memory("VmRSS:");
    for (int run = 0; run < runs; ++run) {
        const double start = processorSeconds();
        body();
        result.seconds = std::min(result.seconds, processorSeconds() - start);
        if (run == 0) result.memory = memory("VmHWM:") - before;
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

/// A scene to bytes and back in memory.
void throughMemory(const Scene& scene, Format format, const std::string& name, double data, int runs) {
    const Buffer bytes = encode(scene, format);
    const auto size = static_cast<double>(bytes.size());
    std::printf("%s: %.1f MB\n", name.c_str(), size / 1e6);
    print((name + " write").c_str(), measure(runs, [&] { std::free(encode(scene, format).release()); }), size, data);
    print((name + " read").c_str(),
          measure(runs,
                  [&] {
                      Scene again;
                      check(readScene(bytes.bytes(), "benchmark", again), "reading");
                  }),
          size, data);
}

/// A scene to a file and back.
void throughFile(const Scene& scene, Format format, const std::string& name, double data, int runs,
                 const std::filesystem::path& folder) {
    const std::string path = (folder / ("scene_rate." + name)).string();
    const Result written = measure(runs, [&] {
        const Buffer bytes = encode(scene, format);
        std::FILE* const file = std::fopen(path.c_str(), "wb");
        check(file != nullptr, "opening the file");
        const bool isWhole = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
        check(std::fclose(file) == 0 && isWhole, "writing the file");
    });
    const auto size = static_cast<double>(std::filesystem::file_size(path));
    std::printf("%s: %.1f MB\n", name.c_str(), size / 1e6);
    print((name + " write file").c_str(), written, size, data);
    print((name + " read file").c_str(),
          measure(runs,
                  [&] {
                      Scene again;
                      check(readSceneFile(path, again), "reading");
                  }),
          size, data);
    std::filesystem::remove(path);
}

}  // namespace

int main(int count, char** arguments) {
    const double millions = count > 1 ? std::atof(arguments[1]) : 2.0;
    if (!(millions > 0.0 && millions <= 20.0)) {
        std::fprintf(stderr, "from 0 to 20 million triangles\n");
        return 1;
    }
    const int runs = millions > 4.0 ? 2 : 6;
    registerClasses();
    const Scene scene = gridScene(static_cast<int>(std::lround(std::sqrt(millions * 5e5))));
    const Mesh& mesh = std::get<Mesh>(scene.geometries[0]->shape);
    const auto data =
        static_cast<double>(8 * mesh.vertices.size() + 4 * (mesh.normals.size() + mesh.uvs.size() + mesh.triangles.size()));
    std::printf("%zu triangles, %.1f MB\n", mesh.triangles.size() / 3, data / 1e6);
    {
        const std::string source(static_cast<std::size_t>(data), 'x');
        print("memcpy",
              measure(runs,
                      [&] {
                          Buffer copy(source.size());
                          copy.append(source);
                          if (copy.data()[source.size() / 2] != 'x') std::abort();
                      }),
              data, data);
    }
    for (const Format format : {Format::svbin, Format::svxml, Format::svbinz, Format::svxmlz}) {
        constexpr const char* kNames[] = {"svxml", "svbin", "svxmlz", "svbinz"};
        const std::string name = kNames[static_cast<int>(format)];
        {
            Scene again;
            check(readScene(encode(scene, format).bytes(), "benchmark", again), "reading");
            check(std::get<Mesh>(again.geometries.at(0)->shape).vertices == mesh.vertices, "the round trip");
        }
        if (count > 2) {
            throughFile(scene, format, name, data, runs, arguments[2]);
        } else {
            throughMemory(scene, format, name, data, runs);
        }
    }
    return 0;
}
