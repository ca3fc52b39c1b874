/// Results out of nodes of the family "image".
#pragma once

#include <memory>
#include <string>

#include "engine/core/result/raw.h"
#include "engine/node/node.h"

namespace nemra::core {

/// The picture of a node of type inline, embedded or file (relative names count from workdir()): colours become channels X, Y, Z
/// in cd/m2 with 1 cd/m2 for a white of 1 (179 for Radiance pictures, as whiteLuminance says for OpenEXR), spectral pictures keep
/// their bands, and data their channels "0", "1", ... of unknown kind. Each pixel counts as one sample.
/// Null after one error message.
std::shared_ptr<Raw> rawFromImage(const node::Node& image);

/// The same for the bytes of a picture file: PNG, JPEG, OpenEXR or Radiance HDR. `colorSpace` is an option of the node's
/// parameter
/// ("auto", "linear_srgb", ..., "data"). Throws a PictureFault.
std::shared_ptr<Raw> rawFromPictureFile(std::span<const char> bytes, const std::string& origin, const std::string& colorSpace,
                                        double scale, bool flipVertically);

}  // namespace nemra::core
