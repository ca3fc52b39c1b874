// Nodes as bytes through the flat interface.
#include "engine/common/guarded.h"
#include "engine/common/text.h"
#include "engine/node/api/serialize.h"
#include "engine/node/node_handle.h"
#include "module/flat/nemra_node.h"

using namespace nemra;
using namespace nemra::node;

char* nemraNode_serialize(nemra_onode_t* node, int format, uint32_t* size) {
    if (size != nullptr) *size = 0;
    return guarded<char*>("nemraNode_serialize", nullptr, [&]() -> char* {
        const auto found = findNode(node);
        return found ? serialize("nemraNode_serialize", *found, format, size) : callersText("");
    });
}
