/// What svxml may ask of its reader at most.
#pragma once

#include <cstddef>

namespace nemra::node::svxml {

constexpr int kVersion = 1;                    ///< of the form that is written; readers take this one and earlier ones
constexpr int kMaxDepth = 256;                 ///< of nested elements
constexpr std::size_t kMaxBytes = 0x7fffffff;  ///< of a text: sizes cross the flat interface as 32-bit numbers
constexpr int kMaxWarnings = 100;              ///< of one reading; the rest is counted

}  // namespace nemra::node::svxml
