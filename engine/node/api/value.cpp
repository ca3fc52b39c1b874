// Values.
#include <algorithm>

#include "engine/common/text.h"
#include "engine/node/api/opaque.h"
#include "engine/node/encoding/utf8.h"
#include "module/flat/nemra_node.h"

using namespace nemra;
using namespace nemra::node;

namespace {

template <class Data>
nemra_value* made(const char* function, Data data) {
    return guarded<nemra_value*>(function, nullptr, [&] { return new nemra_value{Value{std::move(data)}, nullptr}; });
}

template <class T>
nemra_value* madeVector(const char* function, const T* data, int count) {
    return guarded<nemra_value*>(function, nullptr, [&] {
        const bool any = data && count > 0;
        return new nemra_value{Value{any ? std::vector<T>(data, data + count) : std::vector<T>()}, nullptr};
    });
}

/// The elements of a scalar or a vector of that kind, else null.
template <class T>
const T* elements(const nemra_value* value) noexcept {
    if (!value) return nullptr;
    if (const auto* const scalar = std::get_if<T>(&value->value.data)) return scalar;
    if constexpr (!std::is_same_v<T, std::uint64_t>) {
        if (const auto* const vector = std::get_if<std::vector<T>>(&value->value.data)) return vector->data();
    }
    return nullptr;
}

}  // namespace

nemra_value* nemraValue_create() { return made("nemraValue_create", std::monostate{}); }
nemra_value* nemraValue_create_bool(bool value) { return made("nemraValue_create_bool", value); }
nemra_value* nemraValue_create_int32(std::int32_t value) { return made("nemraValue_create_int32", value); }
nemra_value* nemraValue_create_uint64(std::uint64_t value) { return made("nemraValue_create_uint64", value); }
nemra_value* nemraValue_create_float(float value) { return made("nemraValue_create_float", value); }
nemra_value* nemraValue_create_double(double value) { return made("nemraValue_create_double", value); }
nemra_value* nemraValue_create_c_str(const char* text) {
    return guarded<nemra_value*>("nemraValue_create_c_str", nullptr, [&] {
        return new nemra_value{Value{readableText(viewOf(text))}, nullptr};
    });
}
nemra_value* nemraValue_create_vec_int32_t(const std::int32_t* data, int count) {
    return madeVector("nemraValue_create_vec_int32_t", data, count);
}
nemra_value* nemraValue_create_vec_float(const float* data, int count) {
    return madeVector("nemraValue_create_vec_float", data, count);
}
nemra_value* nemraValue_create_vec_double(const double* data, int count) {
    return madeVector("nemraValue_create_vec_double", data, count);
}
nemra_value* nemraValue_create_vec_char(const char* data, int count) {
    return madeVector("nemraValue_create_vec_char", data, count);
}

nemra_value* nemraValue_create_table(nemra_table* table) {
    const std::unique_ptr<nemra_table> taken(table);
    return guarded<nemra_value*>("nemraValue_create_table", nullptr, [&] {
        return taken ? new nemra_value{Value{taken->contents}, nullptr} : new nemra_value;
    });
}

nemra_value* nemraValue_create_tricolor(nemra_color* color) {
    const std::unique_ptr<nemra_color> taken(color);
    return guarded<nemra_value*>("nemraValue_create_tricolor", nullptr, [&] {
        return taken ? new nemra_value{Value{taken->color}, nullptr} : new nemra_value;
    });
}

void nemraValue_release(nemra_value** value) {
    if (!value) return;
    delete *value;
    *value = nullptr;
}

std::int32_t nemraValue_type(nemra_value* value) { return value ? typeOf(value->value) : NEMRA_VALUE_NONE; }

std::int32_t nemraValue_size(nemra_value* value) {
    constexpr std::size_t kLargest = 0x7fffffff;
    return value ? static_cast<std::int32_t>(std::min(sizeOf(value->value), kLargest)) : 0;
}

char* nemraValue_toString(nemra_value* value) {
    char* const text =
        guarded<char*>("nemraValue_toString", nullptr, [&] { return value ? callersText(toText(value->value)) : nullptr; });
    return text ? text : permanentText("");
}

const float* nemraValue_get_float(nemra_value* value) { return elements<float>(value); }
const double* nemraValue_get_double(nemra_value* value) { return elements<double>(value); }
const std::int32_t* nemraValue_get_int32(nemra_value* value) { return elements<std::int32_t>(value); }
const std::uint64_t* nemraValue_get_uint64(nemra_value* value) { return elements<std::uint64_t>(value); }

const char* nemraValue_get_binary(nemra_value* value) {
    if (!value) return nullptr;
    if (const auto* const text = std::get_if<std::string>(&value->value.data)) return text->data();
    const auto* const bytes = std::get_if<std::vector<char>>(&value->value.data);
    return bytes ? bytes->data() : nullptr;
}

bool nemraValue_get_bool(nemra_value* value) {
    const auto* const boolean = value ? std::get_if<bool>(&value->value.data) : nullptr;
    return boolean && *boolean;
}

nemra_color* nemraValue_get_color(nemra_value* value) {
    return guarded<nemra_color*>("nemraValue_get_color", nullptr, [&]() -> nemra_color* {
        const auto* const color = value ? std::get_if<Color>(&value->value.data) : nullptr;
        if (!color) return nullptr;
        if (!value->color) value->color = std::make_unique<nemra_color>(nemra_color{*color});
        return value->color.get();
    });
}
