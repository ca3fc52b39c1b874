#include <set>

#include "engine/common/log.h"
#include "engine/node/svxml/limits.h"
#include "engine/node/svxml/numbers.h"
#include "engine/node/svxml/read_parts.h"
#include "engine/node/svxml/svxml.h"

namespace nemra::node {

namespace svxml {

namespace {

void checkVersion(const Source& source, pugi::xml_node element) {
    const pugi::xml_attribute attribute = element.attribute("version");
    if (!attribute) return;
    int version = 0;
    if (parseNumber(std::string_view(attribute.value()), version) != NumberFault::none || version < 1)
        throw Fault{source.offsetOf(attribute), "version isn't a number from 1"};
    if (version > kVersion)
        throw Fault{source.offsetOf(attribute), "written in version " + std::to_string(version) +
                                                    " of the form, this reader knows versions up to " + std::to_string(kVersion)};
}

/// References by name find the first of a name, so a second one is most likely a slip.
class Names {
public:
    void add(Source& source, pugi::xml_node element, const std::string& label) {
        if (!seen_.insert(label).second)
            source.warn(source.offsetOf(element), "a second " + label + "; references find the first");
    }

private:
    std::set<std::string> seen_;
};

}  // namespace

Scene readScene(Source& source, pugi::xml_node element) {
    if (std::string_view(element.name()) != "scene")
        source.fail(element, "element 'scene' expected, not '" + std::string(element.name()) + "'");
    source.checkAttributes(element, {"version", "name", "active_setup"});
    checkVersion(source, element);
    Scene scene;
    scene.name = element.attribute("name").value();
    scene.activeSetup = element.attribute("active_setup").value();
    Names names;
    for (const pugi::xml_node part : element.children()) {
        const std::string_view name = part.name();
        if (name == "node") {
            scene.nodes.push_back(readNode(source, part));
            names.add(source, part, scene.nodes.back()->label());
        } else if (isGeometryElement(name)) {
            scene.geometries.push_back(readGeometry(source, part));
            names.add(source, part, "geometry '" + scene.geometries.back()->name + "'");
        } else if (name == "instance") {
            scene.instances.push_back(readInstance(source, part));
        } else if (name == "search_path") {
            source.checkAttributes(part, {"path"});
            scene.searchPaths.emplace_back(source.required(part, "path"));
        } else if (name == "import") {
            source.checkAttributes(part, {"path", "prefix"});
            scene.imports.push_back({std::string(source.required(part, "path")), part.attribute("prefix").value()});
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
bool read(std::span<const char> text, std::string_view origin, Body&& body) {
    try {
        svxml::Source source(text, origin);
        body(source, source.root());
        source.finishWarnings();
        return true;
    } catch (const svxml::Fault& fault) {
        log::error(svxml::placeOf(text, origin, fault.at), fault.text);
    } catch (const std::bad_alloc&) {
        log::error(origin, "not enough memory to read this");
    }
    return false;
}

}  // namespace

bool readSvxml(std::span<const char> text, std::string_view origin, Scene& scene) {
    return read(text, origin, [&](svxml::Source& source, pugi::xml_node root) { scene = svxml::readScene(source, root); });
}

std::shared_ptr<Node> readSvxmlNode(std::span<const char> text, std::string_view origin) {
    std::shared_ptr<Node> node;
    read(text, origin, [&](svxml::Source& source, pugi::xml_node root) {
        if (std::string_view(root.name()) != "node")
            source.fail(root, "element 'node' expected, not '" + std::string(root.name()) + "'");
        node = svxml::readNode(source, root);
    });
    return node;
}

std::shared_ptr<Geometry> readSvxmlGeometry(std::span<const char> text, std::string_view origin) {
    std::shared_ptr<Geometry> geometry;
    read(text, origin, [&](svxml::Source& source, pugi::xml_node root) {
        if (!svxml::isGeometryElement(root.name()))
            source.fail(root, "element 'mesh', 'sphere' or 'cone' expected, not '" + std::string(root.name()) + "'");
        geometry = svxml::readGeometry(source, root);
    });
    return geometry;
}

std::shared_ptr<Instance> readSvxmlInstance(std::span<const char> text, std::string_view origin) {
    std::shared_ptr<Instance> instance;
    read(text, origin, [&](svxml::Source& source, pugi::xml_node root) {
        if (std::string_view(root.name()) != "instance")
            source.fail(root, "element 'instance' expected, not '" + std::string(root.name()) + "'");
        instance = svxml::readInstance(source, root);
    });
    return instance;
}

}  // namespace nemra::node
