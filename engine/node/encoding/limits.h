/// What an encoded scene may ask of its reader at most.
#pragma once

#include <cstddef>

namespace nemra::node {

constexpr int kMaxFileDepth = 256;                      ///< of nested elements
constexpr std::size_t kMaxFileBytes = 0x7fffffff;       ///< sizes cross the flat interface as 32-bit numbers
constexpr std::size_t kMaxInflatedBytes = 0x4000'0000;  ///< of the contents of a gzipped scene: 1 GiB
constexpr std::size_t kFreeInflatedBytes = 0x8'0000;    ///< 512 KiB, taken however well it is compressed
/// Of more than that, times its size in the file: scenes compress by a factor of 2 to 30, what is made to fill the memory by
/// 1000.
constexpr std::size_t kMaxGzipRatio = 100;
constexpr int kMaxWarnings = 100;  ///< of one reading; the rest is counted

}  // namespace nemra::node
