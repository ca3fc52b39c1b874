/// What a family unit needs: one line makes the family's binder out of the catalogue. Only what depends on the class's type is a
/// template here; all else is compiled once, in the generator.
#pragma once

#include <type_traits>

#include "nodes/documentation.h"
#include "nodes/generator.h"
#include "nodes/node_classes.h"
#include "nodes/raw_data.h"

namespace NemraNode::nodes {

template <class P>
void bindNodeClass(py::module_& familyModule, const char* family, const char* pythonName) {
    static_assert(std::is_standard_layout_v<P> && sizeof(P) == sizeof(Node), "generated methods take a P for a Node");
    const std::string path = std::string(family) + "/" + static_cast<const char*>(P::kPage);
    py::class_<P, Node, Nemra::CHandler<nemra_onode_t>, std::shared_ptr<P>> pyClass(familyModule, pythonName,
                                                                                    nodeDocString(pythonName, path).c_str());
    pyClass.def(py::init<const std::string&>(), py::arg("name"));
    const GeneratedClass target{family, P::kType, &typeid(P), pyClass};
    bindParametersAndChildren(target);
    bindRawData(target);
}

}  // namespace NemraNode::nodes

#define NEMRA_BIND_CLASS(Class) bindNodeClass<Class>(familyModule, kFamily, #Class);
#define NEMRA_BIND_CLASS_NAMED(Class, Type) NEMRA_BIND_CLASS(Class)
#define NEMRA_FAMILY_BINDER(Family)                                      \
    namespace NemraNode::nodes::Family {                                 \
    void bindFamily(py::module_& nodes, std::string) {                   \
        py::module_ familyModule = makeFamilyModule(nodes, kFamily);     \
        NEMRA_CLASSES_##Family(NEMRA_BIND_CLASS, NEMRA_BIND_CLASS_NAMED) \
    }                                                                    \
    }
