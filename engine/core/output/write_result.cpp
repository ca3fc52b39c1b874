#include "engine/core/output/write_result.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <exception>

#include "engine/common/log.h"
#include "engine/core/output/document.h"
#include "engine/core/output/encode.h"
#include "engine/core/output/write_file.h"

namespace nemra::core {

namespace {

constexpr std::array<const char*, 2> kPictureFormats{"png", "exr"};
const bool kPictureKnown = outputClasses().add("rgbimage", [] { return std::span<const char* const>(kPictureFormats); });
constexpr std::array<std::string_view, 7> kLaterFormats{"jpg", "jpeg", "hdr", "csv", "txt", "html", "svraw"};

std::string lower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

/// Without the dot, in small letters; empty for a name without one.
std::string extensionOf(const std::string& path) {
    const auto slash = path.rfind('/');
    const auto name = slash == std::string::npos ? 0 : slash + 1;
    const auto dot = path.rfind('.');
    if (dot == std::string::npos || dot < name || dot == name) return "";
    return lower(std::string_view(path).substr(dot + 1));
}

void refuse(const std::string& source, const std::string& format) {
    if (format.empty()) {
        log::error(source, "the name has no extension that would tell the format");
    } else if (std::find(kLaterFormats.begin(), kLaterFormats.end(), format) != kLaterFormats.end()) {
        log::error(source, "format not available yet: " + format);
    } else {
        log::error(source, "unknown format: " + format);
    }
}

bool write(const Raw& raw, const std::string& path, std::string_view format) {
    const auto bytes = encodeResult(raw, format, path);
    return bytes && writeFileWhole(path, *bytes);
}

}  // namespace

ClassTable<OutputFormats>& outputClasses() {
    static ClassTable<OutputFormats> table("output");
    return table;
}

std::span<const char* const> outputFormats(const Raw& raw) {
    const auto output = raw.output();
    const OutputFormats formats = output ? outputClasses().find(output->type()) : nullptr;
    return formats ? formats() : std::span<const char* const>();
}

std::optional<std::vector<char>> encodeResult(const Raw& raw, std::string_view wanted, const std::string& source) {
    const std::string format = lower(wanted);
    try {
        if (auto document = encodeDocument(raw, format)) return document;
        if (format == "png") return encodePng(makeDisplayImage(raw, raw.isDraft()));
        if (format == "exr") return encodeExr(raw);
    } catch (const std::exception& e) {
        log::error(source, "can't make the " + format + ": " + e.what());
        return std::nullopt;
    }
    refuse(source, format);
    return std::nullopt;
}

bool writeResult(const Raw& raw, const std::string& path, std::string_view format) { return write(raw, path, format); }

bool writeRaw(const Raw& raw, const std::string& path, std::string_view format) {
    if (lower(format) == "exr") return write(raw, path, "exr");
    refuse(path, lower(format));
    return false;
}

bool writeAuto(const Raw& raw, const std::string& path) { return write(raw, path, extensionOf(path)); }

bool writeFinal(const Raw& raw, const std::string& path, bool asRaw) {
    std::string name = path;
    std::string extension = extensionOf(path);
    if (extension == "auto") name.resize(name.size() - std::string_view(".auto").size());
    if (extension.empty() || extension == "auto") {
        extension = asRaw ? "exr" : outputFormats(raw).empty() ? "exr" : outputFormats(raw).front();
        name += "." + extension;
    }
    return asRaw ? writeRaw(raw, name, extension) : write(raw, name, extension);
}

}  // namespace nemra::core
