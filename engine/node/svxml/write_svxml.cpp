#include "engine/node/svxml/svxml.h"
#include "engine/node/svxml/write_parts.h"

namespace nemra::node {

Buffer writeSvxml(const Scene& scene) {
    const MaterialNames names(scene);
    svxml::XmlWriter writer;
    {
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
    return std::move(writer).take();
}

Buffer writeSvxml(const Node& node) {
    svxml::XmlWriter writer;
    svxml::writeNode(writer, node);
    return std::move(writer).take();
}

Buffer writeSvxml(const Geometry& geometry) {
    svxml::XmlWriter writer;
    svxml::writeGeometry(writer, geometry, MaterialNames());
    return std::move(writer).take();
}

Buffer writeSvxml(const Instance& instance) {
    svxml::XmlWriter writer;
    svxml::writeInstance(writer, instance, MaterialNames());
    return std::move(writer).take();
}

}  // namespace nemra::node
