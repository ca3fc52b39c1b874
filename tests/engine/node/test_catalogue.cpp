// A walk over all node classes: what a script meets at import, and what an untouched node is.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <functional>
#include <map>
#include <set>

#include "engine/node/catalogue/build.h"
#include "engine/node/node.h"

namespace nemra::node {
namespace {

void visitAll(const std::vector<ParameterSpec>& parameters, const std::function<void(const ParameterSpec&)>& visit) {
    for (const ParameterSpec& spec : parameters) {
        visit(spec);
        for (const OptionSpec& option : spec.options) visitAll(option.parameters, visit);
    }
}

bool isNumber(const ParameterSpec& spec) {
    return spec.type == NEMRA_PARAMETER_REAL || spec.type == NEMRA_PARAMETER_INTEGER || spec.type == NEMRA_PARAMETER_VECTOR ||
           spec.type == NEMRA_PARAMETER_MATRIX2 || spec.type == NEMRA_PARAMETER_MATRIX3;
}
bool hasLimits(const ParameterSpec& spec) {
    return !isNumber(spec) || (std::isfinite(spec.minimum) && std::isfinite(spec.maximum));
}

class EveryClass : public testing::Test {
protected:
    void SetUp() override { registerClasses(); }
};

TEST_F(EveryClass, DescribesItsParameters) {
    ASSERT_FALSE(allClasses().empty());
    for (const NodeClass* const nodeClass : allClasses()) {
        SCOPED_TRACE(nodeClass->family + '/' + nodeClass->type);
        EXPECT_EQ(findClass(nodeClass->family, nodeClass->type), nodeClass);
        visitAll(nodeClass->parameters, [](const ParameterSpec& spec) {
            SCOPED_TRACE(spec.name);
            std::string why;
            Value value = spec.defaultValue;
            EXPECT_TRUE(acceptValue(spec, value, why)) << why;
            EXPECT_EQ(value, spec.defaultValue) << "the default is kept in another form than what is set";
            for (const ParameterSpec& column : spec.columns) EXPECT_FALSE(column.doc.empty());
            std::set<std::string> options;
            for (const OptionSpec& option : spec.options) EXPECT_TRUE(options.insert(option.name).second) << option.name;
            EXPECT_TRUE(hasLimits(spec)) << "a number without limits";
            for (const ParameterSpec& column : spec.columns) EXPECT_TRUE(hasLimits(column)) << column.name;
        });
    }
}

// Bindings make getX and setX from a name, parameters first. A child that shares its name with a parameter, and a method of every
// node that a parameter hides, could not be reached any more.
TEST_F(EveryClass, HasNamesThatABindingCanOffer) {
    const std::set<std::string> taken{"setName", "setComments", "setChild", "getChild", "getChildList", "getListChild", "getPtr"};
    for (const NodeClass* const nodeClass : allClasses()) {
        SCOPED_TRACE(nodeClass->family + '/' + nodeClass->type);
        std::set<std::string> slots;
        for (const ChildSpec& child : nodeClass->children) EXPECT_TRUE(slots.insert(child.name).second);
        visitAll(nodeClass->parameters, [&](const ParameterSpec& spec) {
            std::string capital = spec.name;
            capital[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(capital[0])));
            EXPECT_FALSE(slots.contains(spec.name)) << spec.name;
            EXPECT_FALSE(taken.contains("get" + capital) || taken.contains("set" + capital)) << spec.name;
        });
    }
}

TEST_F(EveryClass, MakesNodesWithDefaultChildren) {
    for (const NodeClass* const nodeClass : allClasses()) {
        SCOPED_TRACE(nodeClass->family + '/' + nodeClass->type);
        Node node(*nodeClass, "n");
        for (const Node::Setting& setting : node.activeParameters()) {
            EXPECT_TRUE(setting.isDefault);
            std::string why;
            if (setting.spec->type == NEMRA_PARAMETER_INFO) continue;
            EXPECT_TRUE(node.set(setting.spec->name, *setting.value, why)) << why;
            EXPECT_TRUE(node.findParameter(setting.spec->name).isDefault);
        }
        for (const ChildSpec& child : nodeClass->children) {
            EXPECT_TRUE(node.isDefaultChild(child.name));
            EXPECT_EQ(node.child(child.name)->name(), child.name);
            EXPECT_EQ(node.child(child.name)->type(), child.defaultType);
            for (const auto& [name, value] : child.defaults) EXPECT_EQ(*node.child(child.name)->findParameter(name).value, value);
            EXPECT_EQ(node.mutableChild(child.name)->family(), child.family);
            EXPECT_TRUE(node.isDefaultChild(child.name)) << "asking for it isn't changing it";
            EXPECT_EQ(node.child(child.name), node.mutableChild(child.name));
        }
    }
}

// A binding makes one pair of methods for all parameters of one name in a class, and binds it to the choice at the top under
// which it met the name first. So a name must not come up under two of them, nor in two kinds or units.
TEST_F(EveryClass, UsesEachNameInOnePlaceAndKind) {
    for (const NodeClass* const nodeClass : allClasses()) {
        SCOPED_TRACE(nodeClass->family + '/' + nodeClass->type);
        std::map<std::string, std::pair<const ParameterSpec*, const ParameterSpec*>> seen;  // the parameter, and that at the top
        for (const ParameterSpec& top : nodeClass->parameters) {
            const auto meet = [&](const ParameterSpec& spec) {
                const auto [first, isNew] = seen.try_emplace(spec.name, &spec, &top);
                if (isNew) return;
                EXPECT_EQ(first->second.second, &top) << spec.name << " comes up under two parameters";
                EXPECT_EQ(first->second.first->type, spec.type) << spec.name;
                EXPECT_EQ(first->second.first->unit, spec.unit) << spec.name;
            };
            meet(top);
            for (const OptionSpec& option : top.options) visitAll(option.parameters, meet);
        }
    }
}

// Names are typed as they stand in scripts: only small letters, digits and underscores survive as a keyword of a method.
TEST_F(EveryClass, HasNamesThatAScriptCanType) {
    const auto isPlain = [](const std::string& name) {
        return !name.empty() && std::islower(static_cast<unsigned char>(name[0])) &&
               std::all_of(name.begin(), name.end(),
                           [](unsigned char c) { return std::islower(c) || std::isdigit(c) || c == '_'; });
    };
    for (const NodeClass* const nodeClass : allClasses()) {
        SCOPED_TRACE(nodeClass->family + '/' + nodeClass->type);
        for (const ChildSpec& child : nodeClass->children) EXPECT_TRUE(isPlain(child.name)) << child.name;
        for (const RawSlotSpec& slot : nodeClass->rawSlots) {
            EXPECT_TRUE(isPlain(slot.name)) << slot.name;
            EXPECT_FALSE(slot.doc.empty()) << slot.name;
        }
        visitAll(nodeClass->parameters, [&](const ParameterSpec& spec) {
            EXPECT_TRUE(isPlain(spec.name)) << spec.name;
            for (const OptionSpec& option : spec.options) EXPECT_TRUE(isPlain(option.name)) << spec.name << ' ' << option.name;
            for (const ParameterSpec& column : spec.columns) EXPECT_TRUE(isPlain(column.name)) << spec.name << ' ' << column.name;
        });
    }
}

// A class that comes up again in the tree of its own default children would never end.
TEST_F(EveryClass, HasFiniteDefaultTrees) {
    std::vector<const NodeClass*> path;
    const std::function<void(const NodeClass&)> descend = [&](const NodeClass& nodeClass) {
        const bool isLoop = std::find(path.begin(), path.end(), &nodeClass) != path.end();
        ASSERT_FALSE(isLoop) << path.front()->family << '/' << path.front()->type << " contains itself";
        path.push_back(&nodeClass);
        for (const ChildSpec& child : nodeClass.children) {
            const NodeClass* const childClass = findClass(child.family, child.defaultType);
            ASSERT_NE(childClass, nullptr);
            descend(*childClass);
        }
        path.pop_back();
    };
    for (const NodeClass* const nodeClass : allClasses()) {
        path.clear();
        descend(*nodeClass);
        const bool listsAFamily = nodeClass->listClass.empty() ||
                                  std::any_of(allClasses().begin(), allClasses().end(),
                                              [&](const NodeClass* other) { return other->family == nodeClass->listClass; });
        EXPECT_TRUE(listsAFamily) << nodeClass->family << '/' << nodeClass->type << " lists " << nodeClass->listClass;
    }
}

// Every option of every choice can be selected, brings exactly its parameters, and each of them can be set.
TEST_F(EveryClass, SelectsEveryOption) {
    for (const NodeClass* const nodeClass : allClasses()) {
        for (const ParameterSpec& choice : nodeClass->parameters) {
            for (const OptionSpec& option : choice.options) {
                SCOPED_TRACE(nodeClass->family + '/' + nodeClass->type + ' ' + choice.name + '=' + option.name);
                Node node(*nodeClass, "n");
                std::string why;
                ASSERT_TRUE(node.set(choice.name, Value{option.name}, why)) << why;
                for (const OptionSpec& other : choice.options) {
                    for (const ParameterSpec& nested : other.parameters) {
                        const auto found = node.findParameterBelow(choice, nested.name);
                        EXPECT_EQ(found.spec == &nested, &other == &option) << nested.name;
                    }
                }
            }
        }
    }
}

TEST(Catalogue, RefusesUnfinishedEntries) {
    EXPECT_THROW(ParameterSpec(real("x", 1.0).doc("No unit")), std::logic_error);
    EXPECT_THROW(ParameterSpec(real("x", 1.0).pure()), std::logic_error);
    EXPECT_THROW(ParameterSpec(real("x", 2.0).pure().range(0.0, 1.0).doc("Default out of range")), std::logic_error);
    EXPECT_THROW(ParameterSpec(choice("x").doc("No options")), std::logic_error);
    EXPECT_THROW(ParameterSpec(matrix2("x").doc("No unit")), std::logic_error);
    const ParameterSpec values = table("values").column(integer("row", 0).pure().range(0, 9).doc("Row")).doc("Values");
    EXPECT_THROW(ParameterSpec(choice("x").option("measured", "Table below", {values}).doc("Choice")), std::logic_error);
}

}  // namespace
}  // namespace nemra::node
