/// Results as they were measured, as text.
#pragma once

#include "engine/common/buffer.h"
#include "engine/core/result/raw.h"

namespace nemra::core {

/// CSV (RFC 4180, but for lines that end by a line feed), UTF-8, the same in every locale: a header with units in brackets, then
/// one row for each pixel, x and y counted from the top left. Numbers are as short as they can be and still read back as the same
/// 32-bit number. Where there is more than one sample per pixel, also their number and the standard error of what stands for a
/// pixel.
Buffer writeRawCsv(const Raw& raw);

}  // namespace nemra::core
