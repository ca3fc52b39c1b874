/// Reading the engine's values.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "module/engine_text.h"
#include "module/flat/nemra_node.h"

namespace NemraNode::nodes {

/// A value that the module has to give back.
class OwnedValue {
public:
    explicit OwnedValue(nemra_value* value) : value_(value) {}
    OwnedValue(const OwnedValue&) = delete;
    OwnedValue& operator=(const OwnedValue&) = delete;
    ~OwnedValue() {
        if (value_) nemraValue_release(&value_);
    }
    nemra_value* get() const { return value_; }

private:
    nemra_value* value_;
};

/// The elements of a small vector value; empty if the value holds another kind.
template <class T>
std::vector<T> readElements(nemra_value* value, const T* (*read)(nemra_value*)) {
    std::vector<T> elements;
    const T* data = read(value);
    if (!data) return elements;
    for (std::int32_t i = 0; i < nemraValue_size(value); ++i) elements.push_back(data[i]);
    return elements;
}

/// The same in one copy, for raw data of any length.
template <class T>
std::vector<T> readBlock(nemra_value* value, const T* (*read)(nemra_value*)) {
    const T* data = read(value);
    const std::int32_t size = data ? nemraValue_size(value) : 0;
    return size > 0 ? std::vector<T>(data, data + size) : std::vector<T>();
}

/// The first element, or `missing` if there is none.
template <class T>
T readFirst(nemra_value* value, const T* (*read)(nemra_value*), T missing) {
    const std::vector<T> elements = readElements(value, read);
    return elements.empty() ? missing : elements.front();
}

inline std::string readText(nemra_value* value) { return Nemra::takeText(nemraValue_toString(value)); }

}  // namespace NemraNode::nodes
