/// svbin, the encoding of scenes for machines: FlatBuffers, with arrays that need no conversion. scene.fbs is its layout,
/// docs/formats.md describes it. It holds what svxml holds.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "engine/common/buffer.h"
#include "engine/node/encoding/report.h"
#include "engine/node/scene.h"

namespace nemra::node {

/// Version of the form that is written; readers take this one and earlier ones.
inline constexpr int kSvbinVersion = 1;
/// Bytes 4 to 7 of a file.
inline constexpr std::string_view kSvbinIdentifier = "SVB1";

// Reading. `origin` names the source in messages, which say the byte at which the damaged part begins. No length in the file is
// trusted, and memory stays within a multiple of the file: 1 for arrays, 100 for cells of tables and for nodes. Unknown classes
// and parameters are treated as `unknown` says; broken input gives one error message, and false or null.
NEMRA_API bool readSvbin(std::span<const char> bytes, std::string_view origin, Scene& scene, Unknown unknown = Unknown::refuse);
NEMRA_API std::shared_ptr<Node> readSvbinNode(std::span<const char> bytes, std::string_view origin,
                                              Unknown unknown = Unknown::refuse);
NEMRA_API std::shared_ptr<Geometry> readSvbinGeometry(std::span<const char> bytes, std::string_view origin,
                                                      Unknown unknown = Unknown::refuse);
NEMRA_API std::shared_ptr<Instance> readSvbinInstance(std::span<const char> bytes, std::string_view origin,
                                                      Unknown unknown = Unknown::refuse);

// Writing. Throws std::length_error for what no reader would take back: nodes nested too deep, more than 2 GiB.
NEMRA_API Buffer writeSvbin(const Scene& scene);
NEMRA_API Buffer writeSvbin(const Node& node);
NEMRA_API Buffer writeSvbin(const Geometry& geometry);
NEMRA_API Buffer writeSvbin(const Instance& instance);

}  // namespace nemra::node
