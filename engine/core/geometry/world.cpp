#include "engine/core/geometry/world.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "engine/core/geometry/mesh.h"
#include "engine/node/geometry.h"

namespace nemra::core {

namespace {

/// Up to this many placed triangles in all copies, a mesh that stands several times is copied rather than instanced: tracing is
/// faster by a third without the extra level.
constexpr std::size_t kCopyLimit = 200000;

struct GeometryEntry {
    const node::Geometry* geometry = nullptr;
    std::vector<std::int32_t> triangles;  ///< of a mesh
    Vec3 lower{}, upper{};                ///< in its own space
    std::size_t uses = 0;
    SharedMesh* shared = nullptr;
    bool saidFlattened = false;
};

/// An instance that takes part.
struct Placed {
    const node::Instance* instance = nullptr;
    GeometryEntry* entry = nullptr;
    Affine toWorld;
    MaterialModel* material = nullptr;
    bool emits = false;
    RayKinds kinds;
};

/// Six digits, whatever the process's locale.
std::string shortText(double x) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, x, std::chars_format::general, 6).ptr};
}

std::optional<Affine> readTransform(const node::Instance& instance, const std::string& label, Translation& translation) {
    const auto& m = instance.transform;
    Affine a;
    for (int i = 0; i < 3; ++i) {
        a.linear[i] = {m[4 * i], m[4 * i + 1], m[4 * i + 2]};
        a.shift[i] = m[4 * i + 3];
    }
    const bool finite = std::all_of(m.begin(), m.end(), [](double x) { return std::abs(x) < 1.0e12; });
    if (!finite) {
        translation.warn(label, "its transform has entries that aren't finite or exceed 1e12; it is left out");
        return std::nullopt;
    }
    if (m[12] != 0.0 || m[13] != 0.0 || m[14] != 0.0 || m[15] != 1.0) {
        translation.warn(label, "its transform isn't affine: the last row must be 0 0 0 1; it is left out");
        return std::nullopt;
    }
    double columns = 1.0;
    for (int c = 0; c < 3; ++c) columns *= length({a.linear[0][c], a.linear[1][c], a.linear[2][c]});
    const double determinant = std::abs(a.determinant());
    if (!(determinant > 1.0e-12 * columns)) {
        translation.warn(
            label, "its transform is singular: it flattens space (determinant " + shortText(determinant) + "); it is left out");
        return std::nullopt;
    }
    if (!(determinant > 1.0e-45)) {
        translation.warn(label, "its transform makes things too small (determinant " + shortText(determinant) +
                                    ", at least 1e-45 is needed); it is left out");
        return std::nullopt;
    }
    return a;
}

double placedArea(const TriangleRecord& t, const Affine& toWorld) {
    return 0.5 * length(cross(toWorld.vector({t.e1[0], t.e1[1], t.e1[2]}), toWorld.vector({t.e2[0], t.e2[1], t.e2[2]})));
}

class WorldBuilder {
public:
    WorldBuilder(const LayerTree& layers, Translation& translation, SpectralTables& tables)
        : layers_(layers), translation_(translation), tables_(tables) {
        for (const auto& geometry : translation.scene().geometries) {
            if (geometry) named_.try_emplace(geometry->name, geometry.get());  // the first of a name counts
        }
    }

    World build(const Vec3& viewpoint);

private:
    GeometryEntry* findGeometry(const std::string& name);
    GeometryEntry readGeometry(const node::Geometry& geometry);
    MaterialModel* material(const NodePointer& node);
    NodePointer materialNode(const node::Instance& instance, const node::Geometry& geometry, const std::string& label);
    void collect();
    void findMiddle(const Vec3& viewpoint);
    std::uint32_t addSurface(const Placed& placed, double area);
    PlacedMesh place(GeometryEntry& entry, const Affine& placing);
    void addMesh(const Placed& placed);
    void addShared(const Placed& placed);
    void addCurved(const Placed& placed);

    const LayerTree& layers_;
    Translation& translation_;
    SpectralTables& tables_;
    World world_;
    std::unordered_map<std::string_view, const node::Geometry*> named_;
    std::unordered_map<const node::Geometry*, GeometryEntry> geometries_;  ///< those that instances name
    std::map<const node::Node*, std::unique_ptr<MaterialModel>> materials_;
    std::map<const MaterialModel*, const Bsdf*> bsdfs_;
    std::vector<Placed> placed_;
};

GeometryEntry WorldBuilder::readGeometry(const node::Geometry& geometry) {
    GeometryEntry entry;
    entry.geometry = &geometry;
    const std::string label = "geometry \"" + geometry.name + "\"";
    if (const auto* mesh = std::get_if<node::Mesh>(&geometry.shape)) {
        entry.triangles = usableTriangles(*mesh, label, translation_);
        for (int c = 0; c < 3; ++c) {
            entry.lower[c] = std::numeric_limits<double>::infinity();
            entry.upper[c] = -entry.lower[c];
        }
        for (const std::int32_t index : entry.triangles) {
            for (int c = 0; c < 3; ++c) {
                const double x = mesh->vertices[3 * static_cast<std::size_t>(index) + c];
                entry.lower[c] = std::min(entry.lower[c], x);
                entry.upper[c] = std::max(entry.upper[c], x);
            }
        }
    } else if (const auto* sphere = std::get_if<node::Sphere>(&geometry.shape)) {
        const double r = sphere->radius;
        if (!(r > 0.0 && r < 1.0e12)) {
            translation_.warn(label, "a sphere needs a positive, finite radius; it is left out");
            entry.geometry = nullptr;
        }
        entry.lower = {-r, -r, -r};
        entry.upper = {r, r, r};
    } else if (const auto* cone = std::get_if<node::Cone>(&geometry.shape)) {
        const double r = std::max(1.0, static_cast<double>(cone->topRadius));
        if (!(cone->topRadius >= 0.0F && cone->topRadius < 1.0e6F)) {
            translation_.warn(label, "a cone's upper radius must be finite and not negative; it is left out");
            entry.geometry = nullptr;
        }
        entry.lower = {-r, -r, 0.0};
        entry.upper = {r, r, 1.0};
    }
    return entry;
}

GeometryEntry* WorldBuilder::findGeometry(const std::string& name) {
    const auto named = named_.find(name);
    if (named == named_.end()) return nullptr;
    const auto known = geometries_.find(named->second);
    if (known != geometries_.end()) return &known->second;
    return &geometries_.emplace(named->second, readGeometry(*named->second)).first->second;
}

MaterialModel* WorldBuilder::material(const NodePointer& node) {
    auto& model = materials_[node.get()];
    if (!model) {
        model = std::make_unique<MaterialModel>(makeMaterial(node, translation_, tables_));
        if (model->bsdf.object) {
            bsdfs_[model.get()] = model->bsdf.object.get();
            world_.bsdfs.push_back(std::move(model->bsdf.object));
        }
    }
    return model.get();
}

NodePointer WorldBuilder::materialNode(const node::Instance& instance, const node::Geometry& geometry, const std::string& label) {
    const auto byName = [&](const std::string& name) -> NodePointer {
        if (name.empty()) return nullptr;
        NodePointer found = translation_.find("material", name);
        if (!found)
            translation_.warn(label, "names the material \"" + name + "\", but " + translation_.missing("material", name) +
                                         "; a diffuse reflector of 0.5 takes its place");
        return found;
    };
    const bool own = instance.material || !instance.materialName.empty();
    const bool geometrys = geometry.material || !geometry.materialName.empty();
    if (own && !(instance.materialIsFallback && geometrys)) {
        return instance.material ? NodePointer(instance.material) : byName(instance.materialName);
    }
    if (geometrys) return geometry.material ? NodePointer(geometry.material) : byName(geometry.materialName);
    translation_.warn(label, "has no material; a diffuse reflector of 0.5 takes its place");
    return nullptr;
}

void WorldBuilder::collect() {
    int number = 0;
    for (const auto& instance : translation_.scene().instances) {
        ++number;
        if (!instance) continue;
        const std::string label = "instance " + std::to_string(number) + " of geometry \"" + instance->geometryName + "\"";
        const LayerFlags flags = layers_.flags(instance->layers, label);
        if (!flags.enabled) continue;
        GeometryEntry* entry = findGeometry(instance->geometryName);
        if (!entry) {
            translation_.warn(label, "the scene has no geometry of that name; it is left out");
            continue;
        }
        if (!entry->geometry) continue;  // said already
        if (std::holds_alternative<node::Mesh>(entry->geometry->shape) && entry->triangles.empty()) {
            translation_.warn("geometry \"" + entry->geometry->name + "\"", "has no triangle that can be rendered");
            continue;
        }
        const auto transform = readTransform(*instance, label, translation_);
        if (!transform) continue;
        Placed placed;
        placed.instance = instance.get();
        placed.entry = entry;
        placed.toWorld = *transform;
        placed.material = material(materialNode(*instance, *entry->geometry, label));
        placed.emits = flags.light && placed.material->emission >= 0;
        placed.kinds.camera = flags.visible;
        placed.kinds.shadow = !placed.material->bsdf.passesAll;
        if (placed.material->bsdf.passesAll && !placed.emits) continue;  // nothing that light would notice
        ++entry->uses;
        placed_.push_back(placed);
    }
    std::stable_sort(placed_.begin(), placed_.end(),
                     [](const Placed& a, const Placed& b) { return a.kinds.index() < b.kinds.index(); });
}

void WorldBuilder::findMiddle(const Vec3& viewpoint) {
    constexpr double kFar = std::numeric_limits<double>::infinity();
    Vec3 lower{kFar, kFar, kFar};
    Vec3 upper{-kFar, -kFar, -kFar};
    for (const Placed& placed : placed_) {
        for (int corner = 0; corner < 8; ++corner) {
            Vec3 p;
            for (int c = 0; c < 3; ++c) p[c] = corner >> c & 1 ? placed.entry->upper[c] : placed.entry->lower[c];
            p = placed.toWorld.point(p);
            for (int c = 0; c < 3; ++c) {
                lower[c] = std::min(lower[c], p[c]);
                upper[c] = std::max(upper[c], p[c]);
            }
        }
    }
    world_.center = placed_.empty() ? viewpoint : (lower + upper) * 0.5;
    world_.radius = placed_.empty() ? 1.0 : 0.5 * length(upper - lower);
    for (Placed& placed : placed_) placed.toWorld.shift = placed.toWorld.shift - world_.center;
}

std::uint32_t WorldBuilder::addSurface(const Placed& placed, double area) {
    const MaterialModel& material = *placed.material;
    SurfaceRecord surface;
    const int cells = tables_.grid().cells;
    surface.kind = material.bsdf.kind;
    surface.reflectance = std::max(0, material.bsdf.reflectance) * cells;
    const auto bsdf = bsdfs_.find(placed.material);
    surface.bsdf = bsdf == bsdfs_.end() ? nullptr : bsdf->second;
    if (placed.emits && area > 0.0) {
        surface.emits = material.emitter.sides;
        surface.emission = material.emission * cells;
        surface.emissionScale = static_cast<float>(material.emitter.ofWholeSurface ? 1.0 / area : 1.0);
    }
    world_.surfaces.push_back(surface);
    return static_cast<std::uint32_t>(world_.surfaces.size() - 1);
}

PlacedMesh WorldBuilder::place(GeometryEntry& entry, const Affine& placing) {
    PlacedMesh mesh = placeMesh(std::get<node::Mesh>(entry.geometry->shape), entry.triangles, placing);
    if (mesh.flattened > 0 && !std::exchange(entry.saidFlattened, true)) {
        translation_.warn("geometry \"" + entry.geometry->name + "\"",
                          "where an instance places it, " + std::to_string(mesh.flattened) + " of its " +
                              std::to_string(entry.triangles.size() / 3) + " triangles have no area; they are left out there");
    }
    return mesh;
}

void WorldBuilder::addMesh(const Placed& placed) {
    PlacedMesh mesh = place(*placed.entry, placed.toWorld);
    const std::uint32_t surface = addSurface(placed, mesh.area);
    const auto firstNormals = static_cast<std::int32_t>(world_.normals.size());
    for (TriangleRecord& triangle : mesh.triangles) {
        triangle.surface = surface;
        if (triangle.normals >= 0) triangle.normals += firstNormals;
    }
    world_.triangles.insert(world_.triangles.end(), mesh.triangles.begin(), mesh.triangles.end());
    world_.normals.insert(world_.normals.end(), mesh.normals.begin(), mesh.normals.end());
}

/// Area of a mesh under a map. Takes time in proportion to the mesh where the map stretches.
double placedArea(const SharedMesh& mesh, const Affine& toWorld) {
    if (const double scale = toWorld.evenScale(); scale > 0.0) return mesh.area * scale * scale;
    double area = 0.0;
    for (const TriangleRecord& t : mesh.triangles) area += placedArea(t, toWorld);
    return area;
}

void WorldBuilder::addShared(const Placed& placed) {
    GeometryEntry& entry = *placed.entry;
    if (!entry.shared) {
        auto shared = std::make_unique<SharedMesh>();
        PlacedMesh mesh = place(entry, Affine{});
        shared->triangles = std::move(mesh.triangles);
        shared->normals = std::move(mesh.normals);
        shared->area = mesh.area;
        entry.shared = shared.get();
        world_.meshes.push_back(std::move(shared));
    }
    InstanceRecord record;
    record.mesh = entry.shared;
    record.toWorld = placed.toWorld;
    record.toObject = placed.toWorld.inverse();
    record.mirrored = placed.toWorld.determinant() < 0.0;
    if (placed.emits) {
        if (entry.shared->shares.empty()) entry.shared->shares = AreaShares(entry.shared->triangles);
        record.area = placedArea(*entry.shared, placed.toWorld);
    }
    record.surface = addSurface(placed, record.area);
    // Positions are rounded in the mesh's own space as well as in the world.
    double magnitude = 0.0;
    for (int corner = 0; corner < 8; ++corner) {
        Vec3 p;
        for (int c = 0; c < 3; ++c) p[c] = corner >> c & 1 ? entry.upper[c] : entry.lower[c];
        for (int c = 0; c < 3; ++c) {
            const Vec3& row = record.toWorld.linear[c];
            magnitude = std::max({magnitude, std::abs(row[0] * p[0]) + std::abs(row[1] * p[1]) + std::abs(row[2] * p[2]),
                                  std::abs(record.toWorld.shift[c])});
        }
    }
    record.offset = safeOffset(2.0 * magnitude);
    world_.instances.push_back(record);
    world_.instanceKinds.push_back(placed.kinds);
}

void WorldBuilder::addCurved(const Placed& placed) {
    CurvedRecord record;
    if (const auto* sphere = std::get_if<node::Sphere>(&placed.entry->geometry->shape)) {
        record.reverse = sphere->reverse;
        record.toWorld = placed.toWorld.scaled(sphere->radius);
        record.scale = record.toWorld.evenScale();
    } else {
        const auto& cone = std::get<node::Cone>(placed.entry->geometry->shape);
        record.kind = CurvedKind::cone;
        record.reverse = cone.reverse;
        record.topRadius = cone.topRadius;
        record.toWorld = placed.toWorld;
    }
    record.toObject = record.toWorld.inverse();
    record.area = placed.emits ? record.computeArea() : 0.0;
    record.surface = addSurface(placed, record.area);
    float lower[3], upper[3];
    record.bounds(lower, upper);
    double magnitude = 0.0;
    for (int c = 0; c < 3; ++c) {
        magnitude = std::max({magnitude, std::abs(static_cast<double>(lower[c])), std::abs(static_cast<double>(upper[c]))});
    }
    record.offset = safeOffset(magnitude);
    world_.curved.push_back(record);
}

World WorldBuilder::build(const Vec3& viewpoint) {
    collect();
    findMiddle(viewpoint);
    for (int kind = 0; kind < kRayKinds; ++kind) {
        world_.firstTriangle[kind] = static_cast<unsigned>(world_.triangles.size());
        world_.firstCurved[kind] = static_cast<unsigned>(world_.curved.size());
        for (const Placed& placed : placed_) {
            if (placed.kinds.index() != kind) continue;
            if (!std::holds_alternative<node::Mesh>(placed.entry->geometry->shape)) {
                addCurved(placed);
            } else if (placed.entry->uses == 1 || placed.entry->uses * (placed.entry->triangles.size() / 3) <= kCopyLimit) {
                addMesh(placed);
            } else {
                addShared(placed);
            }
        }
    }
    world_.firstTriangle[kRayKinds] = static_cast<unsigned>(world_.triangles.size());
    world_.firstCurved[kRayKinds] = static_cast<unsigned>(world_.curved.size());
    return std::move(world_);
}

}  // namespace

double InstanceRecord::lightPdf(std::uint32_t triangle) const {
    return pick * mesh->shares.chance(triangle) / placedArea(mesh->triangles[triangle], toWorld);
}

World buildWorld(const LayerTree& layers, const Vec3& viewpoint, Translation& translation, SpectralTables& tables) {
    return WorldBuilder(layers, translation, tables).build(viewpoint);
}

std::size_t World::memory() const noexcept {
    std::size_t bytes = triangles.size() * sizeof(TriangleRecord) + normals.size() * sizeof(NormalsRecord) +
                        curved.size() * sizeof(CurvedRecord) + instances.size() * sizeof(InstanceRecord) +
                        surfaces.size() * sizeof(SurfaceRecord);
    for (const auto& mesh : meshes) {
        bytes += mesh->triangles.size() * sizeof(TriangleRecord) + mesh->normals.size() * sizeof(NormalsRecord) +
                 mesh->shares.size() * sizeof(std::uint32_t);
    }
    return bytes;
}

}  // namespace nemra::core
