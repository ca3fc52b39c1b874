#include "engine/node/node_handle.h"

#include <utility>

#include "engine/common/slot_table.h"

namespace nemra::node {

std::shared_ptr<Node> findNode(const nemra_onode_t* handle) noexcept { return nemra::find<Node>(handle); }

nemra_onode_t* handleOf(const std::shared_ptr<Node>& node, Hold hold) {
    if (!node) return nullptr;
    SlotTable& table = SlotTable::of(Kind::node);
    if (hold == Hold::passing) node->setPassing(true);
    std::uint64_t id = node->handleId();
    if (id == 0) {
        const std::uint64_t made = table.publish(node, hold != Hold::none);
        id = node->adoptHandleId(made);
        if (id == made) return toHandle<nemra_onode_t>(id);
        table.retire(made);  // another thread was quicker
    }
    if (hold != Hold::none) table.hold(id, node);
    return toHandle<nemra_onode_t>(id);
}

void releaseHandle(nemra_onode_t** handle) {
    if (!handle || !*handle) return;
    const std::shared_ptr<void> held = SlotTable::of(Kind::node).letGo(toId(std::exchange(*handle, nullptr)));
}

void passToParent(nemra_onode_t* handle) {
    const auto node = findNode(handle);
    if (node && node->isPassing()) {
        node->setPassing(false);
        const std::shared_ptr<void> held = SlotTable::of(Kind::node).letGo(toId(handle));
    }
}

}  // namespace nemra::node
