/// svxml, the encoding of scenes for people: indented XML in a stable order, with every parameter that isn't at its default.
/// docs/formats.md describes it. Nothing here depends on the process's locale.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "engine/node/scene.h"

namespace nemra::node {

// Reading. `origin` names the source in messages. What is unknown among elements and attributes is skipped with a warning; broken
// input, unknown classes and unknown parameters give one error message with the place, and false or null.
NEMRA_API bool readSvxml(std::span<const char> text, std::string_view origin, Scene& scene);
NEMRA_API std::shared_ptr<Node> readSvxmlNode(std::span<const char> text, std::string_view origin);
NEMRA_API std::shared_ptr<Geometry> readSvxmlGeometry(std::span<const char> text, std::string_view origin);
NEMRA_API std::shared_ptr<Instance> readSvxmlInstance(std::span<const char> text, std::string_view origin);

// Writing. Throws std::length_error for what no reader would take back: nodes nested too deep, a text above 2 GiB.
NEMRA_API std::string writeSvxml(const Scene& scene);
NEMRA_API std::string writeSvxml(const Node& node);
NEMRA_API std::string writeSvxml(const Geometry& geometry);
NEMRA_API std::string writeSvxml(const Instance& instance);

}  // namespace nemra::node
