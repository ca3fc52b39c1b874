// Name, class and comments of a node.
#include "engine/common/text.h"
#include "engine/node/api/opaque.h"
#include "engine/node/api/scene_objects.h"
#include "engine/node/encoding/utf8.h"
#include "module/flat/nemra_node.h"

using namespace nemra;
using namespace nemra::node;

const char* nemraNode_name(nemra_onode_t* handle) {
    return withNode<const char*>("nemraNode_name", handle, "", [](Node& node) { return node.name().c_str(); });
}

const char* nemraNode_className(nemra_onode_t* handle) {
    return withNode<const char*>("nemraNode_className", handle, "", [](Node& node) { return node.family().c_str(); });
}

const char* nemraNode_typeName(nemra_onode_t* handle) {
    return withNode<const char*>("nemraNode_typeName", handle, "", [](Node& node) { return node.type().c_str(); });
}

const char* nemraNode_comments(nemra_onode_t* handle) {
    return withNode<const char*>("nemraNode_comments", handle, "", [](Node& node) { return node.comments().c_str(); });
}

const char* nemraNode_listClass(nemra_onode_t* handle) {
    return withNode<const char*>("nemraNode_listClass", handle, "",
                                 [](Node& node) { return node.nodeClass().listClass.c_str(); });
}

bool nemraNode_isListType(nemra_onode_t* handle) {
    return withNode("nemraNode_isListType", handle, false, [](Node& node) { return !node.nodeClass().listClass.empty(); });
}

bool nemraNode_setName(nemra_onode_t* handle, const char* name) {
    return withNode("nemraNode_setName", handle, false, [&](Node& node) {
        SceneObject::rename(node, readableText(viewOf(name)));
        return true;
    });
}

void nemraNode_setComments(nemra_onode_t* handle, const char* comments) {
    withNode("nemraNode_setComments", handle, false, [&](Node& node) {
        node.setComments(readableText(viewOf(comments)));
        return true;
    });
}
