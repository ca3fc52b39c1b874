#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "module/owned_array.h"
#include "results/raw.h"

namespace Nemra {

namespace {

/// Number of floats of a (width, height, channel) array. The product has to fit a signed 32-bit number: one that doesn't counts
/// as memory exhausted, as does a negative one.
std::size_t elementCount(int width, int height, int channels) {
    std::int64_t count = 0;
    std::int64_t rows = static_cast<std::int64_t>(width) * height;
    if (__builtin_mul_overflow(rows, static_cast<std::int64_t>(channels), &count) || count < 0 ||
        count > std::numeric_limits<std::int32_t>::max())
        throw std::bad_array_new_length();
    return static_cast<std::size_t>(count);
}

}  // namespace

py::array NemraRaw::pixels(Quantity quantity) const {
    const int w = width();
    const int h = height();
    const int c = channelCount();
    std::unique_ptr<float[]> values(new float[elementCount(w, h, c)]);

    // The engine answers one sample at a time. Its memory order is x, then y, then channel, as here, so that both sides walk
    // forward.
    nemra_raw_t* const raw = handle;
    float* next = values.get();
    for (int x = 0; x < w; ++x)
        for (int y = 0; y < h; ++y)
            for (int channel = 0; channel < c; ++channel)
                *next++ = static_cast<float>(nemraRawGetLightQuantity(raw, channel, x, y, quantity));

    return ownedArray(std::move(values), {w, h, c});
}

py::array NemraRaw::metaPixels(const std::string& name) const {
    if (name == "snr") nemraRawGenerateSNR(handle);
    if (!hasMetaChannel(name)) {
        py::print(name,
                  "is not computed nor a valid channel.\n"
                  " Valid channels are: \"variance\",\"spp\",\"snr\",\"depth\"");
        return py::array_t<float>(0);
    }
    const int w = width();
    const int h = height();
    const int index = channelIndex(name);
    std::vector<float> values;
    for (int x = 0; x < w; ++x)
        for (int y = 0; y < h; ++y)
            values.push_back(static_cast<float>(nemraRawGetLightQuantity(handle, index, x, y, Quantity::Raw)));
    // A height of 0 stands for a square: the array is then numpy's own, and is cleared since no sample belongs to it.
    const int columns = h == 0 ? w : h;
    const bool sampled = !values.empty();
    auto array = ownedArray(std::move(values), {w, columns});
    if (!sampled) std::fill_n(array.mutable_data(), array.size(), 0.0f);
    return array;
}

}  // namespace Nemra
