// nemraRaw*: outputs of results and their files.
#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "engine/common/guarded.h"
#include "engine/common/slot_table.h"
#include "engine/common/text.h"
#include "engine/common/workdir.h"
#include "engine/core/api/byte_sink.h"
#include "engine/core/api/raw_handle.h"
#include "engine/core/image/image_node.h"
#include "engine/core/image/picture_film.h"
#include "engine/core/image/read_exr.h"
#include "engine/core/output/icc_profile.h"
#include "engine/core/output/picture.h"
#include "engine/core/output/write_result.h"
#include "engine/core/result/read_file.h"
#include "engine/core/result/svraw.h"
#include "engine/node/svbin/svbin.h"
#include "module/flat/nemra_raw.h"

using namespace nemra;
using core::kDone;
using core::kFailed;
using core::Raw;

namespace {

template <class Body>
int writing(const char* function, nemra_raw_t* handle, const char* filename, Body&& body) {
    return guarded(function, kFailed, [&] {
        const auto raw = find<Raw>(handle);
        if (!raw) return kFailed;
        const std::string name(viewOf(filename));
        if (name.empty()) {
            log::error(function, "no file is named");
            return kFailed;
        }
        return body(*raw, resolvePath(name)) ? kDone : kFailed;
    });
}

/// A new raw for the caller, made by `body` from a name that isn't empty.
template <class Body>
nemra_raw_t* reading(const char* function, const char* filename, Body&& body) {
    return guarded<nemra_raw_t*>(function, nullptr, [&]() -> nemra_raw_t* {
        const std::string name(viewOf(filename));
        if (name.empty()) {
            log::error(function, "no file is named");
            return nullptr;
        }
        const std::string path = resolvePath(name);
        const auto bytes = core::readFileWhole(path);
        return bytes ? publish<nemra_raw_t>(body(bytes->bytes(), path)) : nullptr;
    });
}

/// The picture that the output makes; none if it makes none. Filters may change its size and outputs its colours, so only the
/// picture itself tells. What its filters have to say is for those who write it.
std::optional<core::DisplayImage> displayOf(const Raw& raw) {
    const log::Capture silence([](const log::Message&) {});
    const auto film = raw.film();
    const auto formats = core::outputFormats(raw);
    const bool isPicture =
        formats.empty() || std::any_of(formats.begin(), formats.end(), [](std::string_view format) { return format == "png"; });
    if (!isPicture || film->channels.empty()) return std::nullopt;
    return core::makeDisplayImage(raw, raw.isDraft());
}

}  // namespace

extern "C" {

nemra_raw_t* nemraRawReadSvraw(const char* filename) {
    return reading("nemraRawReadSvraw", filename,
                   [](std::span<const char> bytes, const std::string& path) { return core::readSvraw(bytes, path); });
}

nemra_raw_t* nemraRawReadOpenExr(const char* filename) {
    return reading("nemraRawReadOpenExr", filename,
                   [](std::span<const char> bytes, const std::string& path) -> std::shared_ptr<Raw> {
                       try {
                           return core::readExr(bytes, path);
                       } catch (const core::PictureFault& fault) {
                           log::error(path, fault.what());
                           return nullptr;
                       }
                   });
}

nemra_raw_t* nemraRawFromImageNode(const char* data, int64_t size) {
    return guarded<nemra_raw_t*>("nemraRawFromImageNode", nullptr, [&]() -> nemra_raw_t* {
        if (!data || size <= 0) {
            log::error("nemraRawFromImageNode", "there are no bytes to read a node from");
            return nullptr;
        }
        const auto node =
            node::readSvbinNode({data, static_cast<std::size_t>(size)}, "nemraRawFromImageNode", node::Unknown::skip);
        if (!node) return nullptr;
        if (node->family() != "image") {
            log::error("nemraRawFromImageNode", "this node isn't of the family image: " + node->label());
            return nullptr;
        }
        return publish<nemra_raw_t>(core::rawFromImage(*node));
    });
}

int nemraRawGetOutputFormatSize(nemra_raw_t* raw) {
    return guarded("nemraRawGetOutputFormatSize", 0, [&] {
        const Raw* const known = core::keptRaw(raw);
        return known ? static_cast<int>(core::outputFormats(*known).size()) : 0;
    });
}

const char* nemraRawGetOutputFormat(nemra_raw_t* raw, int index) {
    return guarded<const char*>("nemraRawGetOutputFormat", nullptr, [&]() -> const char* {
        const Raw* const known = core::keptRaw(raw);
        if (!known || index < 0) return nullptr;
        const auto formats = core::outputFormats(*known);
        return static_cast<std::size_t>(index) < formats.size() ? formats[static_cast<std::size_t>(index)] : nullptr;
    });
}

const char* nemraRawGetDefaultFormat(nemra_raw_t* raw) { return nemraRawGetOutputFormat(raw, 0); }

int nemraRawWriteResult(nemra_raw_t* raw, const char* filename, const char* format) {
    return writing("nemraRawWriteResult", raw, filename,
                   [&](const Raw& r, const std::string& path) { return core::writeResult(r, path, viewOf(format)); });
}

int nemraRawWriteRaw(nemra_raw_t* raw, const char* filename, const char* format) {
    return writing("nemraRawWriteRaw", raw, filename,
                   [&](const Raw& r, const std::string& path) { return core::writeRaw(r, path, viewOf(format)); });
}

int nemraRawWriteAuto(nemra_raw_t* raw, const char* filename) {
    return writing("nemraRawWriteAuto", raw, filename,
                   [](const Raw& r, const std::string& path) { return core::writeAuto(r, path); });
}

char* nemraRawWriteResultBytes(nemra_raw_t* raw, uint32_t* size, const char* format) {
    if (size) *size = 0;
    return guarded<char*>("nemraRawWriteResultBytes", nullptr, [&]() -> char* {
        const auto known = find<Raw>(raw);
        if (!known || !size) return nullptr;
        const auto bytes = core::encodeResult(*known, viewOf(format), "nemraRawWriteResultBytes");
        if (!bytes) return nullptr;
        if (bytes->span().size() > UINT32_MAX) {
            log::error("nemraRawWriteResultBytes", "the result is larger than 4 GiB: write it to a file");
            return nullptr;
        }
        *size = static_cast<std::uint32_t>(bytes->span().size());
        return callersBytes(bytes->span());
    });
}

bool nemraRawFilter(nemra_raw_t* raw, bool fast) {
    return guarded("nemraRawFilter", false, [&] {
        const auto known = find<Raw>(raw);
        if (!known || !known->output()) return false;
        core::makeDisplayImage(*known, fast);  // says what is wrong with the filters, if anything; writers run them again
        known->setDraft(fast);
        return true;
    });
}

bool nemraRawGetImage8bitInfo(nemra_raw_t* raw, int* width, int* height, int* stride, int* alignment) {
    return guarded("nemraRawGetImage8bitInfo", false, [&] {
        const auto known = find<Raw>(raw);
        if (!known || !width || !height || !stride || !alignment) return false;
        const auto image = displayOf(*known);
        if (!image) return false;
        constexpr int kAlignment = 4;  // rows begin at multiples of it, as toolkits of windows want them
        constexpr int kBytesPerPixel = 3;
        if (image->width > std::numeric_limits<int>::max() / kBytesPerPixel - kAlignment) return false;
        *width = image->width;
        *height = image->height;
        *stride = (kBytesPerPixel * image->width + kAlignment - 1) / kAlignment * kAlignment;
        *alignment = kAlignment;
        return true;
    });
}

int nemraRawGetImage8bitProfile(nemra_raw_t* raw, void* user, nemra_byte_sink sink) {
    return guarded("nemraRawGetImage8bitProfile", kFailed, [&] {
        const auto known = find<Raw>(raw);
        if (!known || !sink) return kFailed;
        const auto image = displayOf(*known);
        if (!image) return kFailed;
        return core::giveBytes(core::profileOf(*image), user, sink);
    });
}

}  // extern "C"
