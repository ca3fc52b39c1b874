// Parameters: what they are, what they hold, what their options bring.
#include "engine/common/text.h"
#include "engine/node/api/opaque.h"
#include "module/flat/nemra_node.h"

using namespace nemra;
using namespace nemra::node;

const std::vector<std::unique_ptr<nemra_parameter>>& nemra_parameter::broughtBy(std::size_t option) {
    nested.resize(spec->options.size());
    auto& handles = nested[option];
    const auto& specs = spec->options[option].parameters;
    while (handles.size() < specs.size()) handles.push_back(std::make_unique<nemra_parameter>(node, specs[handles.size()]));
    return handles;
}

namespace {

/// The handle, at or below those that `top` brings, that stands for `spec`.
nemra_parameter* handleBelow(nemra_parameter& top, const ParameterSpec& spec) {
    for (std::size_t option = 0; option < top.spec->options.size(); ++option) {
        for (const auto& brought : top.broughtBy(option)) {
            if (brought->spec == &spec) return brought.get();
            if (nemra_parameter* const deeper = handleBelow(*brought, spec)) return deeper;
        }
    }
    return nullptr;
}

/// Vectors and matrices leave as floats, everything else as it is kept.
Value outward(const ParameterSpec& spec, const Value& value) {
    const bool isVector = spec.type == NEMRA_PARAMETER_VECTOR || spec.type == NEMRA_PARAMETER_DIRECTION;
    if (!isVector) return value;
    const auto& numbers = std::get<std::vector<double>>(value.data);
    return Value{std::vector<float>(numbers.begin(), numbers.end())};
}

const OptionSpec* optionAt(const nemra_parameter* parameter, std::uint32_t index) {
    if (!parameter || index >= parameter->spec->options.size()) return nullptr;
    return &parameter->spec->options[index];
}

}  // namespace

const char* nemraParameter_name(nemra_parameter* parameter) { return parameter ? parameter->spec->name.c_str() : nullptr; }

std::int32_t nemraParameter_type(nemra_parameter* parameter) { return parameter ? parameter->spec->type : NEMRA_PARAMETER_NONE; }

nemra_value* nemraParameter_value(nemra_parameter* parameter) {
    return guarded<nemra_value*>("nemraParameter_value", nullptr, [&]() -> nemra_value* {
        if (!parameter) return nullptr;
        const ParameterSpec& spec = *parameter->spec;
        const Value& value = parameter->node ? *parameter->node->setting(spec).value : spec.defaultValue;
        return new nemra_value{outward(spec, value), nullptr};
    });
}

nemra_parameter* nemraParameter_findRecursive(nemra_parameter* top, const char* name) {
    return guarded<nemra_parameter*>("nemraParameter_findRecursive", nullptr, [&]() -> nemra_parameter* {
        if (!top || !top->node) return nullptr;
        const ParameterSpec* const spec = top->node->findParameterBelow(*top->spec, viewOf(name)).spec;
        return spec ? handleBelow(*top, *spec) : nullptr;
    });
}

std::uint32_t nemraParameter_choicesSize(nemra_parameter* parameter) {
    return parameter ? static_cast<std::uint32_t>(parameter->spec->options.size()) : 0;
}

const char* nemraParameter_choiceName(nemra_parameter* parameter, std::uint32_t index) {
    const OptionSpec* const option = optionAt(parameter, index);
    return option ? option->name.c_str() : nullptr;
}

std::uint32_t nemraParameter_choiceParametersSize(nemra_parameter* parameter, std::uint32_t choice) {
    const OptionSpec* const option = optionAt(parameter, choice);
    return option ? static_cast<std::uint32_t>(option->parameters.size()) : 0;
}

nemra_parameter* nemraParameter_choiceParameter(nemra_parameter* parameter, std::uint32_t choice, std::uint32_t index) {
    return guarded<nemra_parameter*>("nemraParameter_choiceParameter", nullptr, [&]() -> nemra_parameter* {
        const OptionSpec* const option = optionAt(parameter, choice);
        if (!option || index >= option->parameters.size()) return nullptr;
        return parameter->broughtBy(choice)[index].get();
    });
}

nemra_table* nemraParameter_tableValues(nemra_parameter* parameter) {
    return guarded<nemra_table*>("nemraParameter_tableValues", nullptr, [&]() -> nemra_table* {
        if (!parameter || parameter->spec->type != NEMRA_PARAMETER_TABLE || !parameter->node) return nullptr;
        const Value& value = *parameter->node->setting(*parameter->spec).value;
        parameter->table = std::make_unique<nemra_table>();
        parameter->table->contents = std::get<std::shared_ptr<const Table>>(value.data);
        return parameter->table.get();
    });
}

std::uint32_t nemraParameter_tableColumnParamsSize(nemra_parameter* parameter) {
    return parameter ? static_cast<std::uint32_t>(parameter->spec->columns.size()) : 0;
}

nemra_parameter* nemraParameter_tableColumnParam(nemra_parameter* parameter, std::uint32_t index) {
    return guarded<nemra_parameter*>("nemraParameter_tableColumnParam", nullptr, [&]() -> nemra_parameter* {
        if (!parameter || index >= parameter->spec->columns.size()) return nullptr;
        auto& columns = parameter->columns;
        const auto& specs = parameter->spec->columns;
        while (columns.size() < specs.size())
            columns.push_back(std::make_unique<nemra_parameter>(nullptr, specs[columns.size()]));
        return columns[index].get();
    });
}
