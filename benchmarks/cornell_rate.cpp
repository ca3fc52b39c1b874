// Samples per second of the Cornell box on one thread and on two, beside a bare loop over Embree that traces the same kind of
// paths without spectra, sampler or film.
//
//   cornell_rate <scene file> [seconds per measurement]
//   cornell_rate <scene file> --image <seconds> <seed> <threads> <file>    renders for so long and writes the XYZ of each pixel
//
// The image is 256 x 256 pixels in both cases.

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "engine/core/embree/handles.h"
#include "engine/core/prepare/prepared.h"
#include "engine/node/read_scene.h"

namespace {

using namespace nemra;
using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

constexpr int kTile = 32;
constexpr std::uint32_t kPasses = 16;

/// Samples per second over all threads, each taking the next tile that nobody has.
double renderRate(const core::PreparedScene& scene, core::Film& film, int threads, double seconds) {
    const int across = (scene.width() + kTile - 1) / kTile;
    const int down = (scene.height() + kTile - 1) / kTile;
    std::atomic<std::uint64_t> next{0};
    std::atomic<std::uint64_t> samples{0};
    const std::atomic<bool> cancel{false};
    const auto start = Clock::now();
    const auto work = [&] {
        while (secondsSince(start) < seconds) {
            const std::uint64_t job = next++;
            const int tile = static_cast<int>(job % (across * down));
            const int x = tile / down * kTile;
            const int y = tile % down * kTile;
            const auto first = static_cast<std::uint32_t>(job / (across * down)) * kPasses;
            samples += scene.render(film, {x, y, x + kTile, y + kTile}, first, kPasses, cancel).samples;
        }
    };
    std::vector<std::thread> workers;
    for (int i = 1; i < threads; ++i) workers.emplace_back(work);
    work();
    for (auto& worker : workers) worker.join();
    return static_cast<double>(samples) / secondsSince(start);
}

/// The bare loop: single rays, a cosine bounce and one shadow ray to the light at each, a coin for going on.
class BareLoop {
public:
    explicit BareLoop(const core::Prepared& scene) : scene_(scene) {
        trace_ = std::make_unique<core::TraceScenes>(const_cast<core::World&>(scene.world()), 0);
        trace_->connect(kernel_);
    }

    double rate(int threads, double seconds, double& raysPerPath) const {
        std::atomic<std::uint64_t> paths{0}, rays{0};
        const auto start = Clock::now();
        const auto work = [&](std::uint32_t seed) {
            while (secondsSince(start) < seconds) {
                std::uint64_t traced = 0;
                for (int i = 0; i < 4096; ++i) traced += onePath(seed);
                paths += 4096;
                rays += traced;
            }
        };
        std::vector<std::thread> workers;
        for (int i = 1; i < threads; ++i) workers.emplace_back(work, 77U + i);
        work(76U);
        for (auto& worker : workers) worker.join();
        raysPerPath = static_cast<double>(rays) / static_cast<double>(paths);
        return static_cast<double>(paths) / secondsSince(start);
    }

private:
    static float random(std::uint32_t& state) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return static_cast<float>(state >> 8) * 0x1p-24F;
    }

    int onePath(std::uint32_t& seed) const {
        const core::CameraRecord& view = scene_.kernelScene().view;
        core::embree::Query query(core::embree::Coherence::incoherent);
        auto* const target = static_cast<RTCScene>(kernel_.path.embree);
        float o[3], d[3];
        const float x = random(seed) * static_cast<float>(view.width);
        const float y = random(seed) * static_cast<float>(view.height);
        float length = 0.0F;
        for (int c = 0; c < 3; ++c) {
            o[c] = view.position[c];
            d[c] = view.corner[c] + x * view.stepX[c] + y * view.stepY[c];
            length += d[c] * d[c];
        }
        for (float& c : d) c /= std::sqrt(length);
        int rays = 0;
        for (int bounce = 1;; ++bounce) {
            RTCRayHit hit{};
            hit.ray.org_x = o[0], hit.ray.org_y = o[1], hit.ray.org_z = o[2];
            hit.ray.dir_x = d[0], hit.ray.dir_y = d[1], hit.ray.dir_z = d[2];
            hit.ray.tfar = 1.0e30F;
            hit.ray.mask = -1U;
            hit.hit.geomID = hit.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
            core::embree::intersect(target, query, &hit);
            ++rays;
            if (hit.hit.geomID == RTC_INVALID_GEOMETRY_ID) return rays;
            const core::TriangleRecord& t =
                scene_.world().triangles[scene_.world().firstTriangle[hit.hit.geomID] + hit.hit.primID];
            const float facing = d[0] * t.ng[0] + d[1] * t.ng[1] + d[2] * t.ng[2];
            float n[3];
            for (int c = 0; c < 3; ++c) {
                n[c] = facing > 0.0F ? -t.ng[c] : t.ng[c];
                o[c] = t.v0[c] + hit.hit.u * t.e1[c] + hit.hit.v * t.e2[c] + n[c] * t.offset;
            }
            const core::LightRecord& light = scene_.lights().lights[random(seed) < 0.5F ? 0 : scene_.lights().lights.size() - 1];
            const float root = std::sqrt(random(seed));
            const float v = random(seed) * root;
            RTCRay shadow{};
            shadow.org_x = o[0], shadow.org_y = o[1], shadow.org_z = o[2];
            shadow.dir_x = light.v0[0] + (1.0F - root) * light.e1[0] + v * light.e2[0] - o[0];
            shadow.dir_y = light.v0[1] + (1.0F - root) * light.e1[1] + v * light.e2[1] - o[1];
            shadow.dir_z = light.v0[2] + (1.0F - root) * light.e1[2] + v * light.e2[2] - o[2];
            shadow.tfar = 0.999F;
            shadow.mask = -1U;
            if (shadow.dir_x * n[0] + shadow.dir_y * n[1] + shadow.dir_z * n[2] > 0.0F) {
                core::embree::occluded(target, query, &shadow);
                ++rays;
            }
            if (bounce >= 5 && random(seed) > 0.7F) return rays;
            float z, p, q;
            do {
                p = 2.0F * random(seed) - 1.0F;
                q = 2.0F * random(seed) - 1.0F;
                z = 1.0F - p * p - q * q;
            } while (z < 0.0F);
            z = std::sqrt(z);
            const float sign = std::copysign(1.0F, n[2]);
            const float a = -1.0F / (sign + n[2]);
            const float b = n[0] * n[1] * a;
            d[0] = p * (1.0F + sign * n[0] * n[0] * a) + q * b + z * n[0];
            d[1] = p * sign * b + q * (sign + n[1] * n[1] * a) + z * n[1];
            d[2] = -p * sign * n[0] - q * n[1] + z * n[2];
        }
    }

    const core::Prepared& scene_;
    std::unique_ptr<core::TraceScenes> trace_;
    core::KernelScene kernel_;
};

/// The scene with its image made 256 x 256, the size at which rates are compared.
bool readScene(const char* path, int seed, node::Scene& scene) {
    if (!node::readSceneFile(path, scene)) return false;
    for (auto& node : scene.nodes) {
        if (node->family() != "setup") continue;
        std::string why;
        const auto instrument = node->mutableChild("instrument");
        for (const char* side : {"width", "height"}) {
            if (!instrument->set(side, {std::int32_t{256}}, why)) std::fprintf(stderr, "%s: %s\n", side, why.c_str());
        }
        if (!node->set("seed", {std::int32_t{seed}}, why)) std::fprintf(stderr, "seed: %s\n", why.c_str());
    }
    return true;
}

/// Rows from the top, X, Y, Z of each pixel as 64-bit floats.
bool writeXyz(const core::Film& film, const char* path) {
    FILE* file = std::fopen(path, "wb");
    if (!file) return false;
    for (int y = 0; y < film.height; ++y) {
        for (int x = 0; x < film.width; ++x) {
            for (int c = 0; c < 3; ++c) {
                const std::size_t cell = film.cell(x, y, c);
                const double value = (film.high[cell] + film.low[cell]) / std::max(1U, film.samples[film.pixel(x, y)]);
                std::fwrite(&value, sizeof value, 1, file);
            }
        }
    }
    return std::fclose(file) == 0;
}

int renderImage(char** argv) {
    const double seconds = std::atof(argv[3]);
    node::Scene tree;
    if (!readScene(argv[1], std::atoi(argv[4]), tree)) return 1;
    const core::Prepared scene(tree, "", {});
    const auto film = scene.makeFilm();
    const double rate = renderRate(scene, *film, std::atoi(argv[5]), seconds);
    std::printf("%.0f samples/s\n", rate);
    return writeXyz(*film, argv[6]) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: cornell_rate <scene file> [seconds]\n");
        return 2;
    }
    node::registerClasses();
    if (argc == 7 && std::string(argv[2]) == "--image") return renderImage(argv);
    const double seconds = argc > 2 ? std::atof(argv[2]) : 3.0;
    node::Scene tree;
    if (!readScene(argv[1], 0, tree)) return 1;
    const core::Prepared scene(tree, "", {});
    core::PrepareOptions baseline;
    baseline.kernel = core::kernelBaseline();
    const core::Prepared slow(tree, "", baseline);
    core::PrepareOptions embreeOnly;
    embreeOnly.flatLimit = 0;
    const core::Prepared packets(tree, "", embreeOnly);
    const auto film = scene.makeFilm();
    renderRate(scene, *film, 1, 0.3);  // warm up

    // In turns, since a machine's speed drifts: the middle of the ratios is what counts.
    std::array<double, 5> one{};
    std::array<double, 5> two{};
    std::array<double, 5> gain{};
    for (std::size_t i = 0; i < gain.size(); ++i) {
        one[i] = renderRate(scene, *film, 1, seconds / 2.0);
        two[i] = renderRate(scene, *film, 2, seconds / 2.0);
        gain[i] = two[i] / one[i];
    }
    for (auto* const list : {&one, &two, &gain}) std::sort(list->begin(), list->end());
    const std::size_t middle = gain.size() / 2;
    const double slowRate = renderRate(slow, *film, 1, seconds);
    const double packetRate = renderRate(packets, *film, 1, seconds);
    const double packetsOnTwo = renderRate(packets, *film, 2, seconds);
    const BareLoop bare(scene);
    double rays = 0.0;
    const double bareOne = bare.rate(1, seconds, rays);
    const double bareTwo = bare.rate(2, seconds, rays);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%d x %d, %d wavelengths a path\n", scene.width(), scene.height(), scene.kernelScene().wavelengths);
    std::printf("1 thread        %8.3f M samples/s\n", one[middle] * 1.0e-6);
    std::printf("2 threads       %8.3f M samples/s   %.2f x one (%.2f to %.2f in five turns)\n", two[middle] * 1.0e-6,
                gain[middle], gain.front(), gain.back());
    std::printf("x86-64-v2       %8.3f M samples/s on 1 thread\n", slowRate * 1.0e-6);
    std::printf("Embree packets  %8.3f M samples/s on 1 thread, %.3f on 2\n", packetRate * 1.0e-6, packetsOnTwo * 1.0e-6);
    // The bare loop traces single rays by Embree; few flat triangles are traced plane by plane, which is what takes us beyond it.
    std::printf(
        "bare Embree     %8.3f M paths/s on 1 thread, %.3f on 2 (%.2f rays a path); we reach %.2f of it, by Embree %.2f\n",
        bareOne * 1.0e-6, bareTwo * 1.0e-6, rays, two[middle] / bareTwo, packetsOnTwo / bareTwo);
    std::printf("peak memory     %8.1f MB\n", static_cast<double>(usage.ru_maxrss) / 1024.0);
    return 0;
}
