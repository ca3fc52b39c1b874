#include "engine/core/output/write_result.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <exception>
#include <stdexcept>

#include "engine/common/log.h"
#include "engine/core/output/document.h"
#include "engine/core/output/encode.h"
#include "engine/core/output/final_file.h"
#include "engine/core/output/table_text.h"
#include "engine/core/output/write_file.h"
#include "engine/core/result/svraw.h"

namespace nemra::core {

namespace {

constexpr std::array<const char*, 5> kPictureFormats{"png", "jpg", "exr", "hdr", "png16"};
constexpr std::array<const char*, 1> kTableFormats{"csv"};
const bool kPictureKnown =
    outputClasses().add("rgbimage", [](const node::Node&) { return std::span<const char* const>(kPictureFormats); });
const bool kTableKnown =
    outputClasses().add("table", [](const node::Node&) { return std::span<const char* const>(kTableFormats); });
constexpr std::array<const char*, 4> kRawFormats{"svraw", "csv", "exr", "hdr"};

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

/// The name by which a format goes here.
std::string formatNamed(std::string_view wanted) {
    std::string format = lower(wanted);
    return format == "jpeg" ? "jpg" : format;
}

template <class Formats>
bool isAmong(const Formats& formats, std::string_view format) {
    return std::any_of(formats.begin(), formats.end(), [&](const char* known) { return format == known; });
}

void refuse(const std::string& source, const std::string& format, const char* what) {
    if (format.empty()) {
        log::error(source, "the name has no extension that would tell the format");
    } else {
        log::error(source, std::string(what) + format);
    }
}

Bytes adopt(std::vector<char> bytes) { return Bytes(std::move(bytes)); }

Bytes document(const Raw& raw, std::string_view format) {
    auto text = encodeDocument(raw, format);
    if (!text) throw std::runtime_error("the output is no report");
    return adopt(std::move(*text));
}

using Encode = Bytes (*)(const Raw& raw);

/// What becomes of the output in a format that pictures or tables are written in; null for an unknown one.
Encode resultEncoder(std::string_view format) {
    if (format == "png") return [](const Raw& raw) { return adopt(encodePng(makeDisplayImage(raw, raw.isDraft()))); };
    if (format == "png16") return [](const Raw& raw) { return adopt(encodePng(makeDisplayImage(raw, raw.isDraft(), 16))); };
    if (format == "jpg") return [](const Raw& raw) { return adopt(encodeJpeg(makeDisplayImage(raw, raw.isDraft()))); };
    if (format == "exr") return [](const Raw& raw) { return adopt(encodeExr(raw, ExrColors::rgb)); };
    if (format == "hdr") return [](const Raw& raw) { return adopt(encodeHdr(raw)); };
    if (format == "txt") return [](const Raw& raw) { return document(raw, "txt"); };
    if (format == "html") return [](const Raw& raw) { return document(raw, "html"); };
    if (format == "xml") return [](const Raw& raw) { return document(raw, "xml"); };
    if (format == "csv") {
        return [](const Raw& raw) {
            if (auto text = encodeDocument(raw, "csv")) return adopt(std::move(*text));
            const auto output = raw.output();
            return Bytes(writeTable(raw, output && output->type() == "table" ? tableLayoutOf(*output) : TableLayout{}));
        };
    }
    return nullptr;
}

/// The sensor's channels, without any output; all raw formats but svraw.
Encode rawEncoder(std::string_view format) {
    if (format == "exr") return [](const Raw& raw) { return adopt(encodeExr(raw, ExrColors::xyz)); };
    if (format == "hdr") return [](const Raw& raw) { return adopt(encodeHdr(raw)); };
    if (format == "csv") {
        return [](const Raw& raw) { return Bytes(writeTable(raw, {.withSampling = raw.spp() > 1.0})); };
    }
    return nullptr;
}

std::optional<Bytes> encode(Encode encoder, const Raw& raw, const std::string& format, const std::string& source) {
    try {
        if (raw.film()->channels.empty()) throw std::runtime_error("the result has no channels");
        return encoder(raw);
    } catch (const std::exception& e) {
        log::error(source, "can't make the " + format + ": " + e.what());
        return std::nullopt;
    }
}

/// As it is made: it may be larger than the memory that is left.
bool writeSvrawFile(const Raw& raw, const std::string& path) {
    NewFile file(path);
    try {
        writeSvraw(raw, [&](std::span<const char> bytes) { return file.append(bytes); });
    } catch (const std::exception& e) {
        log::error(path, std::string("can't make the svraw: ") + e.what());
        return false;
    }
    return file.finish();
}

bool write(Encode encoder, const Raw& raw, const std::string& format, const std::string& path) {
    const auto bytes = encode(encoder, raw, format, path);
    return bytes && writeFileWhole(path, bytes->span());
}

}  // namespace

ClassTable<OutputFormats>& outputClasses() {
    static ClassTable<OutputFormats> table("output");
    return table;
}

std::span<const char* const> outputFormats(const node::Node& output) {
    const OutputFormats formats = outputClasses().find(output.type());
    return formats ? formats(output) : std::span<const char* const>();
}

std::span<const char* const> outputFormats(const Raw& raw) {
    const auto output = raw.output();
    return output ? outputFormats(*output) : std::span<const char* const>();
}

std::string formatOf(const std::string& path) { return formatNamed(extensionOf(path)); }

bool isResultFormat(std::string_view format) { return resultEncoder(format) != nullptr; }

bool isRawFormat(std::string_view format) { return isAmong(kRawFormats, format); }

// An output that nothing is known of has no list; a picture of it is made all the same.
bool isOffered(std::span<const char* const> offered, std::string_view format) {
    return isResultFormat(format) && (offered.empty() || isAmong(offered, format));
}

std::optional<Bytes> encodeResult(const Raw& raw, std::string_view wanted, const std::string& source) {
    const std::string format = formatNamed(wanted);
    const Encode encoder = resultEncoder(format);
    if (!isOffered(outputFormats(raw), format)) {
        refuse(source, format, encoder || isRawFormat(format) ? "this output isn't written in the format " : "unknown format: ");
        return std::nullopt;
    }
    return encode(encoder, raw, format, source);
}

bool writeResult(const Raw& raw, const std::string& path, std::string_view format) {
    const auto bytes = encodeResult(raw, format, path);
    return bytes && writeFileWhole(path, bytes->span());
}

bool writeRaw(const Raw& raw, const std::string& path, std::string_view wanted) {
    const std::string format = formatNamed(wanted);
    if (format == "svraw") return writeSvrawFile(raw, path);
    if (const Encode encoder = rawEncoder(format)) return write(encoder, raw, format, path);
    refuse(path, format, resultEncoder(format) ? "results aren't written as they are in the format " : "unknown format: ");
    return false;
}

namespace {

/// By an extension alone: the output's own formats come first.
bool goesAsItIs(const Raw& raw, std::string_view format) { return isRawFormat(format) && !isAmong(outputFormats(raw), format); }

}  // namespace

bool writeAuto(const Raw& raw, const std::string& path) {
    const std::string format = formatOf(path);
    return goesAsItIs(raw, format) ? writeRaw(raw, path, format) : writeResult(raw, path, format);
}

bool writeFinal(const Raw& raw, const std::string& path, bool asRaw) {
    const auto output = raw.output();
    const FinalFile file = finalFile(path, asRaw, output.get());
    if (!file.warning.empty()) log::warning(path, file.warning);
    const std::string format = formatOf(file.path);
    const bool isPlain = asRaw || goesAsItIs(raw, format);
    if (isPlain && format == "svraw") return writeSvrawFile(raw, file.path);
    const auto bytes = isPlain ? encode(rawEncoder(format), raw, format, file.path) : encodeResult(raw, format, file.path);
    if (bytes) return writeFileWhole(file.path, bytes->span());
    const std::string kept = file.path + ".svraw";
    if (writeSvrawFile(raw, kept)) log::warning(file.path, "the result is kept as it is in " + kept);
    return false;
}

}  // namespace nemra::core
