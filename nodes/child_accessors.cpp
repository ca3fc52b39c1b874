#include "nodes/child_accessors.h"

#include "nodes/names.h"
#include "nodes/typed_method.h"

namespace NemraNode::nodes {

namespace {

bool isTaken(const GeneratedClass& target, const std::string& method) {
    return PyObject_HasAttrString(target.python.ptr(), method.c_str()) == 1;
}

bool replaceChild(Node& parent, const std::string& slot, Node& child) {
    const Node current = parent.getChild(slot);
    const std::string expected = current.className();
    const std::string given = child.className();
    if (expected != given) {
        py::print("Wrong Node type. Expecting:", expected, "get: ", given);
        return false;
    }
    child.setName(current.name());  // the engine finds the slot by the name of the node that is put in
    return parent.setChild(child);
}

}  // namespace

void bindChildGetter(const GeneratedClass& target, const Node& child) {
    const std::string slot = child.name();
    const std::string method = "get" + capitalName(slot);
    if (isTaken(target, method)) return;
    const std::string doc = "\n            Retrieve the " + slot + " node \n        ";
    defineMethod<Node>(target, method, doc.c_str(), nullptr, [slot](Node& node) { return node.getChild(slot); });
}

void bindChildSetter(const GeneratedClass& target, const Node& child) {
    const std::string slot = child.name();
    const std::string method = "set" + capitalName(slot);
    if (isTaken(target, method)) return;
    const std::string doc = "\n            Set the " + slot + " node \n        ";
    defineMethod<bool, Node&>(target, method, doc.c_str(), nullptr,
                              [slot](Node& node, Node& replacement) { return replaceChild(node, slot, replacement); });
}

}  // namespace NemraNode::nodes
