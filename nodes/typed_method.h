/// Methods whose `self` is a class known only at run time. The binding library would make each generated method anew for each of
/// the classes; here a method's code exists once and its function record carries the class that it belongs to.
#pragma once

#include <array>
#include <tuple>
#include <typeinfo>
#include <utility>

#include "nodes/generated_class.h"
#include "nodes/node.h"

namespace NemraNode::nodes {

/// Body is called as Return(Node&, Args...). Texts are copied. A null `doc` gives no docstring beyond the signature, a null
/// `argumentName` no named argument.
template <class Return, class... Args>
class TypedMethod : public py::cpp_function {
public:
    template <class Body>
    TypedMethod(const GeneratedClass& target, const char* name, const char* doc, const char* argumentName, Body body) {
        using namespace py::detail;
        struct Capture {
            const std::type_info* self;
            Body body;
        };
        const py::object sibling = py::getattr(target.python, name, py::none());

        auto record = make_function_record();
        record->data[0] = new Capture{target.self, std::move(body)};
        record->free_data = [](function_record* dying) { delete static_cast<Capture*>(dying->data[0]); };
        record->impl = [](function_call& call) -> py::handle {
            const auto& capture = *static_cast<const Capture*>(call.func.data[0]);
            return invoke(call, *capture.self, capture.body, std::index_sequence_for<Args...>());
        };
        record->nargs_pos = 1 + sizeof...(Args);
        process_attributes<py::name, py::is_method, py::sibling>::init(py::name(name), py::is_method(target.python),
                                                                       py::sibling(sibling), record.get());
        if (doc) process_attribute<const char*>::init(doc, record.get());
        if (argumentName) process_attribute<py::arg>::init(py::arg(argumentName), record.get());

        static constexpr auto signature = const_name("(") +
                                          concat(type_descr(const_name("%")), type_descr(make_caster<Args>::name)...) +
                                          const_name(") -> ") + make_caster<Return>::name;
        // The first name in the signature is the class, the others are known to the compiler; the list ends with a null.
        const auto known = decltype(signature)::types();
        std::array<const std::type_info*, std::tuple_size_v<decltype(known)> + 1> types{target.self};
        for (std::size_t i = 0; i < known.size(); ++i) types[i + 1] = known[i];
        initialize_generic(std::move(record), signature.text, types.data(), 1 + sizeof...(Args));
    }

private:
    template <class Body, std::size_t... I>
    static py::handle invoke(py::detail::function_call& call, const std::type_info& selfType, const Body& body,
                             std::index_sequence<I...>) {
        using namespace py::detail;
        type_caster_generic self(selfType);
        std::tuple<make_caster<Args>...> arguments;
        if (!self.load(call.args[0], call.args_convert[0]) ||
            !(std::get<I>(arguments).load(call.args[I + 1], call.args_convert[I + 1]) && ...)) {
            return PYBIND11_TRY_NEXT_OVERLOAD;
        }
        if (!self.value) throw py::reference_cast_error();
        Node& node = *static_cast<Node*>(self.value);
        const auto policy = return_value_policy_override<Return>::policy(call.func.policy);
        return make_caster<Return>::cast(body(node, cast_op<Args>(std::move(std::get<I>(arguments)))...), policy, call.parent);
    }
};

/// Defines a method on the class, in the overload chain of a method of that name that the class itself already has.
template <class Return, class... Args, class Body>
void defineMethod(const GeneratedClass& target, const std::string& name, const char* doc, const char* argumentName, Body body) {
    py::object python = target.python;
    py::detail::add_class_method(python, name.c_str(),
                                 TypedMethod<Return, Args...>(target, name.c_str(), doc, argumentName, std::move(body)));
}

}  // namespace NemraNode::nodes
