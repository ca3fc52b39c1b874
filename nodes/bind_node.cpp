#include "module/binders.h"
#include "module/bound_class.h"
#include "nodes/node.h"

namespace NemraNode {

using nodes::Node;
using NodeHandler = Nemra::CHandler<nemra_onode_t>;

void bindNode(py::module_& module, std::string) {
    py::class_<NodeHandler, std::shared_ptr<NodeHandler>>(module, "CNodeHandler");
    Nemra::BoundClass<Node, NodeHandler, std::shared_ptr<Node>> node(
        module, "Node", "\n        A scene node.\n\n        This is the parent class of nodes.\n    \n    ");
    node.def(py::init<const std::string&, const std::string&, const std::string&>(), py::arg("className"), py::arg("typeName"),
             py::arg("name"));
    node.def("getPtr", &Node::lowBits, "Get pointer to data as an integer");
    node.def("__repr__", &Node::repr);
    node.def(
        "print",
        [](std::shared_ptr<Node> self) {
            if (!self) throw py::reference_cast_error();
            return self->serialize(Nemra::SerialFormat::svxml);
        },
        "Return the node as an svxml string");
    node.def(
        "write",
        [](const Node& self, const py::object& file) {
            Nemra::dump(file, [&](Nemra::SerialFormat format) { return self.serialize(format); });
        },
        py::arg("file"), "Write data to a python file object");
    node.def("name", &Node::name, "Retrieve the name of the node");
    node.def("setName", &Node::setName, py::arg("name"), "Set node name");
    node.def(
        "isIdentical", [](const Node& self, const NodeHandler& other) { return self.handle == other.handle; }, py::arg("node"),
        "Check if this node and node point to the same data");
    node.def("comments", &Node::comments, "Retrieve comments of this node");
    node.def("setComments", &Node::setComments, py::arg("comment"), "Set comments to this node");
    node.def("children", &Node::children, "Retrieve the list of childrens of this node");
    node.def("getChild", &Node::getChild, py::arg("name"), "Get a child named \"name\" from this node");
    node.def("isListType", &Node::isListType, "Is this node has a variable list of childs");
    node.def("listClass", &Node::listClass, "Retrieve the className of the variable list of childs");
    node.def("getChildList", &Node::getChildList, "Retrieve the list of varying childs");
    node.def("getListChild", &Node::getListChild, py::arg("name"), "Retrieve a child named \"name\" in the varying child list");
    node.def("clone", &Node::clone, "Return a clone of this node. Childrens are shared with the original");
    node.def("copy", &Node::copy, "Return a copy of this node. All its nodes are also copied");
    node.def("setChild", &Node::setChild, py::arg("child"),
             "Set a child. If a child in the list has the same name it is replaced by this one");
    node.def("className", &Node::className, "Retrieve the className of this child");
    node.def("typeName", &Node::typeName, "Retrieve the typeName of this child");
}

}  // namespace NemraNode
