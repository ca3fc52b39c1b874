// From the engine's two words to the Python class. Each comparison asks the engine anew: a node may change behind its handle.
#include "nodes/node_classes.h"

namespace NemraNode::nodes {

namespace {

#define NEMRA_MATCH(Class) \
    if (node.typeName() == static_cast<const char*>(Class::kType)) return &typeid(Class);
#define NEMRA_MATCH_NAMED(Class, Type) NEMRA_MATCH(Class)
#define NEMRA_FAMILY_TYPES(Family)                                             \
    const std::type_info* findIn_##Family(const Node& node) {                  \
        using namespace Family;                                                \
        NEMRA_CLASSES_##Family(NEMRA_MATCH, NEMRA_MATCH_NAMED) return nullptr; \
    }
NEMRA_FAMILIES(NEMRA_FAMILY_TYPES)

const std::type_info* findClass(const Node& node) {
#define NEMRA_TRY_FAMILY(Family) \
    if (node.className() == static_cast<const char*>(Family::kFamily)) return findIn_##Family(node);
    NEMRA_FAMILIES(NEMRA_TRY_FAMILY)
    return nullptr;
}

}  // namespace

}  // namespace NemraNode::nodes

namespace pybind11 {

const void* polymorphic_type_hook<NemraNode::nodes::Node>::get(const NemraNode::nodes::Node* node, const std::type_info*& type) {
    type = node ? NemraNode::nodes::findClass(*node) : nullptr;
    return node;
}

}  // namespace pybind11
