/// Scenes for tests and benchmarks, in a few lines each.
#pragma once

#include <array>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "engine/node/scene.h"

namespace nemra::lighttest {

using node::Node;
using NodeHandle = std::shared_ptr<Node>;
using Point = std::array<double, 3>;

inline node::Value text(const char* t) { return {std::string(t)}; }
inline node::Value vector(double x, double y, double z) { return {std::vector<double>{x, y, z}}; }
inline node::Value number(double x) { return {x}; }
inline node::Value integer(int x) { return {std::int32_t{x}}; }
inline node::Value flag(bool x) { return {x}; }
inline node::Value samples(const std::vector<std::pair<double, double>>& rows) {
    auto table = std::make_shared<node::Table>();
    table->columns = {{"wavelength", {}}, {"value", {}}};
    for (const auto& [wavelength, value] : rows) {
        table->columns[0].cells.push_back(number(wavelength));
        table->columns[1].cells.push_back(number(value));
    }
    table->rows = rows.size();
    return {std::shared_ptr<const node::Table>(table)};
}

using Settings = std::initializer_list<std::pair<const char*, node::Value>>;

/// A node with its settings made in order (a choice before what it brings). Throws where the catalogue refuses.
inline NodeHandle make(const char* family, const char* type, Settings settings = {}, const char* name = "n") {
    node::registerClasses();
    const node::NodeClass* nodeClass = node::findClass(family, type);
    if (!nodeClass) throw std::runtime_error(std::string("no class ") + family + "/" + type);
    auto made = std::make_shared<Node>(*nodeClass, name);
    for (const auto& [key, value] : settings) {
        std::string why;
        if (!made->set(key, value, why)) throw std::runtime_error(std::string(key) + ": " + why);
    }
    return made;
}

inline NodeHandle uniform(double value) { return make("spectrum", "uniform", {{"value", number(value)}}); }

/// Puts a child into a slot.
inline NodeHandle with(NodeHandle parent, const char* slot, const NodeHandle& child) {
    child->setName(slot);
    std::string why;
    if (!parent->setChild(child, why)) throw std::runtime_error(std::string(slot) + ": " + why);
    return parent;
}

inline NodeHandle lambertian(const NodeHandle& reflectance) {
    return with(make("bsdf", "lambertian"), "reflectance", reflectance);
}

inline NodeHandle material(const NodeHandle& bsdf, const NodeHandle& emitter = nullptr) {
    NodeHandle made = with(make("material", "generic"), "bsdf", bsdf);
    return emitter ? with(made, "emitter", emitter) : made;
}

inline NodeHandle emitter(const NodeHandle& spectrum, Settings settings = {}) {
    return with(make("emitter", "lambertian", settings), "radiance", spectrum);
}

/// Triangles of a fan over the corners, counterclockwise seen from the front.
inline node::Mesh polygon(const std::vector<Point>& corners) {
    node::Mesh mesh;
    for (const Point& p : corners) mesh.vertices.insert(mesh.vertices.end(), p.begin(), p.end());
    for (std::int32_t i = 1; i + 1 < static_cast<std::int32_t>(corners.size()); ++i) {
        mesh.triangles.insert(mesh.triangles.end(), {0, i, i + 1});
    }
    return mesh;
}

inline void append(node::Mesh& mesh, const node::Mesh& more) {
    const auto base = static_cast<std::int32_t>(mesh.vertices.size() / 3);
    mesh.vertices.insert(mesh.vertices.end(), more.vertices.begin(), more.vertices.end());
    for (const std::int32_t i : more.triangles) mesh.triangles.push_back(base + i);
}

/// A scene with one setup, filled step by step.
struct SceneMaker {
    node::Scene scene;
    NodeHandle setup = make("setup", "default", {}, "setup");

    SceneMaker() { scene.name = "test"; }

    /// Adds a geometry and one instance of it.
    node::Instance& add(std::variant<node::Mesh, node::Sphere, node::Cone> shape, const NodeHandle& surface) {
        auto geometry = std::make_shared<node::Geometry>();
        geometry->name = "g" + std::to_string(scene.geometries.size());
        geometry->shape = std::move(shape);
        scene.geometries.push_back(geometry);
        auto instance = std::make_shared<node::Instance>();
        instance->geometryName = geometry->name;
        instance->material = surface;
        scene.instances.push_back(instance);
        return *instance;
    }
    /// The finished scene. May be called again after more was added.
    const node::Scene& finish() {
        if (scene.nodes.empty()) scene.nodes.push_back(setup);
        return scene;
    }
};

/// A pinhole camera that looks from `position` at `target`.
inline NodeHandle camera(Point position, Point target, double fovDeg, int width, int height, const NodeHandle& sensor) {
    const bool vertical = position[0] == target[0] && position[2] == target[2];
    NodeHandle made = make("instrument", "idealrectcam",
                           {{"position", vector(position[0], position[1], position[2])},
                            {"target", vector(target[0], target[1], target[2])},
                            {"up", vertical ? vector(0, 0, 1) : vector(0, 1, 0)},
                            {"horizontal_fov", number(fovDeg)},
                            {"width", integer(width)},
                            {"height", integer(height)}});
    return with(made, "sensor", sensor);
}

}  // namespace nemra::lighttest
