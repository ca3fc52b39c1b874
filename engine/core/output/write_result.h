/// Writing results to files in the formats that there are.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "engine/common/buffer.h"
#include "engine/core/result/raw.h"
#include "engine/core/translate/class_table.h"

namespace nemra::core {

/// The formats in which an output of a class of that family can be written, the default one first.
using OutputFormats = std::span<const char* const> (*)(const node::Node& output);
ClassTable<OutputFormats>& outputClasses();

/// Formats that an output can be written in, the default one first; none for a class that nothing is known of.
std::span<const char* const> outputFormats(const node::Node& output);
std::span<const char* const> outputFormats(const Raw& raw);

/// The format that a name's extension stands for, in small letters; "" for a name without one. Maybe one that nobody knows.
std::string formatOf(const std::string& path);
/// Is there an encoder for some output, or for results as they are?
bool isResultFormat(std::string_view format);
bool isRawFormat(std::string_view format);
/// Is an output with these formats written in that one?
bool isOffered(std::span<const char* const> offered, std::string_view format);

/// A file in memory, from whichever container its encoder fills.
class Bytes {
public:
    explicit Bytes(std::vector<char> bytes) : bytes_(std::move(bytes)) {}
    explicit Bytes(Buffer bytes) : bytes_(std::move(bytes)) {}
    std::span<const char> span() const noexcept {
        if (const auto* const buffer = std::get_if<Buffer>(&bytes_)) return buffer->bytes();
        return std::get<std::vector<char>>(bytes_);
    }

private:
    std::variant<std::vector<char>, Buffer> bytes_;
};

/// The bytes of the processed result; none, with one error message, for an unknown format, one that the output isn't written in,
/// or a failure.
std::optional<Bytes> encodeResult(const Raw& raw, std::string_view format, const std::string& source);

/// These write whole files (see write_file.h). File names are absolute. False after one error message.
bool writeResult(const Raw& raw, const std::string& path, std::string_view format);
/// The sensor's channels as they are: formats svraw, csv, exr, hdr.
bool writeRaw(const Raw& raw, const std::string& path, std::string_view format);
/// Takes the format from the extension: one of the output's formats, else one of those of writeRaw.
bool writeAuto(const Raw& raw, const std::string& path);
/// The last result of a render, by the extension of its finalFile. What can't be encoded so is kept as svraw, and still false.
bool writeFinal(const Raw& raw, const std::string& path, bool asRaw);

}  // namespace nemra::core
