/// Array arguments are read in the order of the buffer's memory; strides aren't honoured.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "module/binding.h"

namespace Nemra {

/// True if `count` elements from the array's first one on lie inside the memory that the array spans. A reversed or broadcast
/// view spans less than its size says.
template <class T>
bool spansElements(const py::array_t<T>& array, py::ssize_t count) {
    py::ssize_t last = 0;  // bytes from the first element to the one that lies highest
    for (py::ssize_t axis = 0; axis < array.ndim(); ++axis) {
        if (array.shape(axis) == 0) return count <= 0;
        const py::ssize_t reach = array.strides(axis) * (array.shape(axis) - 1);
        if (reach > 0) last += reach;
    }
    return count * static_cast<py::ssize_t>(sizeof(T)) <= last + static_cast<py::ssize_t>(sizeof(T));
}

/// True if the first `count` elements in memory order can be used where they lie.
template <class T>
bool liesInBufferOrder(const py::array_t<T>& array, py::ssize_t count) {
    return spansElements(array, count) && reinterpret_cast<std::uintptr_t>(array.data()) % alignof(T) == 0;
}

/// The first `count` elements in memory order. Where the memory that the array spans holds fewer, they are taken in the order of
/// the indices, as far as there are any, since there is nothing else to read.
template <class T, class Vector = std::vector<T>>
Vector inBufferOrder(const py::array_t<T>& array, py::ssize_t count) {
    if (count <= 0) return {};
    if (liesInBufferOrder(array, count)) return Vector(array.data(), array.data() + count);
    if constexpr (alignof(T) > 1) {
        if (spansElements(array, count)) {  // of a record's field, or a buffer that begins anywhere
            Vector elements(static_cast<std::size_t>(count));
            std::memcpy(elements.data(), array.data(), elements.size() * sizeof(T));
            return elements;
        }
    }
    const auto ordered = py::array_t<T, py::array::c_style | py::array::forcecast>(array);
    return Vector(ordered.data(), ordered.data() + std::min(count, ordered.size()));
}

}  // namespace Nemra
