// The engine's classes beside those that the Python module makes classes for. One that only the module knows would be left
// without any method; one that only the engine knows could not be made in a script.
#include <gtest/gtest.h>

#include <cctype>
#include <initializer_list>
#include <set>
#include <string>

#include "engine/node/node_class.h"
#include "nodes/catalogue.h"

namespace nemra::node {
namespace {

std::string typeOf(std::string className) {
    className[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(className[0])));
    return className;
}

std::set<std::string> listedClasses() {
    std::set<std::string> listed;
#define NEMRA_LIST_CLASS(Class) typeOf(#Class),
#define NEMRA_LIST_CLASS_AS(Class, type) type,
#define NEMRA_LIST_FAMILY(family)                                                                             \
    for (const std::string& type :                                                                            \
         std::initializer_list<std::string>{NEMRA_CLASSES_##family(NEMRA_LIST_CLASS, NEMRA_LIST_CLASS_AS)}) { \
        listed.insert(#family "/" + type);                                                                    \
    }
    NEMRA_FAMILIES(NEMRA_LIST_FAMILY)
#undef NEMRA_LIST_FAMILY
#undef NEMRA_LIST_CLASS_AS
#undef NEMRA_LIST_CLASS
    return listed;
}

TEST(ClassList, IsTheSameInEngineAndModule) {
    registerClasses();
    const std::set<std::string> listed = listedClasses();
    EXPECT_EQ(listed.size(), 197U);
    std::set<std::string> known;
    for (const NodeClass* const nodeClass : allClasses()) known.insert(nodeClass->family + '/' + nodeClass->type);
    for (const std::string& name : listed) EXPECT_TRUE(known.contains(name)) << name << " is missing in the engine";
    for (const std::string& name : known) EXPECT_TRUE(listed.contains(name)) << name << " is missing in the module";
}

}  // namespace
}  // namespace nemra::node
