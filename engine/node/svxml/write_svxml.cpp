#include "engine/node/svxml/limits.h"
#include "engine/node/svxml/svxml.h"
#include "engine/node/svxml/write_parts.h"

namespace nemra::node {

std::string writeSvxml(const Scene& scene) {
    svxml::XmlWriter writer;
    {
        const svxml::Element element(writer, "scene");
        writer.attribute("version", svxml::kVersion);
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
        }
        for (const auto& node : scene.nodes) svxml::writeNode(writer, *node);
        for (const auto& geometry : scene.geometries) svxml::writeGeometry(writer, *geometry, &scene);
        for (const auto& instance : scene.instances) svxml::writeInstance(writer, *instance, &scene);
    }
    return std::move(writer).take();
}

std::string writeSvxml(const Node& node) {
    svxml::XmlWriter writer;
    svxml::writeNode(writer, node);
    return std::move(writer).take();
}

std::string writeSvxml(const Geometry& geometry) {
    svxml::XmlWriter writer;
    svxml::writeGeometry(writer, geometry, nullptr);
    return std::move(writer).take();
}

std::string writeSvxml(const Instance& instance) {
    svxml::XmlWriter writer;
    svxml::writeInstance(writer, instance, nullptr);
    return std::move(writer).take();
}

}  // namespace nemra::node
