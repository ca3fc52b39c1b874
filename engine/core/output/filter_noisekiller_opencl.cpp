// Non-local means as in filter_noisekiller.cpp: for each offset of the window the distances of single pixels are summed over the
// patches, first along the rows, then down the columns.
#include "engine/core/opencl/run.h"
#include "engine/core/output/filters_opencl.h"

namespace nemra::core {
namespace {

constexpr opencl::Source kSource{"noisekiller", R"CL(
// Does the pixel have a partner at that offset?
int hasPartner(int x, int y, int width, int height, int dx, int dy) {
    return x + dx >= 0 && x + dx < width && y + dy >= 0 && y + dy < height;
}

__kernel void distances(__global const float* image, __global const float* relative, __global float* single, int width, int height,
                        int dx, int dy, float k2) {
    const int x = get_global_id(0);
    const int y = get_global_id(1);
    if (x >= width || !hasPartner(x, y, width, height, dx, dy)) return;
    const size_t p = (size_t)y * width + x;
    const size_t q = (size_t)(y + dy) * width + (x + dx);
    const float3 up = vload3(p, image);
    const float3 uq = vload3(q, image);
    const float3 vp = relative[p] * up * up;
    const float3 vq = relative[q] * uq * uq;
    const float3 d = ((up - uq) * (up - uq) - (vp + fmin(vp, vq))) / (1.0e-10f + k2 * (vp + vq));
    single[p] = clamp((d.x + d.y + d.z) / 3.0f, -1.0e4f, 1.0e4f);
}

__kernel void rowSums(__global const float* single, __global float* across, int width, int height, int dx, int dy, int patch) {
    const int x = get_global_id(0);
    const int y = get_global_id(1);
    if (x >= width || !hasPartner(x, y, width, height, dx, dy)) return;
    const int last = min(x + patch, min(width, width - dx) - 1);
    const __global float* row = single + (size_t)y * width;
    float sum = 0.0f;
    for (int u = max(x - patch, max(0, -dx)); u <= last; ++u) sum += row[u];
    across[(size_t)y * width + x] = sum;
}

// `sums`: weighed values of three channels, then the weights.
__kernel void gather(__global const float* image, __global const float* across, __global float4* sums, int width, int height,
                     int dx, int dy, int patch) {
    const int x = get_global_id(0);
    const int y = get_global_id(1);
    if (x >= width || !hasPartner(x, y, width, height, dx, dy)) return;
    const int top = max(y - patch, max(0, -dy));
    const int bottom = min(y + patch, min(height, height - dy) - 1);
    float sum = 0.0f;
    for (int v = top; v <= bottom; ++v) sum += across[(size_t)v * width + x];
    const int columns = min(x + patch, min(width, width - dx) - 1) - max(x - patch, max(0, -dx)) + 1;
    const float share = exp(-fmax(0.0f, sum / ((float)columns * (bottom - top + 1))));
    const float3 value = vload3((size_t)(y + dy) * width + (x + dx), image);
    sums[(size_t)y * width + x] += share * (float4)(value, 1.0f);
}

__kernel void clear(__global float4* sums, int width) {
    const int x = get_global_id(0);
    if (x < width) sums[(size_t)get_global_id(1) * width + x] = (float4)(0.0f);
}

__kernel void divide(__global const float4* sums, __global float* image, int width) {
    const int x = get_global_id(0);
    if (x >= width) return;
    const size_t i = (size_t)get_global_id(1) * width + x;
    vstore3(sums[i].xyz / sums[i].w, i, image);
}
)CL"};

}  // namespace

std::vector<float> denoiseByOpenCl(opencl::Device& device, const XyzImage& image, const std::vector<float>& relativeVariances,
                                   const DenoiseWindow& window) {
    opencl::Run run(device, kSource);
    const int width = image.width;
    const int height = image.height;
    const std::size_t pixels = relativeVariances.size();
    const opencl::Buffer values = run.copyOf(image.values);
    const opencl::Buffer relative = run.copyOf(relativeVariances);
    const opencl::Buffer single = run.memoryFor<float>(pixels);
    const opencl::Buffer across = run.memoryFor<float>(pixels);
    const opencl::Buffer sums = run.memoryFor<float>(4 * pixels);
    run.call("clear", width, height, sums, width);
    for (int dy = -window.search; dy <= window.search; ++dy) {
        for (int dx = -window.search; dx <= window.search; ++dx) {
            run.call("distances", width, height, values, relative, single, width, height, dx, dy, window.k2);
            run.call("rowSums", width, height, single, across, width, height, dx, dy, window.patch);
            run.call("gather", width, height, values, across, sums, width, height, dx, dy, window.patch);
        }
    }
    run.call("divide", width, height, sums, values, width);
    return run.read<float>(values, 3 * pixels);
}

}  // namespace nemra::core
