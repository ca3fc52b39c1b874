// nemraRaw*: outputs of results and their files.
#include <algorithm>
#include <memory>
#include <string>

#include "engine/common/guarded.h"
#include "engine/common/slot_table.h"
#include "engine/common/text.h"
#include "engine/common/workdir.h"
#include "engine/core/api/raw_handle.h"
#include "engine/core/output/picture.h"
#include "engine/core/output/write_result.h"
#include "module/flat/nemra_raw.h"

using namespace nemra;
using core::Raw;

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;

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

template <class Result>
Result notYet(const char* function, Result empty) {
    return guarded(function, empty, [&] {
        log::warning(function, "not available yet");
        return empty;
    });
}

}  // namespace

extern "C" {

nemra_raw_t* nemraRawReadSvraw(const char*) { return notYet<nemra_raw_t*>("nemraRawReadSvraw", nullptr); }
nemra_raw_t* nemraRawReadOpenExr(const char*) { return notYet<nemra_raw_t*>("nemraRawReadOpenExr", nullptr); }
nemra_raw_t* nemraRawFromImageNode(const char*, int64_t) { return notYet<nemra_raw_t*>("nemraRawFromImageNode", nullptr); }

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

int nemraRawImportOutput(nemra_raw_t* raw, nemra_raw_t* other, const char* output_name) {
    return guarded("nemraRawImportOutput", kFailed, [&] {
        const auto target = find<Raw>(raw);
        const auto source = find<Raw>(other);
        if (!target || !source) return kFailed;
        const std::string_view name = viewOf(output_name);
        auto found = source->output();
        if (!found || found->name() != name) {
            const auto& presets = source->outputs();
            const auto preset =
                std::find_if(presets.begin(), presets.end(), [&](const auto& node) { return node->name() == name; });
            if (preset == presets.end()) {
                log::error("nemraRawImportOutput", "there is no output \"" + std::string(name) + "\"");
                return kFailed;
            }
            found = *preset;
        }
        target->setOutput(std::move(found));
        return kDone;
    });
}

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
        if (bytes->size() > UINT32_MAX) {
            log::error("nemraRawWriteResultBytes", "the result is larger than 4 GiB: write it to a file");
            return nullptr;
        }
        *size = static_cast<std::uint32_t>(bytes->size());
        return callersBytes(*bytes);
    });
}

int nemraRawGetInstrument(nemra_raw_t*, void*, nemra_byte_sink) { return notYet("nemraRawGetInstrument", kFailed); }
int nemraRawGetOutput(nemra_raw_t*, void*, nemra_byte_sink) { return notYet("nemraRawGetOutput", kFailed); }
bool nemraRawSetInstrument(nemra_raw_t*, const char*, int) { return notYet("nemraRawSetInstrument", false); }
bool nemraRawSetOutput(nemra_raw_t*, const char*, int) { return notYet("nemraRawSetOutput", false); }

bool nemraRawFilter(nemra_raw_t* raw, bool fast) {
    return guarded("nemraRawFilter", false, [&] {
        const auto known = find<Raw>(raw);
        if (!known || !known->output()) return false;
        core::makeDisplayImage(*known, fast);  // says what is wrong with the filters, if anything; writers run them again
        known->setDraft(fast);
        return true;
    });
}

bool nemraRawGetImage8bitInfo(nemra_raw_t*, int*, int*, int*, int*) { return notYet("nemraRawGetImage8bitInfo", false); }
int nemraRawGetImage8bitProfile(nemra_raw_t*, void*, nemra_byte_sink) { return notYet("nemraRawGetImage8bitProfile", kFailed); }

}  // extern "C"
