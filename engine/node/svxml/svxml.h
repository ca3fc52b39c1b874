/// svxml, the encoding of scenes for people: indented XML in a stable order, with every parameter that isn't at its default.
/// docs/formats.md describes it. Nothing here depends on the process's locale.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string_view>

#include "engine/common/buffer.h"
#include "engine/node/encoding/report.h"
#include "engine/node/scene.h"

namespace nemra::node {

/// Version of the form that is written; readers take this one and earlier ones.
inline constexpr int kSvxmlVersion = 1;

// Reading. `origin` names the source in messages. What is unknown among elements and attributes is skipped with a warning;
// unknown classes and parameters as `unknown` says. Broken input gives one error message with the place, and false or null.
NEMRA_API bool readSvxml(std::span<const char> text, std::string_view origin, Scene& scene, Unknown unknown = Unknown::refuse);
/// Gives the memory of the text back while reading, so that a text and what it says are never there at once.
NEMRA_API bool readSvxml(Buffer text, std::string_view origin, Scene& scene, Unknown unknown = Unknown::refuse);
NEMRA_API std::shared_ptr<Node> readSvxmlNode(std::span<const char> text, std::string_view origin,
                                              Unknown unknown = Unknown::refuse);
NEMRA_API std::shared_ptr<Geometry> readSvxmlGeometry(std::span<const char> text, std::string_view origin,
                                                      Unknown unknown = Unknown::refuse);
NEMRA_API std::shared_ptr<Instance> readSvxmlInstance(std::span<const char> text, std::string_view origin,
                                                      Unknown unknown = Unknown::refuse);

/// Takes a piece of a text, which it mustn't keep.
using HandOut = std::function<void(std::span<const char>)>;

// Writing. With `handOut`, a large text goes there piece by piece, and only its end comes back. Throws std::length_error for what
// no reader would take back: nodes nested too deep, a text above 2 GiB.
NEMRA_API Buffer writeSvxml(const Scene& scene, HandOut handOut = {});
NEMRA_API Buffer writeSvxml(const Node& node, HandOut handOut = {});
NEMRA_API Buffer writeSvxml(const Geometry& geometry, HandOut handOut = {});
NEMRA_API Buffer writeSvxml(const Instance& instance, HandOut handOut = {});

}  // namespace nemra::node
