// The parameters of a node: listing and setting.
#include "engine/common/text.h"
#include "engine/node/api/opaque.h"
#include "module/flat/nemra_node.h"

using namespace nemra;
using namespace nemra::node;

nemra_parameter** nemraNode_getParameters(nemra_onode_t* handle, std::uint32_t* count) {
    if (count) *count = 0;
    return withNode<nemra_parameter**>("nemraNode_getParameters", handle, nullptr, [&](Node& node) {
        HandedOut& out = HandedOut::of(node);
        const auto& specs = node.nodeClass().parameters;
        while (out.parameters.size() < specs.size()) {
            out.parameters.push_back(std::make_unique<nemra_parameter>(&node, specs[out.parameters.size()]));
        }
        if (out.parameterArray.size() < specs.size()) {
            out.parameterArray.clear();
            for (const auto& parameter : out.parameters) out.parameterArray.push_back(parameter.get());
        }
        if (count) *count = static_cast<std::uint32_t>(out.parameterArray.size());
        return out.parameterArray.data();
    });
}

bool nemraNode_setParameter(nemra_onode_t* handle, const char* name, nemra_value* value, int /*flags*/) {
    const std::unique_ptr<nemra_value> taken(value);  // the engine's from here on, whatever comes of it
    return withNode("nemraNode_setParameter", handle, false, [&](Node& node) {
        std::string why;
        const bool done = node.set(viewOf(name), taken ? std::move(taken->value) : Value{}, why);
        if (!done) log::warning(node.label(), why);
        return done;
    });
}
