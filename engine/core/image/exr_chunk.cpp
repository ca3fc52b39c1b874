#include "engine/core/image/exr_chunk.h"

#include <ImfChannelList.h>
#include <libdeflate.h>

#include <cstdint>
#include <memory>
#include <new>

#include "engine/core/image/exr_dwa.h"

namespace nemra::core {

namespace {

struct FreeDecompressor {
    void operator()(libdeflate_decompressor* d) const noexcept { libdeflate_free_decompressor(d); }
};

/// Bytes of those pixels, if a float has as many as `floatBytes`.
std::uint64_t bytesOf(const Imf::Header& header, const Imath::Box2i& pixels, std::uint64_t floatBytes) {
    std::uint64_t bytes = 0;
    for (auto i = header.channels().begin(); i != header.channels().end(); ++i) {
        const Imf::Channel& channel = i.channel();
        const std::uint64_t size = channel.type == Imf::HALF ? 2 : channel.type == Imf::FLOAT ? floatBytes : 4;
        bytes += size * exrMultiples(pixels.min.x, pixels.max.x, channel.xSampling) *
                 exrMultiples(pixels.min.y, pixels.max.y, channel.ySampling);
    }
    return bytes;
}

/// Runs: a count and a byte to be repeated once more than that, or minus a count and so many bytes.
std::uint64_t bytesOfRuns(std::span<const char> packed) {
    std::uint64_t bytes = 0;
    while (!packed.empty()) {
        const int count = static_cast<signed char>(packed.front());
        bytes += static_cast<std::uint64_t>(count < 0 ? -count : count + 1);
        const std::size_t taken = 1 + static_cast<std::size_t>(count < 0 ? -count : 1);
        if (taken > packed.size()) return 0;
        packed = packed.subspan(taken);
    }
    return bytes;
}

}  // namespace

std::uint64_t exrMultiples(std::int64_t first, std::int64_t last, std::int64_t step) {
    const auto below = [step](std::int64_t n) { return n >= 0 ? n / step : -((-n + step - 1) / step); };
    return static_cast<std::uint64_t>(below(last) - below(first - 1));
}

bool inflatesTo(std::uint64_t size, std::span<const char> packed) {
    const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(libdeflate_alloc_decompressor());
    if (!decompressor) throw std::bad_alloc();
    const std::unique_ptr<char[]> bytes(new char[size]);
    return libdeflate_zlib_decompress(decompressor.get(), packed.data(), packed.size(), bytes.get(), size, nullptr) ==
           LIBDEFLATE_SUCCESS;
}

bool isWholeExrChunk(const Imf::Header& header, const Imath::Box2i& pixels, std::span<const char> packed) {
    const std::uint64_t wanted = bytesOf(header, pixels, 4);
    if (packed.size() >= wanted) return packed.size() == wanted;  // what packing makes no smaller stands as it is
    switch (header.compression()) {
        case Imf::NO_COMPRESSION:
            return false;
        case Imf::RLE_COMPRESSION:
            return bytesOfRuns(packed) == wanted;
        case Imf::ZIPS_COMPRESSION:
        case Imf::ZIP_COMPRESSION:
            return inflatesTo(wanted, packed);
        case Imf::PXR24_COMPRESSION:
            return inflatesTo(bytesOf(header, pixels, 3), packed);
        case Imf::DWAA_COMPRESSION:
        case Imf::DWAB_COMPRESSION:
            return isWholeDwaChunk(header, pixels, packed);
        default:
            return !packed.empty();
    }
}

}  // namespace nemra::core
