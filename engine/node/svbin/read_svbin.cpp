#include "engine/common/log.h"
#include "engine/node/mesh.h"
#include "engine/node/svbin/read_parts.h"
#include "engine/node/svbin/svbin.h"

namespace nemra::node {

namespace svbin {

namespace {

/// Calls visit(piece) for each of a list that may be absent.
template <class List, class Visit>
void forEach(const List* list, const Visit& visit) {
    if (list == nullptr) return;
    for (const auto* const piece : *list) visit(piece);
}

std::shared_ptr<Node> readOwn(FileView& file, const fb::Node* material) {
    return material == nullptr ? nullptr : readNode(file, *material, "material");
}

MeshFrame readFrame(FileView& file, const fb::MeshFrame* stored) {
    MeshFrame frame;
    if (stored == nullptr) return frame;
    for (const std::string& why : {setUnit(frame, file.text(stored->unit())), setUp(frame, file.text(stored->up()))})
        if (!why.empty()) throw Fault{file.offsetOf(stored), why};
    return frame;
}

Mesh readMesh(FileView& file, const fb::Mesh& mesh) {
    const auto copy = [&]<class Number>(const flatbuffers::Vector<Number>* numbers) {
        return file.copy<Number, LargeVector<Number>>(numbers);
    };
    Mesh read;
    read.vertices = copy(mesh.vertices());
    read.normals = copy(mesh.normals());
    read.uvs = copy(mesh.uvs());
    read.triangles = copy(mesh.triangles());
    read.file.path = file.copy(mesh.file());
    if (!read.file.path.empty()) {
        read.file.part = file.copy(mesh.part());
        read.file.frame = readFrame(file, mesh.frame());
    }
    return read;
}

}  // namespace

std::shared_ptr<Geometry> readGeometry(FileView& file, const fb::Geometry& geometry) {
    auto read = std::make_shared<Geometry>();
    read->name = file.copy(geometry.name());
    read->materialName = file.copy(geometry.material_name());
    read->material = readOwn(file, geometry.material());
    if (const fb::Mesh* const mesh = geometry.shape_as_Mesh()) {
        read->shape = readMesh(file, *mesh);
    } else if (const fb::Sphere* const sphere = geometry.shape_as_Sphere()) {
        read->shape = Sphere{sphere->radius().value_or(Sphere().radius), sphere->reverse()};
    } else if (const fb::Cone* const cone = geometry.shape_as_Cone()) {
        read->shape = Cone{cone->top_radius().value_or(Cone().topRadius), cone->reverse()};
    } else {
        throw Fault{file.offsetOf(&geometry), "geometry '" + read->name + "' has an unknown shape"};
    }
    if (const std::string why = whyRefused(*read); !why.empty()) throw Fault{file.offsetOf(&geometry), label(*read) + ": " + why};
    return read;
}

std::shared_ptr<Instance> readInstance(FileView& file, const fb::Instance& instance) {
    auto read = std::make_shared<Instance>();
    read->geometryName = file.copy(instance.geometry());
    read->materialName = file.copy(instance.material_name());
    read->material = readOwn(file, instance.material());
    read->materialIsFallback = instance.material_is_fallback();
    if (const fb::Transform* const transform = instance.transform())
        for (std::size_t i = 0; i < read->transform.size(); ++i)
            read->transform[i] = transform->elements()->Get(static_cast<flatbuffers::uoffset_t>(i));
    if (const std::string why = whyRefused(*read); !why.empty())
        throw Fault{file.offsetOf(&instance), "instance of '" + read->geometryName + "': " + why};
    forEach(instance.layers(), [&](const fb::Layer* layer) {
        auto& path = read->layers.emplace_back();
        forEach(layer->names(), [&](const flatbuffers::String* name) {
            if (name->size() > 0) path.push_back(file.copy(name));  // no layer is called nothing
        });
    });
    return read;
}

Scene readScene(FileView& file, const fb::Scene& scene) {
    Scene read;
    read.name = file.copy(scene.name());
    read.activeSetup = file.copy(scene.active_setup());
    forEach(scene.search_paths(), [&](const flatbuffers::String* path) { read.searchPaths.push_back(file.copy(path)); });
    forEach(scene.imports(), [&](const fb::Import* import) {
        read.imports.push_back({.path = file.copy(import->path()),
                                .prefix = file.copy(import->prefix()),
                                .frame = readFrame(file, import->frame()),
                                .instances = import->instances()});
    });
    forEach(scene.nodes(), [&](const fb::Node* part) {
        auto node = readNode(file, *part, {});
        if (!node) return;
        file.report().named(file.offsetOf(part), node->label());
        read.nodes.push_back(std::move(node));
    });
    forEach(scene.geometries(), [&](const fb::Geometry* part) {
        read.geometries.push_back(readGeometry(file, *part));
        file.report().named(file.offsetOf(part), "geometry '" + read.geometries.back()->name + "'");
    });
    forEach(scene.instances(), [&](const fb::Instance* part) { read.instances.push_back(readInstance(file, *part)); });
    return read;
}

}  // namespace svbin

namespace {

/// Runs `body` on the checked file and turns a Fault into one error message.
template <class Body>
bool read(std::span<const char> bytes, std::string_view origin, Unknown unknown, const Body& body) {
    try {
        svbin::FileView file(bytes, origin, unknown);
        body(file);
        file.report().finish();
        return true;
    } catch (const Fault& fault) {
        log::error(svbin::placeOf(origin, fault.at), fault.text);
    } catch (const std::bad_alloc&) {
        log::error(origin, "not enough memory to read this");
    }
    return false;
}

/// What the file holds, or a Fault if it is something else than was asked for.
template <class T>
const T& contents(const svbin::FileView& file, const T* found, const char* wanted) {
    if (found == nullptr)
        throw Fault{file.offsetOf(&file.file()), std::string(wanted) + " expected, the file holds " +
                                                     (file.file().contents_type() == fb::Contents_Scene      ? "a scene"
                                                      : file.file().contents_type() == fb::Contents_Node     ? "a node"
                                                      : file.file().contents_type() == fb::Contents_Geometry ? "a geometry"
                                                      : file.file().contents_type() == fb::Contents_Instance ? "an instance"
                                                                                                             : "something else")};
    return *found;
}

}  // namespace

bool readSvbin(std::span<const char> bytes, std::string_view origin, Scene& scene, Unknown unknown) {
    return read(bytes, origin, unknown, [&](svbin::FileView& file) {
        scene = svbin::readScene(file, contents(file, file.file().contents_as_Scene(), "a scene"));
    });
}

std::shared_ptr<Node> readSvbinNode(std::span<const char> bytes, std::string_view origin, Unknown unknown) {
    std::shared_ptr<Node> node;
    read(bytes, origin, unknown, [&](svbin::FileView& file) {
        node = svbin::readNode(file, contents(file, file.file().contents_as_Node(), "a node"), {});
    });
    return node;
}

std::shared_ptr<Geometry> readSvbinGeometry(std::span<const char> bytes, std::string_view origin, Unknown unknown) {
    std::shared_ptr<Geometry> geometry;
    read(bytes, origin, unknown, [&](svbin::FileView& file) {
        geometry = svbin::readGeometry(file, contents(file, file.file().contents_as_Geometry(), "a geometry"));
    });
    return geometry;
}

std::shared_ptr<Instance> readSvbinInstance(std::span<const char> bytes, std::string_view origin, Unknown unknown) {
    std::shared_ptr<Instance> instance;
    read(bytes, origin, unknown, [&](svbin::FileView& file) {
        instance = svbin::readInstance(file, contents(file, file.file().contents_as_Instance(), "an instance"));
    });
    return instance;
}

}  // namespace nemra::node
