#include "engine/node/encoding/fill_node.h"

namespace nemra::node {

bool describes(const std::vector<ParameterSpec>& parameters, std::string_view name) {
    return std::any_of(parameters.begin(), parameters.end(), [&](const ParameterSpec& parameter) {
        return parameter.name == name ||
               std::any_of(parameter.options.begin(), parameter.options.end(),
                           [&](const OptionSpec& option) { return describes(option.parameters, name); });
    });
}

}  // namespace nemra::node
