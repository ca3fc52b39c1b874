// Making nodes and giving them back.
#include "engine/common/guarded.h"
#include "engine/common/text.h"
#include "engine/node/encoding/utf8.h"
#include "engine/node/node_handle.h"
#include "module/flat/nemra_node.h"

using namespace nemra;
using namespace nemra::node;

void nemraNode_register() {
    guarded("nemraNode_register", [] { registerClasses(); });
}

nemra_onode_t* nemraNode_create(const char* className, const char* typeName, const char* name) {
    return guarded<nemra_onode_t*>("nemraNode_create", nullptr, [&]() -> nemra_onode_t* {
        const NodeClass* const nodeClass = findClass(viewOf(className), viewOf(typeName));
        return nodeClass ? handleOf(std::make_shared<Node>(*nodeClass, readableText(viewOf(name))), Hold::script) : nullptr;
    });
}

void nemraNode_release(nemra_onode_t** handle) {
    guarded("nemraNode_release", [&] { releaseHandle(handle); });
}

nemra_onode_t* nemraNode_clone(nemra_onode_t* handle) {
    return guarded<nemra_onode_t*>("nemraNode_clone", nullptr, [&]() -> nemra_onode_t* {
        const auto node = findNode(handle);
        return node ? handleOf(node->clone(), Hold::passing) : nullptr;
    });
}

nemra_onode_t* nemraNode_copy(nemra_onode_t* handle) {
    return guarded<nemra_onode_t*>("nemraNode_copy", nullptr, [&]() -> nemra_onode_t* {
        const auto node = findNode(handle);
        return node ? handleOf(node->copy(), Hold::passing) : nullptr;
    });
}
