#include <algorithm>
#include <clocale>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string_view>

#include "module/engine_text.h"
#include "scene/scene.h"

namespace NemraNode {

namespace {

/// Numbers of a scene are read with a decimal point, whatever the user's locale.
void pinNumericLocale() { std::setlocale(LC_NUMERIC, "en_US.UTF-8"); }

void requireSceneFile(const py::object& file) {
    if (py::hasattr(file, "write") && py::hasattr(file, "flush")) return;
    throw py::type_error("Scene::write(file): incompatible function argument:  `file` must be a file-like object, but `" +
                         std::string(py::repr(file)) + "` provided");
}

/// A BytesIO has no mode of its own; a file object without one counts as text.
bool isBinary(const py::object& file) {
    std::string mode;
    if (std::string(py::str(file.attr("__class__").attr("__name__"))) == "BytesIO") {
        mode = "b";
    } else if (py::hasattr(file, "mode")) {
        mode = py::str(file.attr("mode"));
    }
    return mode.find('b') != std::string::npos;
}

/// A text as long as the engine keeps it. Null raises std::logic_error, as the string's own constructor does.
std::string_view textOf(const char* text, std::optional<std::size_t> size = std::nullopt) {
    if (text == nullptr) throw std::logic_error("basic_string: construction from null is not valid");
    return size ? std::string_view(text, *size) : std::string_view(text);
}

}  // namespace

bool Scene::read(const std::string& path) const {
    pinNumericLocale();
    return nemraScene_readFromFile(handle, path.c_str());
}

bool Scene::readBytes(const py::bytes& data) const {
    const std::string bytes = data;
    pinNumericLocale();
    return nemraScene_readFromChar(handle, bytes.data(), static_cast<std::int32_t>(bytes.size()));
}

void Scene::write(const py::object& file, nemraScene_format format) const {
    requireSceneFile(file);
    const bool binary = isBinary(file);
    if (binary && format == SVXML)
        throw py::type_error("Can't write scene, file must be in string mode (use StringIO or with open(path, 'w' ))");
    if (!binary && format > SVXML)
        throw py::type_error("Can't write scene, file must be in binary mode (use BytesIO or with open(path, 'wb' )) )");

    std::int32_t size = 0;
    char* const data = nemraScene_writeToChar(handle, format, &size);
    if (format == SVXML) {
        Nemra::writeText(file, [&](std::ostream& out) { out << textOf(data); });
    } else {
        file.attr("write")(py::bytes(data, static_cast<std::size_t>(std::max(size, 0))));
        file.attr("seek")(0);  // so that a BytesIO reads from its start
    }
    freeCharArray(data);
}

py::str Scene::print() const {
    std::int32_t size = 0;
    const Nemra::EngineText text(nemraScene_writeToChar(handle, SVXML, &size));
    const std::string_view bytes = textOf(text.get(), static_cast<std::size_t>(std::max(size, 0)));
    return py::str(bytes.data(), bytes.size());
}

}  // namespace NemraNode
