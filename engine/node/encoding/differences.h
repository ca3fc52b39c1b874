/// The one walk over what a file has to say of a node: what tells it from the node that a reader begins with. All encodings
/// write what comes out here, and nothing else.
#pragma once

#include <string>

#include "engine/node/node.h"

namespace nemra::node {

/// Takes the differences in a fixed order: comments, parameters, raw slots, children, items of the list.
class DifferenceSink {
public:
    virtual void comments(const std::string& text) = 0;
    /// A parameter. Those that come before its endParameter are brought by its selected option.
    virtual void beginParameter(const ParameterSpec& spec, const Value& value) = 0;
    virtual void endParameter() = 0;
    virtual void rawSlot(const RawSlotSpec& slot, const Value& value) = 0;
    /// A child or an item of the list, with its own differences up to its endNode.
    virtual void beginChild(const ChildSpec& slot, const Node& child) = 0;
    virtual void beginItem(const Node& item) = 0;
    virtual void endNode() = 0;

protected:
    ~DifferenceSink() = default;
};

/// Gives the contents of `node`, without the node's own class and name. Throws std::length_error if its children nest deeper
/// than readers bear.
void walkDifferences(const Node& node, DifferenceSink& sink);

}  // namespace nemra::node
