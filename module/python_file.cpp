#include "module/python_file.h"

#include <ostream>

namespace Nemra {

namespace {

/// The library's buffer writes what is left in its destructor, where a Python exception would end the process. This one
/// forgets what could not be written. writeText flushes before and so reports a file's error; what stays then is at most the
/// beginning of a character that the text doesn't finish.
class FileBuffer : public py::detail::pythonbuf {
public:
    using pythonbuf::pythonbuf;
    ~FileBuffer() override { setp(pbase(), epptr()); }
};

}  // namespace

void requireFile(const py::object& file) {
    if (py::hasattr(file, "write") && py::hasattr(file, "flush")) return;
    throw py::type_error("Node::dump(file): incompatible function argument:  `file` must be a file-like object, but `" +
                         std::string(py::repr(file)) + "` provided");
}

SerialFormat formatOfMode(const py::object& file) {
    const std::string mode = py::str(file.attr("mode"));
    return mode.find('b') == std::string::npos ? SerialFormat::svxml : SerialFormat::svbin;
}

void writeText(const py::object& file, const std::function<void(std::ostream&)>& put) {
    FileBuffer buffer(file);
    std::ostream stream(&buffer);
    stream.exceptions(std::ios::badbit);  // else the stream swallows what the file's write raises
    put(stream);
    stream.flush();
}

void writeBytes(const py::object& file, const std::string& data) { file.attr("write")(py::bytes(data)); }

void dump(const py::object& file, const std::function<std::string(SerialFormat)>& payload) {
    requireFile(file);
    const SerialFormat format = formatOfMode(file);
    if (format == SerialFormat::svxml) {
        writeText(file, [&](std::ostream& out) { out << payload(format); });
    } else {
        writeBytes(file, payload(format));
    }
}

}  // namespace Nemra
