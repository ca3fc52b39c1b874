/// Whether two nodes are equal, down to the kinds of cells.
#pragma once

#include <gtest/gtest.h>

#include "engine/node/node.h"

namespace nemra::test {

inline void expectSame(const node::Node& a, const node::Node& b) {
    if (&a == &b) return;
    SCOPED_TRACE(a.label());
    EXPECT_EQ(a.label(), b.label());
    EXPECT_EQ(a.comments(), b.comments());
    const auto left = a.activeParameters();
    const auto right = b.activeParameters();
    ASSERT_EQ(left.size(), right.size());
    for (std::size_t i = 0; i < left.size(); ++i) {
        EXPECT_EQ(left[i].spec, right[i].spec);
        EXPECT_TRUE(*left[i].value == *right[i].value)
            << left[i].spec->name << ": " << toText(*left[i].value) << " and " << toText(*right[i].value);
    }
    for (const auto& slot : a.nodeClass().rawSlots) {
        const node::Value* const mine = a.rawSlot(slot.name);
        const node::Value* const theirs = b.rawSlot(slot.name);
        ASSERT_EQ(mine == nullptr, theirs == nullptr) << slot.name;
        EXPECT_TRUE(mine == nullptr || *mine == *theirs) << slot.name;
    }
    for (const auto& slot : a.nodeClass().children) expectSame(*a.child(slot.name), *b.child(slot.name));
    ASSERT_EQ(a.list().size(), b.list().size());
    for (std::size_t i = 0; i < a.list().size(); ++i) expectSame(*a.list()[i], *b.list()[i]);
}

}  // namespace nemra::test
