/// A scene node: the one wrapper behind every node class, and the hook that gives each node its typed Python class.
#pragma once

#include <string>
#include <typeinfo>
#include <vector>

#include "module/binding.h"
#include "module/handle.h"
#include "module/python_file.h"

namespace NemraNode::nodes {

/// Wrapper of an engine node. A null handle means that the node was deleted: texts then answer deletedText(), booleans false,
/// lists are empty, and node results are deleted nodes.
class Node : public Nemra::CHandler<nemra_onode_t> {
public:
    Node() = default;
    explicit Node(nemra_onode_t* engineHandle) : CHandler(engineHandle) {}
    /// A new engine node, which stays the engine's. An unknown class or type gives a deleted node.
    Node(const std::string& className, const std::string& typeName, const std::string& name)
        : Node(className.c_str(), typeName.c_str(), name.c_str()) {}
    Node(const char* className, const char* typeName, const char* name);

    static const char* deletedText() { return "This node was deleted"; }

    std::string repr() const;
    /// svxml text or svbin bytes.
    std::string serialize(Nemra::SerialFormat format) const;

    std::string name() const;
    bool setName(const std::string& name) const;
    std::string comments() const;
    void setComments(const std::string& comments) const;
    std::string className() const;
    std::string typeName() const;

    std::vector<Node> children() const;
    Node getChild(const std::string& name) const;
    bool isListType() const;
    std::string listClass() const;
    std::vector<Node> getChildList() const;
    Node getListChild(const std::string& name) const;
    /// The engine's answer. The child's wrapper gives up its handle, unless this node was deleted.
    bool setChild(Node& child) const;

    /// Owned by the result.
    Node clone() const;
    Node copy() const;

    /// Top-level parameters in the engine's order.
    std::vector<nemra_parameter*> parameters() const;
    /// The parameter of that raw name, or null. `mode` is the raw name of the top-level choice under which it is nested, empty
    /// for a top-level parameter.
    nemra_parameter* findParameter(const std::string& name, const std::string& mode) const;
};

}  // namespace NemraNode::nodes

namespace pybind11 {

/// A node that goes to Python becomes the class of its family and type; one that the catalogue doesn't have, a plain `Node`.
template <>
struct polymorphic_type_hook<NemraNode::nodes::Node> {
    static const void* get(const NemraNode::nodes::Node* node, const std::type_info*& type);
};

}  // namespace pybind11
