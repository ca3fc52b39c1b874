// The least that a bound method can cost: what the generated accessors of the node classes are measured against.
#include <pybind11/pybind11.h>

namespace py = pybind11;

namespace {

struct Empty {
    double get() const { return 0.5; }
    bool set(double) { return true; }
};

}  // namespace

PYBIND11_MODULE(empty_method, module) {
    py::class_<Empty>(module, "Empty").def(py::init<>()).def("get", &Empty::get).def("set", &Empty::set, py::arg("value"));
}
