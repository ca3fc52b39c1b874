/// What an encoded scene may ask of its reader at most.
#pragma once

#include <cstddef>

namespace nemra::node {

constexpr int kMaxFileDepth = 256;                      ///< of nested elements
constexpr std::size_t kMaxFileBytes = 0x7fffffff;       ///< sizes cross the flat interface as 32-bit numbers
constexpr std::size_t kMaxInflatedBytes = 0x4000'0000;  ///< of the contents of a gzipped scene: 1 GiB
constexpr int kMaxWarnings = 100;                       ///< of one reading; the rest is counted

}  // namespace nemra::node
