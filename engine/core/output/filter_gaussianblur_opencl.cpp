// Gaussian blur by a kernel or by box averages, along the rows and then along the columns.
#include "engine/core/opencl/run.h"
#include "engine/core/output/filters_opencl.h"

namespace nemra::core {
namespace {

constexpr opencl::Source kSource{"gaussianblur", R"CL(
float finite(float value) { return isfinite(value) ? value : 0.0f; }

// One item per number. It is number `i` of `count` along its line, and those before and after it are `stride` away.
__kernel void convolve(__global const float* from, __global float* to, __global const float* weights, int reach, int rowLength,
                       int height, int components, int alongColumns) {
    const int x = get_global_id(0);
    const int y = get_global_id(1);
    if (x >= rowLength) return;
    const size_t stride = alongColumns ? (size_t)rowLength : (size_t)components;
    const int i = alongColumns ? y : x / components;
    const int count = alongColumns ? height : rowLength / components;
    const size_t here = (size_t)y * rowLength + x;
    const int first = max(0, i - reach);
    const int last = min(count - 1, i + reach);
    const __global float* number = from + here - (size_t)(i - first) * stride;
    float sum = 0.0f;
    float total = 0.0f;
    for (int j = first; j <= last; ++j, number += stride) {
        const float weight = weights[abs(i - j)];
        sum += weight * finite(*number);
        total += weight;
    }
    to[here] = sum / total;
}

// Running sums lose digits with their length; what each addition loses is kept in `rest` (Neumaier 1974).
void add(float* sum, float* rest, float value) {
    const float next = *sum + value;
    *rest += fabs(*sum) >= fabs(value) ? (*sum - next) + value : (value - next) + *sum;
    *sum = next;
}

// One item per line: mean over 2 radius + 1 numbers, of those that the line has.
__kernel void box(__global const float* from, __global float* to, int radius, int rowLength, int height, int components,
                  int alongColumns) {
    const int line = get_global_id(0);
    if (line >= (alongColumns ? rowLength : height * components)) return;
    const size_t stride = alongColumns ? (size_t)rowLength : (size_t)components;
    const int count = alongColumns ? height : rowLength / components;
    const size_t start = alongColumns ? (size_t)line : (size_t)(line / components) * rowLength + line % components;
    float sum = 0.0f;
    float rest = 0.0f;
    for (int i = 0; i < min(radius, count); ++i) add(&sum, &rest, finite(from[start + i * stride]));
    for (int i = 0; i < count; ++i) {
        if (i + radius < count) add(&sum, &rest, finite(from[start + (i + radius) * stride]));
        if (i - radius - 1 >= 0) add(&sum, &rest, -finite(from[start + (i - radius - 1) * stride]));
        to[start + i * stride] = (sum + rest) / (min(count - 1, i + radius) - max(0, i - radius) + 1);
    }
}
)CL"};

}  // namespace

std::vector<float> blurByOpenCl(opencl::Device& device, const std::vector<float>& values, int width, int height, int components,
                                const BlurPlan& plan) {
    opencl::Run run(device, kSource);
    const int rowLength = width * components;
    opencl::Buffer from = run.copyOf(values);
    opencl::Buffer to = run.memoryFor<float>(values.size());
    if (!plan.kernel.empty()) {
        const opencl::Buffer weights = run.copyOf(std::vector<float>(plan.kernel.begin(), plan.kernel.end()));
        const int reach = static_cast<int>(plan.kernel.size()) - 1;
        for (const int alongColumns : {0, 1}) {
            run.call("convolve", rowLength, height, from, to, weights, reach, rowLength, height, components, alongColumns);
            std::swap(from, to);
        }
    }
    for (const int radius : plan.radii) {
        for (const int alongColumns : {0, 1}) {
            run.call("box", alongColumns ? rowLength : height * components, 1, from, to, radius, rowLength, height, components,
                     alongColumns);
            std::swap(from, to);
        }
    }
    return run.read<float>(from, values.size());
}

}  // namespace nemra::core
