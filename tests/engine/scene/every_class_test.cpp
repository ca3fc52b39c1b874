// A walk over the catalogue: a node of each class, with everything off its default, comes back equal from each encoding.
#include <gtest/gtest.h>

#include <set>

#include "engine/node/encoding/encode.h"
#include "tests/engine/scene/changed_node.h"
#include "tests/engine/scene/messages.h"
#include "tests/engine/scene/same_nodes.h"
#include "tests/engine/scene/small_scene.h"

namespace nemra::node {
namespace {

using test::changedNode;
using test::expectSame;
using test::Messages;
using test::svxmlOf;

class EncodedClass : public testing::Test {
protected:
    static void SetUpTestSuite() { registerClasses(); }
};

void expectBackFromBoth(const Node& node) {
    Messages messages;
    const std::string text = svxmlOf(node);
    const Buffer bytes = writeSvbin(node);
    const auto fromText = readSvxmlNode(text, "text");
    const auto fromBytes = readSvbinNode(bytes.bytes(), "bytes");
    ASSERT_TRUE(fromText && fromBytes) << messages.text() << text;
    EXPECT_EQ(messages.text(), "") << text;
    expectSame(node, *fromText);
    expectSame(node, *fromBytes);
    EXPECT_EQ(svxmlOf(*fromText), text);
    EXPECT_EQ(svxmlOf(*fromBytes), text);
    EXPECT_EQ(writeSvbin(*fromText).text(), bytes.text());
}

TEST_F(EncodedClass, Untouched) {
    for (const NodeClass* nodeClass : allClasses()) {
        const Node node(*nodeClass, "n");
        EXPECT_EQ(svxmlOf(node), "<node family=\"" + nodeClass->family + "\" type=\"" + nodeClass->type + "\" name=\"n\"/>\n");
        EXPECT_LT(writeSvbin(node).size(), 200U);
        expectBackFromBoth(node);
    }
}

TEST_F(EncodedClass, AllOffTheirDefaults) {
    for (const NodeClass* nodeClass : allClasses()) {
        SCOPED_TRACE(nodeClass->family + '/' + nodeClass->type);
        std::set<const OptionSpec*> selected;
        for (int variant = 0; variant < test::variantsOf(*nodeClass); ++variant) {
            const auto node = changedNode(*nodeClass, "n", variant);
            for (const auto& setting : node->activeParameters())
                if (setting.spec->type == NEMRA_PARAMETER_CHOICE)
                    selected.insert(findOption(*setting.spec, std::get<std::string>(setting.value->data)));
            expectBackFromBoth(*node);
            if (HasFailure()) return;
        }
        for (const ParameterSpec& spec : nodeClass->parameters)
            for (const OptionSpec& option : spec.options) EXPECT_TRUE(selected.contains(&option)) << option.name;
    }
}

// A child that was changed and then got its defaults again, and a value that is the class's default but not the slot's.
TEST_F(EncodedClass, BackAtItsDefaults) {
    for (const NodeClass* nodeClass : allClasses()) {
        Node node(*nodeClass, "n");
        for (std::size_t i = 0; i < nodeClass->children.size(); ++i) {
            Node& child = *node.mutableChild(nodeClass->children[i].name);
            // A choice takes with it what its option brought, so ask again after each change.
            for (std::size_t k = 0; k < child.activeParameters().size(); ++k) {
                const auto setting = child.activeParameters()[k];
                std::string why;
                if (setting.spec->type == NEMRA_PARAMETER_INFO) continue;
                EXPECT_TRUE(child.set(setting.spec->name, setting.spec->defaultValue, why)) << why;
            }
        }
        expectBackFromBoth(node);
    }
}

}  // namespace
}  // namespace nemra::node
