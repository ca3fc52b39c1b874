/// Whole files as bytes.
#pragma once

#include <string>

#include "engine/common/buffer.h"

namespace nemra::node {

/// Reads a regular file of at most 2 GiB; a relative path counts from workdir(). Empty, or why it can't be read.
std::string readFileBytes(const std::string& path, Buffer& bytes);

}  // namespace nemra::node
