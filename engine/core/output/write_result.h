/// Writing results to files in the formats that there are.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/core/result/raw.h"
#include "engine/core/translate/class_table.h"

namespace nemra::core {

/// The formats in which a class of the family "output" can be written, the default one first.
using OutputFormats = std::span<const char* const> (*)();
ClassTable<OutputFormats>& outputClasses();

/// Formats that an output can be written in, the default one first.
std::span<const char* const> outputFormats(const Raw& raw);

/// The bytes of the processed result; none, with one error message, for an unknown format or a failure.
std::optional<std::vector<char>> encodeResult(const Raw& raw, std::string_view format, const std::string& source);

/// These write whole files (see write_file.h). File names are absolute. False after one error message.
bool writeResult(const Raw& raw, const std::string& path, std::string_view format);
/// The sensor's channels as they are: format exr.
bool writeRaw(const Raw& raw, const std::string& path, std::string_view format);
/// Takes the format from the extension.
bool writeAuto(const Raw& raw, const std::string& path);
/// The last result of a render: by the extension; without one, or with ".auto", in the default format and with its extension.
bool writeFinal(const Raw& raw, const std::string& path, bool asRaw);

}  // namespace nemra::core
