// Sums over the channels of each pixel for several responses at once.
#include <algorithm>

#include "engine/core/opencl/run.h"
#include "engine/core/output/filters_opencl.h"

namespace nemra::core {
namespace {

constexpr opencl::Source kSource{"spectraltohv", R"CL(
// Items are pixels by responses.
__kernel void weighedSums(__global const float* values, __global const float* weights, __global float* sums, int pixels,
                          int channels) {
    const int pixel = get_global_id(0);
    const int response = get_global_id(1);
    if (pixel >= pixels) return;
    float sum = 0.0f;
    for (int c = 0; c < channels; ++c) sum += weights[(size_t)response * channels + c] * values[(size_t)pixel * channels + c];
    sums[(size_t)response * pixels + pixel] = sum;
}
)CL"};

}  // namespace

std::vector<std::vector<float>> weighedSumsByOpenCl(opencl::Device& device, const Film& film, const LightView& view,
                                                    const std::vector<std::vector<double>>& weights) {
    constexpr std::size_t kPortion = std::size_t{1}
                                     << 24;  // numbers that go to the device at once; a spectral picture may be large
    opencl::Run run(device, kSource);
    const std::size_t channels = film.channels.size();
    const std::size_t pixels = std::size_t(view.width) * std::size_t(view.height);
    const std::size_t step = std::max<std::size_t>(1, kPortion / channels);
    std::vector<float> flatWeights;
    for (const std::vector<double>& response : weights) flatWeights.insert(flatWeights.end(), response.begin(), response.end());
    const opencl::Buffer deviceWeights = run.copyOf(flatWeights);
    std::vector<std::vector<float>> sums(weights.size(), std::vector<float>(pixels));
    for (std::size_t first = 0; first < pixels; first += step) {
        const std::size_t count = std::min(step, pixels - first);
        const double* const begin = view.values.data() + first * channels;
        const opencl::Buffer values = run.copyOf(std::vector<float>(begin, begin + count * channels));
        const opencl::Buffer part = run.memoryFor<float>(count * weights.size());
        run.call("weighedSums", int(count), int(weights.size()), values, deviceWeights, part, int(count), int(channels));
        const std::vector<float> results = run.read<float>(part, count * weights.size());
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t x = (first + i) / std::size_t(view.height);  // a film's pixels go down the columns
            const std::size_t y = (first + i) % std::size_t(view.height);
            for (std::size_t r = 0; r < sums.size(); ++r) sums[r][y * std::size_t(view.width) + x] = results[r * count + i];
        }
    }
    return sums;
}

}  // namespace nemra::core
