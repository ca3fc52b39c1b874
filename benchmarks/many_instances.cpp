// Start-up of scenes with many instances of one mesh: time to make the scene ready and to render one sample of each pixel, and
// memory above the scene's own. Both have to grow with the instances and with the mesh, and not with the product of the two.
//
//   many_instances [instances] [triangles]      100000 and 10000 if not given; ten times these are compared with them
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>

#include "benchmarks/process.h"
#include "engine/core/render.h"
#include "engine/node/node_class.h"
#include "engine/node/read_scene.h"

using namespace nemra;
using benchmark::memory;
using benchmark::processorSeconds;
using Clock = std::chrono::steady_clock;

namespace {

/// A camera above a sky-lit floor of 10 x 10 m.
constexpr const char* kScene = R"(<scene>
    <node family="material" type="generic" name="white"/>
    <node family="setup" type="default" name="main">
        <child slot="environment" type="uniform"/>
        <child slot="instrument" type="stdcam">
            <parameter name="position" value="0 12 0"/>
            <parameter name="target" value="0 0 0"/>
            <parameter name="up" value="0 0 1"/>
            <parameter name="width" value="64"/>
            <parameter name="height" value="64"/>
        </child>
    </node>
</scene>)";

/// A hilly square of one metre with about so many triangles.
std::shared_ptr<node::Geometry> hills(int triangles) {
    auto geometry = std::make_shared<node::Geometry>();
    geometry->name = "hills";
    geometry->materialName = "white";
    auto& mesh = geometry->shape.emplace<node::Mesh>();
    auto& vertices = mesh.vertices.edit();
    auto& corners = mesh.triangles.edit();
    const int side = static_cast<int>(std::sqrt(triangles / 2.0));
    for (int y = 0; y <= side; ++y) {
        for (int x = 0; x <= side; ++x) {
            const double u = x / static_cast<double>(side);
            const double v = y / static_cast<double>(side);
            vertices.insert(vertices.end(), {u, 0.3 * std::sin(9.0 * u) * std::cos(7.0 * v), v});
            if (x == side || y == side) continue;
            const int a = y * (side + 1) + x;
            const int b = a + side + 1;
            corners.insert(corners.end(), {a, b, a + 1, a + 1, b, b + 1});
        }
    }
    return geometry;
}

node::Scene sceneOf(int instances, int triangles) {
    node::Scene scene;
    if (!node::readScene({kScene, std::strlen(kScene)}, "benchmark", scene)) std::exit(1);
    scene.geometries = {hills(triangles)};
    const int side = static_cast<int>(std::ceil(std::sqrt(instances)));
    const double size = 10.0 / side;
    for (int i = 0; i < instances; ++i) {
        auto instance = std::make_shared<node::Instance>();
        instance->geometryName = "hills";
        instance->transform = {size, 0, 0, i % side * size - 5.0, 0, size, 0, 0, 0, 0, size, i / side * size - 5.0, 0, 0, 0, 1};
        scene.instances.push_back(std::move(instance));
    }
    return scene;
}

struct Cost {
    double seconds, processor, bytes, sample;
};

/// Of making a scene ready; the least times of three. The first run counts for memory, since later ones use again what it has
/// left to the heap.
Cost startUp(const node::Scene& scene) {
    Cost cost{1e9, 1e9, 0.0, 1e9};
    for (int run = 0; run < 3; ++run) {
        std::ofstream("/proc/self/clear_refs") << "5";  // the peak counts from here
        const double before = memory("VmRSS:");
        const double processor = processorSeconds();
        const auto start = Clock::now();
        const auto prepared = core::prepareScene(scene, "");
        if (!prepared) std::exit(1);
        cost.seconds = std::min(cost.seconds, std::chrono::duration<double>(Clock::now() - start).count());
        cost.processor = std::min(cost.processor, processorSeconds() - processor);
        const auto film = prepared->makeFilm();
        const auto first = Clock::now();
        const std::atomic<bool> cancel{false};
        const auto counts = prepared->render(*film, {0, 0, prepared->width(), prepared->height()}, 0, 1, cancel);
        if (counts.samples == 0 || counts.wrong != 0) std::exit(1);
        cost.sample = std::min(cost.sample, std::chrono::duration<double>(Clock::now() - first).count());
        if (run == 0) cost.bytes = memory("VmHWM:") - before;
    }
    return cost;
}

/// In a process of its own, whose memory nobody has used before.
Cost startUp(int instances, int triangles) {
    int pipes[2];
    if (pipe(pipes) != 0) std::exit(1);
    const pid_t child = fork();
    if (child == 0) {
        node::registerClasses();
        startUp(sceneOf(100, 100));  // what is made once in a process
        const Cost cost = startUp(sceneOf(instances, triangles));
        _exit(write(pipes[1], &cost, sizeof cost) == sizeof cost ? 0 : 1);
    }
    Cost cost{};
    int status = 1;
    if (child < 0 || read(pipes[0], &cost, sizeof cost) != sizeof cost || waitpid(child, &status, 0) != child || status != 0) {
        std::fprintf(stderr, "the measurement went wrong\n");
        std::exit(1);
    }
    close(pipes[0]);
    close(pipes[1]);
    std::printf("%7d instances of %8d triangles: %7.3f s, %7.3f s of processors, %7.1f MB; %6.1f ms for a sample of each pixel\n",
                instances, triangles, cost.seconds, cost.processor, cost.bytes / 1e6, 1e3 * cost.sample);
    return cost;
}

}  // namespace

int main(int count, char** arguments) {
    const int instances = count > 1 ? std::atoi(arguments[1]) : 100000;
    const int triangles = count > 2 ? std::atoi(arguments[2]) : 10000;
    if (instances < 1000 || triangles < 100) {
        std::fprintf(stderr, "at least 1000 instances and 100 triangles are needed\n");
        return 1;
    }
    const Cost few = startUp(instances / 10, triangles);
    const Cost many = startUp(instances, triangles);
    const Cost one = startUp(1, 10 * triangles);
    const Cost fine = startUp(instances, 10 * triangles);
    std::printf("each instance: %.2f us of a processor, %.0f bytes\n", 1e6 * (many.processor - few.processor) / (0.9 * instances),
                (many.bytes - few.bytes) / (0.9 * instances));
    std::printf(
        "ten times the triangles: %.2f times the processor's time and %.2f times the memory;\n"
        "without what the one mesh takes %.2f and %.2f times\n",
        fine.processor / many.processor, fine.bytes / many.bytes, (fine.processor - one.processor) / many.processor,
        (fine.bytes - one.bytes) / many.bytes);
    return 0;
}
