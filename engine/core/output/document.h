/// Outputs that are text: tables and reports.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/core/result/raw.h"

namespace nemra::core {

/// The text in one of the formats of the class, in small letters; none if it has no such format. Throws std::runtime_error with
/// the reason where there is nothing to write.
using MakeDocument = std::optional<std::string> (*)(const Raw& raw, const node::Node& output, std::string_view format);
/// By the type of the output.
bool addDocumentClass(std::string_view type, MakeDocument make);

/// None if the result's output isn't a document of that format.
std::optional<std::vector<char>> encodeDocument(const Raw& raw, std::string_view format);

}  // namespace nemra::core
