#include "engine/node/encoding/gzip.h"

#include <libdeflate.h>

#include <memory>
#include <new>
#include <stdexcept>

#include "engine/node/encoding/limits.h"

namespace nemra::node {

namespace {

constexpr int kLevel = 6;
constexpr std::size_t kLeastMember = 18;  // header and trailer
constexpr std::size_t kAlwaysTaken = std::size_t{64} << 20;
constexpr std::size_t kMaxRatio = 200;

struct FreeCompressor {
    void operator()(libdeflate_compressor* it) const noexcept { libdeflate_free_compressor(it); }
};
struct FreeDecompressor {
    void operator()(libdeflate_decompressor* it) const noexcept { libdeflate_free_decompressor(it); }
};

/// The last four bytes of a member: the size of its contents, modulo 2^32.
std::size_t statedSize(std::span<const char> bytes) noexcept {
    std::size_t size = 0;
    for (std::size_t i = 0; i < 4; ++i) size |= std::size_t{static_cast<unsigned char>(bytes[bytes.size() - 4 + i])} << (8 * i);
    return size;
}

}  // namespace

Buffer gzip(std::span<const char> bytes) {
    if (bytes.size() > kMaxInflatedBytes)
        throw std::length_error("more than 1 GiB can't be gzipped: no reader would take it back");
    const std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor(libdeflate_alloc_compressor(kLevel));
    if (!compressor) throw std::bad_alloc();
    Buffer out;
    const std::size_t bound = libdeflate_gzip_compress_bound(compressor.get(), bytes.size());
    const std::size_t size = libdeflate_gzip_compress(compressor.get(), bytes.data(), bytes.size(), out.room(bound), bound);
    if (size == 0) throw std::logic_error("gzip found its own bound too small");
    out.grow(size);
    return out;
}

bool isGzip(std::span<const char> bytes) noexcept { return bytes.size() >= 2 && bytes[0] == '\x1f' && bytes[1] == '\x8b'; }

bool gunzip(std::span<const char> bytes, Buffer& out, std::string& why) {
    const auto refuse = [&](std::string reason) {
        why = std::move(reason);
        return false;
    };
    if (bytes.size() < kLeastMember) return refuse("the gzip data is cut off at byte " + std::to_string(bytes.size()));
    const std::size_t stated = statedSize(bytes);
    if (stated > kMaxInflatedBytes)
        return refuse("the gzip data would inflate to " + std::to_string(stated) + " bytes, more than 1 GiB");
    if (stated > kAlwaysTaken && stated / kMaxRatio > bytes.size())
        return refuse("the gzip data would inflate to " + std::to_string(stated / bytes.size()) +
                      " times its size, which no scene does");
    const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(libdeflate_alloc_decompressor());
    if (!decompressor) throw std::bad_alloc();
    std::size_t used = 0;
    std::size_t size = 0;
    const auto result =
        libdeflate_gzip_decompress_ex(decompressor.get(), bytes.data(), bytes.size(), out.room(stated), stated, &used, &size);
    if (result == LIBDEFLATE_INSUFFICIENT_SPACE)
        return refuse("the gzip data inflates to more than the " + std::to_string(stated) + " bytes that its end says");
    if (result != LIBDEFLATE_SUCCESS)
        return refuse("the gzip data is damaged or cut off at byte " + std::to_string(bytes.size()));
    if (used != bytes.size()) return refuse("the gzip data ends at byte " + std::to_string(used) + ", but something follows");
    out.grow(size);
    return true;
}

}  // namespace nemra::node
