/// The C++ types of all node classes, made from the catalogue: NemraNode::nodes::<family>::<Class>.
#pragma once

#include <cstddef>
#include <string>

#include "nodes/catalogue.h"
#include "nodes/node.h"

namespace NemraNode::nodes {

/// A word of the catalogue as a constant.
template <std::size_t N>
struct Word {
    char text[N] = {};
    constexpr operator const char*() const { return text; }
};

template <std::size_t N>
constexpr Word<N> word(const char (&literal)[N]) {
    Word<N> result;
    for (std::size_t i = 0; i < N; ++i) result.text[i] = literal[i];
    return result;
}

template <std::size_t N>
constexpr Word<N> smallFirst(const char (&literal)[N]) {
    Word<N> result = word(literal);
    if (result.text[0] >= 'A' && result.text[0] <= 'Z') result.text[0] += 'a' - 'A';
    return result;
}

}  // namespace NemraNode::nodes

/// kType is the engine's type name; kPage, with the family before it, the class's path.
#define NEMRA_NODE_CLASS_AS(Class, Type)                                                \
    class Class : public Node {                                                         \
    public:                                                                             \
        static constexpr auto kType = Type;                                             \
        static constexpr auto kPage = smallFirst(#Class);                               \
        explicit Class(const std::string& name) : Node(kFamily, kType, name.c_str()) {} \
    };
#define NEMRA_NODE_CLASS(Class) NEMRA_NODE_CLASS_AS(Class, smallFirst(#Class))
#define NEMRA_NODE_CLASS_NAMED(Class, Type) NEMRA_NODE_CLASS_AS(Class, word(Type))

// clang-format off: a list and a declaration without a semicolon between
#define NEMRA_NODE_FAMILY(Family)                                                                              \
    namespace NemraNode::nodes::Family {                                                                       \
    inline constexpr auto kFamily = word(#Family);                                                             \
    NEMRA_CLASSES_##Family(NEMRA_NODE_CLASS, NEMRA_NODE_CLASS_NAMED) void bindFamily(py::module_& nodes,       \
                                                                                     std::string packageName); \
    }
// clang-format on

NEMRA_FAMILIES(NEMRA_NODE_FAMILY)

#undef NEMRA_NODE_FAMILY
#undef NEMRA_NODE_CLASS_NAMED
#undef NEMRA_NODE_CLASS
#undef NEMRA_NODE_CLASS_AS
