/// Pictures out of the bytes of their files.
#pragma once

#include <span>

#include "engine/core/image/picture_film.h"

namespace nemra::core {

bool isPng(std::span<const char> bytes) noexcept;
bool isJpeg(std::span<const char> bytes) noexcept;
bool isHdr(std::span<const char> bytes) noexcept;
bool isExr(std::span<const char> bytes) noexcept;

// Rows from the top. All throw a PictureFault for what is damaged, cut short or larger than checkPictureSize bears, or
// std::bad_alloc.

/// 1 to 4 channels: grey or colour, with an alpha or without; palettes and 1 to 16 bits become code values in [0, 1].
Pixels decodePng(std::span<const char> bytes);
/// 1 or 3 channels, code values in [0, 1].
Pixels decodeJpeg(std::span<const char> bytes);
/// Radiance picture: 3 channels, linear, exposure undone; luminanceOfWhite is 179 cd/m2. The primaries of the format where the
/// file names no others. Only the usual orientation (-Y +X) and RGBE, not XYZE.
Pixels decodeHdr(std::span<const char> bytes);

}  // namespace nemra::core
