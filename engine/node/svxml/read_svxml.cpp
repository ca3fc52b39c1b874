#include "engine/common/log.h"
#include "engine/node/svxml/numbers.h"
#include "engine/node/svxml/read_parts.h"
#include "engine/node/svxml/svxml.h"

namespace nemra::node {

namespace svxml {

namespace {

void checkSvxmlVersion(const Source& source, pugi::xml_node element) {
    const pugi::xml_attribute attribute = element.attribute("version");
    if (!attribute) return;
    int version = 0;
    if (parseNumber(std::string_view(attribute.value()), version) != NumberFault::none || version < 1)
        throw Fault{source.offsetOf(attribute), "version isn't a number from 1"};
    if (version > kSvxmlVersion)
        throw Fault{source.offsetOf(attribute), "written in version " + std::to_string(version) +
                                                    " of the form, this reader knows versions up to " +
                                                    std::to_string(kSvxmlVersion)};
}

}  // namespace

Scene readScene(Source& source, pugi::xml_node element) {
    if (std::string_view(element.name()) != "scene")
        source.fail(element, "element 'scene' expected, not '" + std::string(element.name()) + "'");
    source.checkAttributes(element, {"version", "name", "active_setup"});
    checkSvxmlVersion(source, element);
    Scene scene;
    scene.name = element.attribute("name").value();
    scene.activeSetup = element.attribute("active_setup").value();
    for (const pugi::xml_node part : element.children()) {
        const std::string_view name = part.name();
        if (name == "node") {
            if (auto node = readNode(source, part)) {
                source.report().named(source.offsetOf(part), node->label());
                scene.nodes.push_back(std::move(node));
            }
        } else if (isGeometryElement(name)) {
            scene.geometries.push_back(readGeometry(source, part));
            source.report().named(source.offsetOf(part), "geometry '" + scene.geometries.back()->name + "'");
        } else if (name == "instance") {
            scene.instances.push_back(readInstance(source, part));
        } else if (name == "search_path") {
            source.checkAttributes(part, {"path"});
            scene.searchPaths.emplace_back(source.required(part, "path"));
        } else if (name == "import") {
            source.checkAttributes(part, {"path", "prefix", "unit", "up", "instances"});
            scene.imports.push_back({.path = std::string(source.required(part, "path")),
                                     .prefix = part.attribute("prefix").value(),
                                     .frame = readFrame(source, part),
                                     .instances = source.flag(part, "instances", true)});
        } else {
            source.warnUnknown(part);
        }
    }
    return scene;
}

}  // namespace svxml

namespace {

/// Runs `body` on the parsed text and turns a Fault into one error message.
template <class Body>
bool read(svxml::Text text, std::string_view origin, Unknown unknown, Body&& body) {
    try {
        svxml::Source source(text, origin, unknown);
        body(source, source.root());
        source.report().finish();
        return true;
    } catch (const Fault& fault) {
        log::error(text.placeOf(fault.at), fault.text);
    } catch (const std::bad_alloc&) {
        log::error(origin, "not enough memory to read this");
    }
    return false;
}

}  // namespace

bool readSvxml(std::span<const char> text, std::string_view origin, Scene& scene, Unknown unknown) {
    return read({text, origin, false}, origin, unknown,
                [&](svxml::Source& source, pugi::xml_node root) { scene = svxml::readScene(source, root); });
}

bool readSvxml(Buffer text, std::string_view origin, Scene& scene, Unknown unknown) {
    return read({text.bytes(), origin, true}, origin, unknown,
                [&](svxml::Source& source, pugi::xml_node root) { scene = svxml::readScene(source, root); });
}

std::shared_ptr<Node> readSvxmlNode(std::span<const char> text, std::string_view origin, Unknown unknown) {
    std::shared_ptr<Node> node;
    read({text, origin, false}, origin, unknown, [&](svxml::Source& source, pugi::xml_node root) {
        if (std::string_view(root.name()) != "node")
            source.fail(root, "element 'node' expected, not '" + std::string(root.name()) + "'");
        node = svxml::readNode(source, root);
    });
    return node;
}

std::shared_ptr<Geometry> readSvxmlGeometry(std::span<const char> text, std::string_view origin, Unknown unknown) {
    std::shared_ptr<Geometry> geometry;
    read({text, origin, false}, origin, unknown, [&](svxml::Source& source, pugi::xml_node root) {
        if (!svxml::isGeometryElement(root.name()))
            source.fail(root, "element 'mesh', 'sphere' or 'cone' expected, not '" + std::string(root.name()) + "'");
        geometry = svxml::readGeometry(source, root);
    });
    return geometry;
}

std::shared_ptr<Instance> readSvxmlInstance(std::span<const char> text, std::string_view origin, Unknown unknown) {
    std::shared_ptr<Instance> instance;
    read({text, origin, false}, origin, unknown, [&](svxml::Source& source, pugi::xml_node root) {
        if (std::string_view(root.name()) != "instance")
            source.fail(root, "element 'instance' expected, not '" + std::string(root.name()) + "'");
        instance = svxml::readInstance(source, root);
    });
    return instance;
}

}  // namespace nemra::node
