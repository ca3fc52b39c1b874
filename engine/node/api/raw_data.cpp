// Raw data: named, typed slots of a node.
#include <algorithm>

#include "engine/common/text.h"
#include "engine/node/api/opaque.h"
#include "module/flat/nemra_node.h"

using namespace nemra;
using namespace nemra::node;

namespace {

const RawSlotSpec* findSlot(const Node& node, std::string_view name) {
    const auto& slots = node.nodeClass().rawSlots;
    const auto found = std::find_if(slots.begin(), slots.end(), [&](const RawSlotSpec& slot) { return slot.name == name; });
    return found == slots.end() ? nullptr : &*found;
}

}  // namespace

std::int32_t nemraNode_getRawDataSize(nemra_onode_t* handle) {
    return withNode<std::int32_t>("nemraNode_getRawDataSize", handle, 0,
                                  [](Node& node) { return static_cast<std::int32_t>(node.nodeClass().rawSlots.size()); });
}

char* nemraNode_getRawDataName(nemra_onode_t* handle, std::int32_t index) {
    return withNode<char*>("nemraNode_getRawDataName", handle, nullptr, [&](Node& node) -> char* {
        const auto& slots = node.nodeClass().rawSlots;
        if (index < 0 || static_cast<std::size_t>(index) >= slots.size()) return nullptr;
        return callersText(slots[static_cast<std::size_t>(index)].name);
    });
}

std::int32_t nemraNode_getRawDataType(nemra_onode_t* handle, const char* name) {
    return withNode<std::int32_t>("nemraNode_getRawDataType", handle, NEMRA_RAW_DATA_NONE, [&](Node& node) -> std::int32_t {
        const RawSlotSpec* const slot = findSlot(node, viewOf(name));
        return slot ? slot->type : NEMRA_RAW_DATA_NONE;
    });
}

nemra_value* nemraNode_getRawDataValue(nemra_onode_t* handle, const char* name) {
    return withNode<nemra_value*>("nemraNode_getRawDataValue", handle, nullptr, [&](Node& node) -> nemra_value* {
        const RawSlotSpec* const slot = findSlot(node, viewOf(name));
        if (!slot) return nullptr;
        nemra_value& out = HandedOut::of(node).rawData[slot->name];
        const Value* const value = node.rawSlot(slot->name);
        if (!value) {
            out.value = Value{};
        } else if (!(out.value == *value)) {
            out.value = *value;
        }
        return &out;
    });
}

bool nemraNode_setRawDataValue(nemra_onode_t* handle, const char* name, nemra_value* value) {
    const std::unique_ptr<nemra_value> taken(value);
    return withNode("nemraNode_setRawDataValue", handle, false, [&](Node& node) {
        std::string why;
        const bool done = node.setRawSlot(viewOf(name), taken ? std::move(taken->value) : Value{}, why);
        if (!done) log::warning(node.label(), why);
        return done;
    });
}
