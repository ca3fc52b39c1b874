// The light that the eye scatters, as a product of Fourier transforms (Cooley and Tukey 1965, radix 2, in place).
#include <complex>

#include "engine/core/opencl/run.h"
#include "engine/core/output/filters_opencl.h"
#include "engine/core/output/fourier.h"

namespace nemra::core {
namespace {

using Complex = std::complex<float>;

constexpr opencl::Source kSource{"glare", R"CL(
// All arrays but picture and shares: complex numbers, rows of `width`. What lies beyond the picture is empty.

// The share depends on how far pixels are apart, in either direction around the array.
__kernel void placeShares(__global const float* shares, __global float2* spread, int width, int height, int pictureWidth,
                          int pictureHeight) {
    const int x = get_global_id(0);
    const int y = get_global_id(1);
    if (x >= width) return;
    const int dx = min(x, width - x);
    const int dy = min(y, height - y);
    const int isShare = dx < pictureWidth && dy < pictureHeight && (dx != 0 || dy != 0);
    spread[(size_t)y * width + x] = (float2)(isShare ? shares[(size_t)dy * pictureWidth + dx] : 0.0f, 0.0f);
}

// Two components of the picture as one complex number, or its third one alone.
__kernel void placeLight(__global const float* picture, __global float2* light, int width, int pictureWidth, int pictureHeight,
                         int first) {
    const int x = get_global_id(0);
    const int y = get_global_id(1);
    if (x >= width) return;
    float2 value = (float2)(0.0f, 0.0f);
    if (x < pictureWidth && y < pictureHeight) {
        const __global float* xyz = picture + 3 * ((size_t)y * pictureWidth + x) + first;
        value = (float2)(xyz[0], first == 0 ? xyz[1] : 0.0f);
    }
    light[(size_t)y * width + x] = value;
}

__kernel void takeLight(__global const float2* light, __global float* picture, int width, int pictureWidth, int first) {
    const int x = get_global_id(0);
    const int y = get_global_id(1);
    if (x >= pictureWidth) return;
    const float2 value = light[(size_t)y * width + x];
    __global float* xyz = picture + 3 * ((size_t)y * pictureWidth + x) + first;
    xyz[0] = fmax(0.0f, value.x);
    if (first == 0) xyz[1] = fmax(0.0f, value.y);
}

// The spread is symmetric, so its transform is real.
__kernel void multiply(__global float2* light, __global const float2* spread, int width, float scale) {
    const int x = get_global_id(0);
    if (x >= width) return;
    const size_t i = (size_t)get_global_id(1) * width + x;
    light[i] *= spread[i].x * scale;
}

// A line has 2^bits elements; items are elements by lines along the rows, and lines by elements along the columns, so that
// neighbours touch neighbouring memory.
__kernel void reverseBits(__global float2* values, int width, int columns, int lines, int bits, int alongColumns) {
    if ((int)get_global_id(0) >= columns) return;
    const uint element = get_global_id(alongColumns ? 1 : 0);
    const size_t line = get_global_id(alongColumns ? 0 : 1);
    uint other = 0;
    for (int bit = 0; bit < bits; ++bit) other |= (element >> bit & 1) << (bits - 1 - bit);
    if (element >= other) return;
    const size_t stride = alongColumns ? (size_t)width : 1;
    __global float2* first = values + line * (alongColumns ? 1 : (size_t)width);
    const float2 held = first[element * stride];
    first[element * stride] = first[other * stride];
    first[other * stride] = held;
}

// One item per pair. `apart`: elements between the two; `roots`: of unity, `step` apart for this length; `sign` -1 for their
// conjugates.
__kernel void butterflies(__global float2* values, __global const float2* roots, int width, int columns, int apart, int step,
                          float sign, int alongColumns) {
    if ((int)get_global_id(0) >= columns) return;
    const uint pair = get_global_id(alongColumns ? 1 : 0);
    const size_t line = get_global_id(alongColumns ? 0 : 1);
    const uint i = pair & (uint)(apart - 1);
    const size_t element = 2 * (size_t)(pair - i) + i;
    const size_t stride = alongColumns ? (size_t)width : 1;
    __global float2* even = values + line * (alongColumns ? 1 : (size_t)width) + element * stride;
    __global float2* odd = even + (size_t)apart * stride;
    const float2 root = (float2)(roots[i * step].x, sign * roots[i * step].y);
    const float2 a = *even;
    const float2 b = (float2)(odd->x * root.x - odd->y * root.y, odd->x * root.y + odd->y * root.x);
    *even = a + b;
    *odd = a - b;
}
)CL"};

class Transform {
public:
    Transform(opencl::Run& run, int width, int height)
        : run_(run),
          width_(width),
          height_(height),
          rowRoots_(run.copyOf(rootsOfUnity(width, false))),
          columnRoots_(run.copyOf(rootsOfUnity(height, false))) {}

    /// Without the division by the number of elements, either way.
    void operator()(const opencl::Buffer& values, bool inverse) {
        alongLines(values, rowRoots_, width_, height_, 0, inverse);
        alongLines(values, columnRoots_, height_, width_, 1, inverse);
    }

private:
    void alongLines(const opencl::Buffer& values, const opencl::Buffer& roots, int length, int lines, int alongColumns,
                    bool inverse) {
        const float sign = inverse ? -1.0F : 1.0F;
        int bits = 0;
        while (1 << bits < length) ++bits;
        const int columns = alongColumns ? lines : length;
        run_.call("reverseBits", columns, alongColumns ? length : lines, values, width_, columns, bits, alongColumns);
        for (int half = 1; half < length; half *= 2) {
            const int across = alongColumns ? lines : length / 2;
            run_.call("butterflies", across, alongColumns ? length / 2 : lines, values, roots, width_, across, half,
                      length / (2 * half), sign, alongColumns);
        }
    }

    opencl::Run& run_;
    int width_;
    int height_;
    opencl::Buffer rowRoots_;
    opencl::Buffer columnRoots_;
};

}  // namespace

std::vector<float> scatterByOpenCl(opencl::Device& device, const XyzImage& image, const std::vector<float>& shares) {
    opencl::Run run(device, kSource);
    const int width = transformSize(2 * image.width);
    const int height = transformSize(2 * image.height);
    const std::size_t cells = std::size_t(width) * std::size_t(height);
    Transform transform(run, width, height);
    const opencl::Buffer picture = run.copyOf(image.values);
    const opencl::Buffer spread = run.memoryFor<Complex>(cells);
    const opencl::Buffer light = run.memoryFor<Complex>(cells);
    const opencl::Buffer deviceShares = run.copyOf(shares);
    run.call("placeShares", width, height, deviceShares, spread, width, height, image.width, image.height);
    transform(spread, false);
    const float scale = 1.0F / (static_cast<float>(width) * static_cast<float>(height));
    for (const int first : {0, 2}) {  // X and Y as one complex picture, then Z
        run.call("placeLight", width, height, picture, light, width, image.width, image.height, first);
        transform(light, false);
        run.call("multiply", width, height, light, spread, width, scale);
        transform(light, true);
        run.call("takeLight", image.width, image.height, light, picture, width, image.width, first);
    }
    return run.read<float>(picture, image.values.size());
}

}  // namespace nemra::core
