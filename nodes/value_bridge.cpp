#include "nodes/value_bridge.h"

#include <array>
#include <stdexcept>

#include "module/buffer_order.h"
#include "module/owned_array.h"
#include "nodes/engine_value.h"
#include "nodes/table.h"
#include "nodes/typed_method.h"

namespace NemraNode::nodes {

namespace {

using FloatArray = py::array_t<float>;

constexpr const char* kTableFormat =
    "\n                    Table is passed as a dict with this format:\n\n                    .. code-block:: python\n\n"
    "                        table = {\"colname_0\": np.array(...),\"colname_1\": np.array(...)}\n                    \n"
    "                    ";

/// A getter reads from the parameter itself; `missing` makes the answer for one that isn't there.
template <class Result, class Missing, class Read>
void defineParameterGetter(const GeneratedClass& target, const ParameterNames& names, const std::string& mode, Missing missing,
                           Read read) {
    defineMethod<Result>(target, names.getter, names.getterDoc.c_str(), nullptr,
                         [name = names.raw, mode, missing, read](Node& node) -> Result {
                             nemra_parameter* parameter = node.findParameter(name, mode);
                             if (nemraParameter_type(parameter) == NEMRA_PARAMETER_NONE) {
                                 reportMissingParameter(name, mode);
                                 return missing();
                             }
                             return read(parameter);
                         });
}

/// A getter that converts the parameter's value.
template <class Result, class Missing, class Convert>
void defineValueGetter(const GeneratedClass& target, const ParameterNames& names, const std::string& mode, Missing missing,
                       Convert convert) {
    defineParameterGetter<Result>(target, names, mode, missing, [convert](nemra_parameter* parameter) -> Result {
        const OwnedValue value(nemraParameter_value(parameter));
        return convert(value.get());
    });
}

template <class Argument, class Convert>
void defineValueSetter(const GeneratedClass& target, const ParameterNames& names, Convert convert) {
    defineMethod<bool, Argument>(
        target, names.setter, names.setterDoc.c_str(), names.argument.c_str(),
        [name = names.raw, convert](Node& node, const auto& argument) { return setParameter(node, name, convert(argument)); });
}

void bindText(const GeneratedClass& target, const ParameterNames& names, const std::string& mode, bool writable) {
    defineValueGetter<std::string>(
        target, names, mode, [] { return std::string(); }, readText);
    if (!writable) return;
    defineValueSetter<std::string>(target, names, [](const std::string& text) { return nemraValue_create_c_str(text.c_str()); });
}

void bindReal(const GeneratedClass& target, const ParameterNames& names, const std::string& mode) {
    defineValueGetter<double>(
        target, names, mode, [] { return -1.0; },
        [](nemra_value* value) { return readFirst(value, nemraValue_get_double, -1.0); });
    defineValueSetter<double>(target, names, nemraValue_create_double);
}

void bindInteger(const GeneratedClass& target, const ParameterNames& names, const std::string& mode) {
    defineValueGetter<std::int32_t>(
        target, names, mode, [] { return 0; }, [](nemra_value* value) { return readFirst(value, nemraValue_get_int32, 0); });
    defineValueSetter<std::int32_t>(target, names, nemraValue_create_int32);
}

void bindBoolean(const GeneratedClass& target, const ParameterNames& names, const std::string& mode) {
    defineValueGetter<bool>(
        target, names, mode, [] { return false; }, nemraValue_get_bool);
    defineValueSetter<bool>(target, names, nemraValue_create_bool);
}

nemra_value* floatsInBufferOrder(const FloatArray& array) {
    const std::vector<float> floats = Nemra::inBufferOrder(array, array.size());
    return nemraValue_create_vec_float(floats.data(), static_cast<int>(floats.size()));
}

void bindVector(const GeneratedClass& target, const ParameterNames& names, const std::string& mode) {
    defineValueGetter<FloatArray>(
        target, names, mode, [] { return FloatArray(); },
        [](nemra_value* value) { return Nemra::ownedArray(readElements(value, nemraValue_get_float)); });
    defineValueSetter<FloatArray>(target, names, [](const FloatArray& array) {
        if (array.ndim() != 1) throw std::runtime_error("Number of dimensions must be 1");
        if (array.size() != 3) throw std::runtime_error("Number of element must be 3");
        return floatsInBufferOrder(array);
    });
}

void bindMatrix(const GeneratedClass& target, const ParameterNames& names, const std::string& mode, py::ssize_t rows) {
    defineValueGetter<FloatArray>(
        target, names, mode, [] { return FloatArray(); },
        [rows](nemra_value* value) {
            std::vector<float> elements = readElements(value, nemraValue_get_float);
            elements.resize(static_cast<std::size_t>(rows * rows));
            return Nemra::ownedArray(std::move(elements), {rows, rows});
        });
    defineValueSetter<FloatArray>(target, names, [rows](const FloatArray& array) {
        if (array.ndim() != 2) throw std::runtime_error("Number of dimensions must be 2");
        if (array.shape(0) != rows || array.shape(1) != rows) {
            throw std::runtime_error(rows == 2 ? "Expecting a 2x2 mat" : "Expecting a 3x3 mat");
        }
        return floatsInBufferOrder(array);
    });
}

void bindChoice(const GeneratedClass& target, const ParameterNames& names, const std::string& mode) {
    using Names = std::vector<std::string>;
    defineMethod<Names>(target, names.choices, "Retrieve the possible choices", nullptr,
                        [name = names.raw, mode](Node& node) -> Names {
                            nemra_parameter* parameter = node.findParameter(name, mode);
                            if (nemraParameter_type(parameter) == NEMRA_PARAMETER_NONE) {
                                reportMissingParameter(name, mode);
                                return {};
                            }
                            Names choices;
                            for (std::uint32_t i = 0; i < nemraParameter_choicesSize(parameter); ++i) {
                                choices.emplace_back(nemraParameter_choiceName(parameter, i));
                            }
                            return choices;
                        });
    bindText(target, names, mode, true);
}

py::dict colorToDict(nemra_value* value) {
    nemra_color* color = nemraValue_get_color(value);
    py::dict result;
    result["space"] = std::string(nemraTriColor_spaceToString(nemraTriColor_space(color)));
    py::list coordinates;
    if (const float* coords = nemraTriColor_coords(color)) {
        for (int i = 0; i < 3; ++i) coordinates.append(static_cast<double>(coords[i]));
    }
    result["coord"] = coordinates;
    return result;
}

/// Unknown keys and values of another kind are passed over: what the space name means, and whether it may be empty, the engine
/// decides.
nemra_value* colorFromDict(const py::dict& dict) {
    std::string space;
    std::array<float, 3> coordinates{};
    for (const auto& [key, value] : dict) {
        if (!py::isinstance<py::str>(key)) continue;
        const auto is = [&key = key](const char* name) { return PyUnicode_CompareWithASCIIString(key.ptr(), name) == 0; };
        if (is("space") && py::isinstance<py::str>(value)) space = value.cast<std::string>();
        if (is("coord") && py::isinstance<py::list>(value) && py::len(value) == 3) {
            const auto list = py::reinterpret_borrow<py::list>(value);
            for (std::size_t i = 0; i < coordinates.size(); ++i) coordinates[i] = list[i].cast<float>();
        }
    }
    return nemraValue_create_tricolor(nemraTriColor_create_name(space.c_str(), coordinates[0], coordinates[1], coordinates[2]));
}

void bindColor(const GeneratedClass& target, const ParameterNames& names, const std::string& mode) {
    defineValueGetter<py::dict>(
        target, names, mode, [] { return py::dict(); }, colorToDict);
    defineValueSetter<py::dict>(target, names, colorFromDict);
}

void bindTable(const GeneratedClass& target, const ParameterNames& names, const std::string& mode) {
    defineParameterGetter<py::dict>(
        target, names, mode, [] { return py::dict(); }, readTable);
    const std::string doc = names.setterDoc + kTableFormat;
    defineMethod<bool, py::dict>(
        target, names.setter, doc.c_str(), names.argument.c_str(),
        [name = names.raw](Node& node, const py::dict& columns) { return writeTable(node, name, columns); });
}

}  // namespace

void reportMissingParameter(const std::string& name, const std::string& mode) {
    py::print(name, "parameter does not exists for the selected", mode, "mode");
}

bool setParameter(const Node& node, const std::string& name, nemra_value* value) {
    return node.handle && nemraNode_setParameter(node.handle, name.c_str(), value, 0);
}

void bindValueAccessors(const GeneratedClass& target, const ParameterNames& names, const std::string& mode, std::int32_t type) {
    switch (type) {
        case NEMRA_PARAMETER_INFO:
            return bindText(target, names, mode, false);
        case NEMRA_PARAMETER_REAL:
            return bindReal(target, names, mode);
        case NEMRA_PARAMETER_INTEGER:
            return bindInteger(target, names, mode);
        case NEMRA_PARAMETER_TEXT:
        case NEMRA_PARAMETER_FILE:
        case NEMRA_PARAMETER_LINK:
            return bindText(target, names, mode, true);
        case NEMRA_PARAMETER_BOOLEAN:
            return bindBoolean(target, names, mode);
        case NEMRA_PARAMETER_VECTOR:
        case NEMRA_PARAMETER_DIRECTION:
            return bindVector(target, names, mode);
        case NEMRA_PARAMETER_CHOICE:
            return bindChoice(target, names, mode);
        case NEMRA_PARAMETER_TABLE:
            return bindTable(target, names, mode);
        case NEMRA_PARAMETER_COLOR:
            return bindColor(target, names, mode);
        case NEMRA_PARAMETER_MATRIX2:
            return bindMatrix(target, names, mode, 2);
        case NEMRA_PARAMETER_MATRIX3:
            return bindMatrix(target, names, mode, 3);
        default:
            return;  // none, or a type that this module doesn't know: no methods
    }
}

}  // namespace NemraNode::nodes
