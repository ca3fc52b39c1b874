/// What the writer and the reader of svraw agree on.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace nemra::core::svraw {

/// A chunk: tag, codec (32 bits), size of the payload (64 bits), payload, CRC-32 of all these. Little-endian.
inline constexpr std::size_t kChunkHead = 16;
inline constexpr std::size_t kChunkTail = 4;
inline constexpr std::size_t kFileHead = 12;  ///< magic bytes and version

/// A reader may skip a chunk that it doesn't know if the tag begins with a small letter.
inline constexpr std::string_view kInfo = "INFO";
inline constexpr std::string_view kChannels = "CHAN";
inline constexpr std::string_view kInstrument = "INST";
inline constexpr std::string_view kOutput = "OUTP";
inline constexpr std::string_view kProgress = "prog";
inline constexpr std::string_view kAdaptive = "adap";
inline constexpr std::string_view kEnd = "END ";

/// The arrays of a film, in the order of the file; each is cut into blocks, one chunk each.
inline constexpr std::string_view kHigh = "HIGH";
inline constexpr std::string_view kLow = "LOWS";
inline constexpr std::string_view kSamples = "SAMP";
inline constexpr std::string_view kSquares = "SQUA";  ///< of earlier files: one double for each pixel
inline constexpr std::string_view kSquaresUpper = "SQUU";
inline constexpr std::string_view kSquaresLower = "SQUL";
inline constexpr std::string_view kSquaresPart = "SQUP";
inline constexpr std::string_view kDepth = "DEPT";
inline constexpr std::string_view kDepthSamples = "HITS";
inline constexpr std::string_view kOffAxis = "AXIS";
inline constexpr std::size_t kBlockBytes = std::size_t{1} << 22;

enum class Codec : std::uint32_t {
    stored = 0,
    /// The first bytes of all numbers, then the second ones, and so on; deflated (RFC 1951). Zeros may follow the stream.
    /// Version 1 has these; what is written now hasn't.
    shuffledDeflate = 1,
    packed = 2  ///< see pack_numbers.h; zeros may follow
};
/// A packed block is filled up with zeros to that part of its contents, so that a reader can bound what a file unfolds to.
inline constexpr std::size_t kLargestRatio = 128;

inline constexpr std::uint32_t kFlagSnr = 1;
inline constexpr std::uint32_t kFlagDraft = 2;

/// Whether a film has that array, and how many numbers it has per pixel: none of the sums once the channels were removed.
struct Shape {
    std::size_t pixels;
    std::size_t channels;

    std::size_t cells() const noexcept { return pixels * channels; }
    std::size_t ifChannels() const noexcept { return channels > 0 ? pixels : 0; }
};

}  // namespace nemra::core::svraw
