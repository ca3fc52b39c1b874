#include "nodes/node.h"

#include <sstream>

#include "module/engine_text.h"

namespace NemraNode::nodes {

namespace {

std::vector<Node> borrowedNodes(nemra_onode_t** handles, std::uint32_t count) {
    std::vector<Node> nodes;
    if (!handles) return nodes;
    nodes.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) nodes.emplace_back(handles[i]);
    return nodes;
}

nemra_parameter* firstNamed(const std::vector<nemra_parameter*>& parameters, const std::string& name) {
    for (nemra_parameter* parameter : parameters) {
        if (std::string(nemraParameter_name(parameter)) == name) return parameter;
    }
    return nullptr;
}

}  // namespace

Node::Node(const char* className, const char* typeName, const char* name) {
    handle = nemraNode_create(className, typeName, name);
}

std::string Node::repr() const {
    if (!handle) return "This node has been deleted. You should considerer calling \"del\" on it.";
    std::ostringstream text;
    text << "<nemranode_ptr: " << reinterpret_cast<std::uintptr_t>(handle) << " class: " << className() << " type: " << typeName()
         << " name: " << name() << ">";
    return text.str();
}

std::string Node::serialize(Nemra::SerialFormat format) const {
    if (!handle) return deletedText();
    std::uint32_t size = 0;
    char* text = nemraNode_serialize(handle, static_cast<int>(format), &size);
    return Nemra::takeText(text, size);
}

std::string Node::name() const { return handle ? nemraNode_name(handle) : deletedText(); }

bool Node::setName(const std::string& name) const { return handle && nemraNode_setName(handle, name.c_str()); }

std::string Node::comments() const { return handle ? nemraNode_comments(handle) : deletedText(); }

void Node::setComments(const std::string& comments) const {
    if (handle) nemraNode_setComments(handle, comments.c_str());
}

std::string Node::className() const { return handle ? nemraNode_className(handle) : deletedText(); }

std::string Node::typeName() const { return handle ? nemraNode_typeName(handle) : deletedText(); }

std::vector<Node> Node::children() const {
    if (!handle) return {};
    std::uint32_t count = 0;
    nemra_onode_t** handles = nemraNode_children(handle, &count);
    return borrowedNodes(handles, count);
}

Node Node::getChild(const std::string& name) const { return Node(handle ? nemraNode_getChild(handle, name.c_str()) : nullptr); }

bool Node::isListType() const { return handle && nemraNode_isListType(handle); }

std::string Node::listClass() const { return handle ? nemraNode_listClass(handle) : deletedText(); }

std::vector<Node> Node::getChildList() const {
    if (!handle) return {};
    std::uint32_t count = 0;
    nemra_onode_t** handles = nemraNode_getChildList(handle, &count);
    return borrowedNodes(handles, count);
}

Node Node::getListChild(const std::string& name) const {
    return Node(handle ? nemraNode_getListChild(handle, name.c_str()) : nullptr);
}

bool Node::setChild(Node& child) const {
    if (!handle) return false;
    child.borrowed = true;  // the tree holds it from here on
    return nemraNode_setChild(handle, child.handle);
}

Node Node::clone() const {
    Node result;
    if (!handle) return result;
    result.handle = nemraNode_clone(handle);
    result.takeOwnership();
    return result;
}

Node Node::copy() const {
    Node result;
    if (!handle) return result;
    result.handle = nemraNode_copy(handle);
    result.takeOwnership();
    return result;
}

std::vector<nemra_parameter*> Node::parameters() const {
    if (!handle) return {};
    std::uint32_t count = 0;
    nemra_parameter** first = nemraNode_getParameters(handle, &count);
    return first ? std::vector<nemra_parameter*>(first, first + count) : std::vector<nemra_parameter*>();
}

nemra_parameter* Node::findParameter(const std::string& name, const std::string& mode) const {
    if (mode.empty()) return firstNamed(parameters(), name);
    return nemraParameter_findRecursive(firstNamed(parameters(), mode), name.c_str());
}

}  // namespace NemraNode::nodes
