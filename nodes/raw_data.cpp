#include "nodes/raw_data.h"

#include <optional>

#include "module/buffer_order.h"
#include "module/owned_array.h"
#include "nodes/engine_value.h"
#include "nodes/names.h"
#include "nodes/typed_method.h"

namespace NemraNode::nodes {

namespace {

struct Slot {
    std::string raw;
    std::string setter;
    std::string getter;
};

/// Calls `convert` with the slot's value, or with an empty value for a deleted node.
template <class Convert>
auto withSlotValue(const Node& node, const std::string& slot, Convert convert) {
    std::optional<OwnedValue> empty;  // the slot's own value stays the engine's
    if (!node.handle) empty.emplace(nemraValue_create());
    return convert(empty ? empty->get() : nemraNode_getRawDataValue(node.handle, slot.c_str()));
}

template <class Result, class Argument, class Read, class Make>
void defineSlot(const GeneratedClass& target, const Slot& slot, Read read, Make make) {
    defineMethod<bool, Argument>(target, slot.setter, nullptr, nullptr, [raw = slot.raw, make](Node& node, const auto& argument) {
        nemra_value* value = make(argument);
        return node.handle && nemraNode_setRawDataValue(node.handle, raw.c_str(), value);
    });
    defineMethod<Result>(target, slot.getter, nullptr, nullptr,
                         [raw = slot.raw, read](Node& node) -> Result { return withSlotValue(node, raw, read); });
}

template <class T>
void defineArraySlot(const GeneratedClass& target, const Slot& slot, const T* (*read)(nemra_value*),
                     nemra_value* (*make)(const T*, int)) {
    using Array = py::array_t<T>;
    defineSlot<Array, Array>(
        target, slot, [read](nemra_value* value) { return Nemra::ownedArray(readBlock(value, read)); },
        [make](const Array& array) {
            // Only the first dimension counts.
            const std::vector<T> elements = Nemra::inBufferOrder(array, array.request().shape.at(0));
            return make(elements.data(), static_cast<int>(elements.size()));
        });
}

void defineTextSlot(const GeneratedClass& target, const Slot& slot) {
    defineSlot<std::string, std::string>(target, slot, readText,
                                         [](const std::string& text) { return nemraValue_create_c_str(text.c_str()); });
}

void defineBytesSlot(const GeneratedClass& target, const Slot& slot) {
    defineSlot<py::bytes, py::bytes>(
        target, slot,
        [](nemra_value* value) {
            const std::vector<char> bytes = readBlock(value, nemraValue_get_binary);
            return py::bytes(bytes.data(), bytes.size());
        },
        [](const py::bytes& argument) {
            const std::string_view view = argument;
            const std::vector<char> bytes(view.begin(), view.end());
            return nemraValue_create_vec_char(bytes.data(), static_cast<int>(bytes.size()));
        });
}

}  // namespace

void bindRawData(const GeneratedClass& target) {
    const Node dummy(target.family, target.type, "dummy");  // stays the engine's, like any node made by a class
    if (!dummy.handle) return;
    const std::int32_t count = nemraNode_getRawDataSize(dummy.handle);
    for (std::int32_t i = 0; i < count; ++i) {
        const std::string raw = Nemra::takeText(nemraNode_getRawDataName(dummy.handle, i));
        const Slot slot{raw, "setRaw" + capitalName(raw), "getRaw" + capitalName(raw)};
        switch (nemraNode_getRawDataType(dummy.handle, raw.c_str())) {
            case NEMRA_RAW_DATA_TEXT:
                defineTextSlot(target, slot);
                break;
            case NEMRA_RAW_DATA_INDEX:
            case NEMRA_RAW_DATA_INT32:
                defineArraySlot(target, slot, nemraValue_get_int32, nemraValue_create_vec_int32_t);
                break;
            case NEMRA_RAW_DATA_FLOAT:
                defineArraySlot(target, slot, nemraValue_get_float, nemraValue_create_vec_float);
                break;
            case NEMRA_RAW_DATA_DOUBLE:
                defineArraySlot(target, slot, nemraValue_get_double, nemraValue_create_vec_double);
                break;
            case NEMRA_RAW_DATA_BINARY:
                defineBytesSlot(target, slot);
                break;
            default:
                break;
        }
    }
}

}  // namespace NemraNode::nodes
