#include "engine/node/svxml/svxml.h"
#include "engine/node/svxml/write_parts.h"

namespace nemra::node {

namespace {

void write(svxml::XmlWriter& writer, const Scene& scene) {
    const MaterialNames names(scene);
    const svxml::Element element(writer, "scene");
    writer.attribute("version", kSvxmlVersion);
    writer.attribute("name", scene.name);
    if (!scene.activeSetup.empty()) writer.attribute("active_setup", scene.activeSetup);
    for (const std::string& path : scene.searchPaths) {
        const svxml::Element searchPath(writer, "search_path");
        writer.attribute("path", path);
    }
    for (const Import& import : scene.imports) {
        const svxml::Element importElement(writer, "import");
        writer.attribute("path", import.path);
        if (!import.prefix.empty()) writer.attribute("prefix", import.prefix);
        svxml::writeFrame(writer, import.frame);
        if (!import.instances) writer.attribute("instances", "false");
    }
    for (const auto& node : scene.nodes) svxml::writeNode(writer, *node);
    for (const auto& geometry : scene.geometries) svxml::writeGeometry(writer, *geometry, names);
    for (const auto& instance : scene.instances) svxml::writeInstance(writer, *instance, names);
}

void write(svxml::XmlWriter& writer, const Node& node) { svxml::writeNode(writer, node); }
void write(svxml::XmlWriter& writer, const Geometry& geometry) { svxml::writeGeometry(writer, geometry, MaterialNames()); }
void write(svxml::XmlWriter& writer, const Instance& instance) { svxml::writeInstance(writer, instance, MaterialNames()); }

template <class Object>
Buffer writeAll(const Object& object, HandOut handOut) {
    svxml::XmlWriter writer(std::move(handOut));
    write(writer, object);
    return std::move(writer).take();
}

}  // namespace

Buffer writeSvxml(const Scene& scene, HandOut handOut) { return writeAll(scene, std::move(handOut)); }
Buffer writeSvxml(const Node& node, HandOut handOut) { return writeAll(node, std::move(handOut)); }
Buffer writeSvxml(const Geometry& geometry, HandOut handOut) { return writeAll(geometry, std::move(handOut)); }
Buffer writeSvxml(const Instance& instance, HandOut handOut) { return writeAll(instance, std::move(handOut)); }

}  // namespace nemra::node
