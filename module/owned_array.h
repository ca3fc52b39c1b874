/// numpy arrays that own their memory: no second copy, no tie to the engine.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "module/binding.h"

namespace Nemra {

/// C-ordered array of the given shape over the vector's own storage; a capsule that holds the vector becomes its base.
/// The product of `shape` must not exceed data.size().
template <class T, class Allocator>
py::array_t<T> ownedArray(std::vector<T, Allocator>&& data, py::array::ShapeContainer shape) {
    using Vector = std::vector<T, Allocator>;
    auto block = std::make_unique<Vector>(std::move(data));
    T* elements = block->data();
    py::capsule owner(block.get(), [](void* pointer) { delete static_cast<Vector*>(pointer); });
    block.release();
    return py::array_t<T>(std::move(shape), elements, owner);
}

/// One dimension, as many elements as the vector has.
template <class T>
py::array_t<T> ownedArray(std::vector<T>&& data) {
    const auto size = static_cast<py::ssize_t>(data.size());
    return ownedArray(std::move(data), {size});
}

/// The same over a heap block of `new T[]`.
template <class T>
py::array_t<T> ownedArray(std::unique_ptr<T[]> block, py::array::ShapeContainer shape) {
    T* elements = block.get();
    py::capsule owner(elements, [](void* pointer) { delete[] static_cast<T*>(pointer); });
    block.release();
    return py::array_t<T>(std::move(shape), elements, owner);
}

}  // namespace Nemra
