// nemraRaw*: the instrument and the output that a result carries, as svbin bytes.
#include <algorithm>
#include <memory>
#include <span>
#include <string>

#include "engine/common/guarded.h"
#include "engine/common/slot_table.h"
#include "engine/common/text.h"
#include "engine/core/api/byte_sink.h"
#include "engine/core/api/raw_handle.h"
#include "engine/node/svbin/svbin.h"
#include "module/flat/nemra_raw.h"

using namespace nemra;
using core::Raw;
using NodePointer = std::shared_ptr<const node::Node>;

namespace {

int give(const char* function, nemra_raw_t* handle, void* user, nemra_byte_sink sink, NodePointer (Raw::*get)() const) {
    return guarded(function, core::kFailed, [&] {
        const auto raw = find<Raw>(handle);
        const NodePointer node = raw ? (*raw.*get)() : nullptr;
        if (!node || !sink) return core::kFailed;
        return core::giveBytes(node::writeSvbin(*node).bytes(), user, sink);
    });
}

/// Null after one error message.
NodePointer take(const char* function, const char* data, int size, std::string_view family) {
    if (!data || size <= 0) {
        log::error(function, "there are no bytes to read a node from");
        return nullptr;
    }
    // What a later version has added is skipped with warnings: a result is worth more than a part of its output.
    NodePointer node = node::readSvbinNode({data, static_cast<std::size_t>(size)}, function, node::Unknown::skip);
    if (node && node->family() != family) {
        log::error(function, "this node isn't of the family " + std::string(family) + ": " + node->label());
        return nullptr;
    }
    return node;
}

bool replace(const char* function, nemra_raw_t* handle, const char* data, int size, std::string_view family,
             void (Raw::*set)(NodePointer)) {
    return guarded(function, false, [&] {
        const auto raw = find<Raw>(handle);
        if (!raw) return false;
        NodePointer node = take(function, data, size, family);
        if (!node) return false;
        (*raw.*set)(std::move(node));
        return true;
    });
}

}  // namespace

extern "C" {

int nemraRawGetInstrument(nemra_raw_t* raw, void* user, nemra_byte_sink sink) {
    return give("nemraRawGetInstrument", raw, user, sink, &Raw::instrument);
}

int nemraRawGetOutput(nemra_raw_t* raw, void* user, nemra_byte_sink sink) {
    return give("nemraRawGetOutput", raw, user, sink, &Raw::output);
}

bool nemraRawSetInstrument(nemra_raw_t* raw, const char* data, int size) {
    return replace("nemraRawSetInstrument", raw, data, size, "instrument", &Raw::setInstrument);
}

bool nemraRawSetOutput(nemra_raw_t* raw, const char* data, int size) {
    return replace("nemraRawSetOutput", raw, data, size, "output", &Raw::setOutput);
}

int nemraRawImportOutput(nemra_raw_t* raw, nemra_raw_t* other, const char* output_name) {
    return guarded("nemraRawImportOutput", core::kFailed, [&] {
        const auto target = find<Raw>(raw);
        const auto source = find<Raw>(other);
        if (!target || !source) return core::kFailed;
        const std::string_view name = viewOf(output_name);
        auto found = source->output();  // it may be none of the presets
        if (!found || found->name() != name) {
            const auto presets = source->outputs();
            const auto preset =
                std::find_if(presets.begin(), presets.end(), [&](const auto& node) { return node->name() == name; });
            if (preset == presets.end()) {
                log::error("nemraRawImportOutput", "there is no output \"" + std::string(name) + "\"");
                return core::kFailed;
            }
            found = *preset;
        }
        target->setOutput(std::move(found));
        return core::kDone;
    });
}

}  // extern "C"
