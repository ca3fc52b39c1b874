// The children of a node.
#include "engine/common/text.h"
#include "engine/node/api/opaque.h"
#include "module/flat/nemra_node.h"

using namespace nemra;
using namespace nemra::node;

namespace {

nemra_onode_t** fill(std::vector<nemra_onode_t*>& array, const std::vector<std::shared_ptr<Node>>& nodes, std::uint32_t* count) {
    array.clear();
    for (const auto& node : nodes) array.push_back(handleOf(node));
    if (count) *count = static_cast<std::uint32_t>(array.size());
    return array.data();
}

}  // namespace

nemra_onode_t** nemraNode_children(nemra_onode_t* handle, std::uint32_t* count) {
    if (count) *count = 0;
    return withNode<nemra_onode_t**>("nemraNode_children", handle, nullptr, [&](Node& node) {
        return fill(HandedOut::of(node).children, node.mutableChildren(), count);
    });
}

nemra_onode_t** nemraNode_getChildList(nemra_onode_t* handle, std::uint32_t* count) {
    if (count) *count = 0;
    return withNode<nemra_onode_t**>("nemraNode_getChildList", handle, nullptr,
                                     [&](Node& node) { return fill(HandedOut::of(node).list, node.mutableList(), count); });
}

nemra_onode_t* nemraNode_getChild(nemra_onode_t* handle, const char* name) {
    return withNode<nemra_onode_t*>("nemraNode_getChild", handle, nullptr,
                                    [&](Node& node) { return handleOf(node.findChild(viewOf(name))); });
}

nemra_onode_t* nemraNode_getListChild(nemra_onode_t* handle, const char* name) {
    return withNode<nemra_onode_t*>("nemraNode_getListChild", handle, nullptr,
                                    [&](Node& node) { return handleOf(node.findListChild(viewOf(name))); });
}

bool nemraNode_setChild(nemra_onode_t* parent, nemra_onode_t* child) {
    return withNode("nemraNode_setChild", parent, false, [&](Node& node) {
        std::string why;
        const bool done = node.setChild(findNode(child), why);
        if (done) {
            passToParent(child);
        } else {
            log::warning(node.label(), why);
        }
        return done;
    });
}
