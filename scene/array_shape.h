/// Shape checks of array arguments. They raise nothing: a wrong shape is a line on Python's standard output.
#pragma once

#include "module/binding.h"

namespace NemraNode {

/// True for two dimensions with that many rows and columns; -1 stands for any number.
inline bool hasShape(const py::array& array, int rows, int columns) {
    if (array.ndim() != 2) {
        py::print("Number of dimensions must be 2, got:", array.ndim());
        return false;
    }
    if (rows != -1 && array.shape(0) != rows) {
        py::print("Expecting a numpy.array of shape (", rows, ",", columns, ")");
        return false;
    }
    if (columns != -1 && array.shape(1) != columns) {
        py::print("Expecting a numpy.array of size (", rows, ",", columns, ")");
        return false;
    }
    return true;
}

}  // namespace NemraNode
