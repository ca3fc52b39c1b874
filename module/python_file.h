/// Writing a scene object to a Python file object.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>

#include "module/binding.h"

namespace Nemra {

/// Formats of the engine's serializers.
enum class SerialFormat : int { svxml = 0, svbin = 1 };

/// Throws the binding library's type_error unless `file` has `write` and `flush`.
void requireFile(const py::object& file);

/// svbin if the text of file.mode holds the letter b, else svxml. A file without `mode` raises its own AttributeError.
SerialFormat formatOfMode(const py::object& file);

/// Writes text through the file's `write` in pieces, each followed by `flush`. What these raise passes on. The file is opened
/// first, then `put` writes into it.
void writeText(const py::object& file, const std::function<void(std::ostream&)>& put);

/// Writes all bytes in one call of the file's `write`. What it raises passes on.
void writeBytes(const py::object& file, const std::string& data);

/// All of `write(file)` of nodes, geometries and instances: checks, choice of the format, payload, writing.
/// `payload` gives the text or bytes of a format, or the "was deleted" text.
void dump(const py::object& file, const std::function<std::string(SerialFormat)>& payload);

}  // namespace Nemra
