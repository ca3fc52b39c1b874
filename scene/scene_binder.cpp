#include "module/binders.h"
#include "module/bound_class.h"
#include "scene/scene.h"

namespace NemraNode {

namespace {

using SceneClass = Nemra::BoundClass<Scene, Nemra::CHandler<nemra_scene_t>, std::shared_ptr<Scene>>;

constexpr const char* kAddNode =
    "Add an Node to the scene, this method copies the node and put it in the scene, you can choose to delete the original from "
    "memory (keepOriginal=False) or to keep it";

constexpr const char* kAddInstance = R"( "Add an Instance to the scene, 

**layers** is an array of arrays that represents layers.

See the example to understand how to configure nested layers.

.. code-block:: python

    scene = nemra.nodes.Scene("my_scene")
    setup = nemra.nodes.setup.Default("default")

    layer_main = nemra.nodes.layer.Generic("main")
    layer_0 = nemra.nodes.layer.Generic("layer_0")
    layer_1 = nemra.nodes.layer.Generic("layer_1")

    layer_0.setChild(layer_1)
    layer_main.setChild(layer_0)

    setup.setLayers(layer_main)
    scene.add(setup)

    sphere = nemra.nodes.geometries.Sphere("sphere", 4.0)
    scene.add(sphere)

    instance0 = nemra.nodes.Instance()
    instance0.setGeometryName("sphere")
    instance1 = instance0.copy()

    # makes instance0 to be in layer layer_0
    scene.add(instance0, [[layer_0.name()]])

    # makes instance1 to be in layer_0/layer_1
    scene.add(instance1, [[layer_0.name()],[layer_0.name(), layer_1.name()]])

.. note::

    This method copies the instance and put it in the scene.
    you can choose to delete the original from memory (keepOriginal=False) or to keep it"))";

constexpr const char* kWrite = R"(write scene to a file object or a BytesIO

Usage:

.. code-block:: python

    # You can save a scene as svxml, svbin, svxmlz, svbinz (z means gzipped).
    # It can be saved in a file or in a io.BytesIO or io.StringIO
    # Make sure to use binary streams (open with 'b' or BytesIO) for non ascii format (all but svxml)

    import io

    # assuming an sarvo.nemra.nodes.Scene scene has been created and filled.

    with open("scene.svxml", 'w') as f:
        scene.write(f, nemra.nodes.Scene.Format.SVXML)

    with open("scene.svbin", 'wb') as f:
        scene.write(f, nemra.nodes.Scene.Format.SVBIN)

    with open("scene.svbin", 'wb') as f:
        scene.write(f, nemra.nodes.Scene.Format.SVXMLZ)

    with open("scene.svbin", 'wb') as f:
        scene.write(f, nemra.nodes.Scene.Format.SVBINZ)

    bin=io.BytesIO()
    scene.write(bin, nemra.nodes.Scene.Format.SVBIN)

    bin=io.StringIO()
    scene.write(bin, nemra.nodes.Scene.Format.SVXML)
)";

void bindFormat(const SceneClass& scene) {
    py::enum_<nemraScene_format>(scene, "Format", py::arithmetic(), "Enum for scene format options")
        .value("SVXML", SVXML, "Ascii xml format")
        .value("SVBIN", SVBIN, "Binary format")
        .value("SVXMLZ", SVXMLZ, "Ascii gziped xml format")
        .value("SVBINZ", SVBINZ, "Binary gziped binary format")
        .export_values();
}

/// `add` of one kind of geometry; `argument` is also what the docstring is about.
template <class Shape>
void bindAddGeometry(SceneClass& scene, const char* argument, const char* className) {
    const std::string doc = std::string("Add a ") + className +
                            " to the scene, this method copies the geom and put it in the scene, you can choose to delete the "
                            "original from memory (keepOriginal=False) or to keep it";
    scene.def(
        "add",
        [](const Scene& self, Shape& shape, bool keepOriginal) {
            return AddedGeometry<Shape>{self.add(static_cast<Geometry&>(shape), keepOriginal)};
        },
        py::arg(argument), py::arg("keepOriginal") = true, doc.c_str());
}

/// The order of the overloads of `add` and `remove` is the order in which they are tried.
void bindContents(SceneClass& scene) {
    scene.def(py::init<const std::string&>())
        .def("name", &Scene::name, "Get scene name")
        .def("setName", &Scene::setName, "Set scene name")
        .def("addSearchPath", &Scene::addSearchPath, "Add a path to search for assets")
        .def("setActiveSetup", &Scene::setActiveSetup, "Set the name of the active setup")
        .def("getActiveSetup", &Scene::getActiveSetup, "Get the name of the active setup")
        .def("add", py::overload_cast<nodes::Node&, bool>(&Scene::add, py::const_), py::arg("node"),
             py::arg("keepOriginal") = true, kAddNode)
        .def("remove", py::overload_cast<const nodes::Node&>(&Scene::remove, py::const_), "Remove a node from scene");
    bindAddGeometry<Mesh>(scene, "mesh", "Mesh");
    bindAddGeometry<Cone>(scene, "cone", "Cone");
    bindAddGeometry<Sphere>(scene, "sphere", "Sphere");
    scene.def("remove", py::overload_cast<const Geometry&>(&Scene::remove, py::const_), "Remove a geometry from scene")
        .def("add", py::overload_cast<Instance&, const LayerPaths&, bool>(&Scene::add, py::const_), py::arg("instance"),
             py::arg("layers") = LayerPaths(), py::arg("keepOriginal") = true, kAddInstance)
        .def("addImport", &Scene::addImport, "Add an import tag or load it")
        .def("remove", py::overload_cast<const Instance&>(&Scene::remove, py::const_), "Remove an instance from scene")
        .def("remove", py::overload_cast<std::uint64_t>(&Scene::remove, py::const_),
             "Remove an object from scene using its memory adress. Use scene.remove( obj.getPtr() )")
        .def("clearGeometry", &Scene::clearGeometry, "Clear all geometries")
        .def("clearNodes", &Scene::clearNodes, "Clear all nodes")
        .def("clearInstances", &Scene::clearInstances, "Clear all instances")
        .def("clear", &Scene::clear, "Clear all")
        .def("getNodes", &Scene::getNodes, "Get all nodes from scene")
        .def("findNodes", &Scene::findNodes, py::arg("class_name") = "", py::arg("type_name") = "", py::arg("name") = "",
             "Get node in this scene  with this classname, typename and name")
        .def("getInstances", &Scene::getInstances, "Get all instances from scene")
        .def("getGeometries", &Scene::getGeometries, "Get all geometries from scene")
        .def("getMeshes", &Scene::getMeshes, "Get all geometries of type mesh")
        .def("getSpheres", &Scene::getSpheres, "Get all geometries of type sphere")
        .def("getCones", &Scene::getCones, "Get all geometries of type cone");
}

void bindPersistence(SceneClass& scene) {
    scene.def("read", &Scene::read, "Read an Sarvo'scene from a file")
        .def("readBytes", &Scene::readBytes, "Read an Sarvo'scene from a Bytes object")
        .def("write", &Scene::write, py::arg("file"), py::arg("format") = SVXML, kWrite)
        .def("print", &Scene::print, "Return the scene as str (svxml format)");
}

}  // namespace

void bindScene(py::module_& nodes, std::string) {
    using Handler = Nemra::CHandler<nemra_scene_t>;
    py::class_<Handler, std::shared_ptr<Handler>>(nodes, "CSceneHandler");
    SceneClass scene(nodes, "Scene");
    bindFormat(scene);
    bindContents(scene);
    bindPersistence(scene);
}

}  // namespace NemraNode
