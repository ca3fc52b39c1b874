#include "engine/node/import/load_imports.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <unordered_set>

#include "engine/common/log.h"
#include "engine/common/workdir.h"
#include "engine/node/import/file_bytes.h"
#include "engine/node/import/prefix_names.h"
#include "engine/node/import/read_mesh_file.h"
#include "engine/node/mesh.h"
#include "engine/node/read_scene.h"

namespace nemra::node {

namespace {

namespace fs = std::filesystem;

bool fail(const std::string& source, const std::string& why) {
    log::error(source, why);
    return false;
}

bool isSetup(const std::shared_ptr<Node>& node) { return node->family() == "setup"; }

/// What a file of meshes brings as an import.
Scene sceneOf(MeshParts parts) {
    Scene scene;
    scene.instances.reserve(parts.placings.size());
    for (const PartPlacing& placing : parts.placings) {
        auto instance = std::make_shared<Instance>();
        instance->geometryName = parts.parts[placing.part].name;
        instance->transform = placing.transform;
        scene.instances.push_back(std::move(instance));
    }
    for (MeshPart& part : parts.parts) {
        auto geometry = std::make_shared<Geometry>();
        geometry->name = std::move(part.name);
        geometry->materialName = std::move(part.materialName);
        geometry->shape = std::move(part.mesh);
        scene.geometries.push_back(std::move(geometry));
    }
    return scene;
}

/// The search paths of a scene as absolute ones.
std::vector<std::string> absolute(const std::vector<std::string>& paths, const std::string& folder) {
    std::vector<std::string> all;
    for (const std::string& path : paths) all.push_back((fs::path(folder) / path).lexically_normal().string());
    return all;
}

/// One file has one name here, whatever links lead to it.
fs::path real(const std::string& path) {
    std::error_code fault;
    fs::path canonical = fs::canonical(path, fault);
    return fault ? fs::path(path) : canonical;
}

/// One loading: the files that it is in, and what it may still read.
class Loader {
public:
    explicit Loader(Unknown unknown) : unknown_(unknown) {}

    /// The file that the scene itself is from, which nothing in it may import. The answer is where it looks for others.
    Place enter(const std::string& file, const Scene& scene) {
        if (file.empty()) return {{}, scene.searchPaths};
        open_.push_back(real(resolvePath(file)).string());
        return {fs::path(open_.back()).parent_path().string(), scene.searchPaths};
    }

    /// All that `scene` refers to. `origin` names the scene in messages.
    bool resolve(Scene& scene, const Place& place, const std::string& origin) {
        for (const auto& geometry : scene.geometries) {
            auto* const mesh = std::get_if<Mesh>(&geometry->shape);
            if (mesh != nullptr && !mesh->file.path.empty() && !fill(*geometry, *mesh, place, origin)) return false;
        }
        const std::vector<Import> imports = std::move(scene.imports);
        scene.imports.clear();
        for (const Import& import : imports) {
            Scene loaded;
            if (!load(import, place, origin, loaded) || !joinScenes(scene, loaded, import.path)) return false;
        }
        return true;
    }

    bool load(const Import& import, const Place& place, const std::string& origin, Scene& loaded) {
        std::string path;
        Buffer bytes;
        if (!open(import.path, place, origin, path, bytes)) return false;
        if (looksLikeScene(bytes.bytes())) {
            if (!loadScene(import, path, bytes, place, loaded)) return false;
        } else {
            MeshParts parts;
            if (!readMeshFile(bytes.bytes(), path, import.frame, parts)) return false;
            loaded = sceneOf(std::move(parts));
        }
        if (!import.instances) loaded.instances.clear();
        prefixNames(loaded, import.prefix);
        return true;
    }

private:
    bool open(const std::string& name, const Place& place, const std::string& origin, std::string& path, Buffer& bytes) {
        path = findFile(name, place);
        if (path.empty()) return fail(origin, "can't import '" + name + "': there is no such file here or in the search paths");
        if (++files_ > kMaxImportedFiles)
            return fail(origin, "can't import '" + name + "': more than " + std::to_string(kMaxImportedFiles) +
                                    " imports in one another");
        if (const std::string why = readFileBytes(path, bytes); !why.empty())
            return fail(origin, "can't import '" + path + "': " + why);
        bytes_ += bytes.size();
        return bytes_ <= kMaxImportedBytes || fail(origin, "can't import '" + path + "': more than 4 GiB in all");
    }

    bool loadScene(const Import& import, const std::string& path, const Buffer& bytes, const Place& above, Scene& loaded) {
        if (import.frame != MeshFrame{})
            return fail(path, "a scene says its lengths and axes itself; unit and up are for meshes");
        const std::string own = real(path).string();
        const auto again = std::find(open_.begin(), open_.end(), own);
        if (again != open_.end()) {
            std::string chain;
            for (auto at = again; at != open_.end(); ++at) chain += *at + " imports ";
            return fail(path, "the file imports itself: " + chain + own);
        }
        if (open_.size() >= kMostLevels) return fail(path, "imports nest deeper than " + std::to_string(kMostLevels));
        if (!readScene(bytes.bytes(), path, loaded, unknown_, Length::known)) return false;
        const std::string folder = fs::path(own).parent_path().string();
        Place place{folder, absolute(loaded.searchPaths, folder)};
        const auto inherited = absolute(above.searchPaths, resolvePath(above.folder.empty() ? "." : above.folder));
        place.searchPaths.insert(place.searchPaths.end(), inherited.begin(), inherited.end());
        anchorFiles(loaded, place);
        open_.push_back(own);
        const bool isResolved = resolve(loaded, place, path);
        open_.pop_back();
        return isResolved;
    }

    bool fill(Geometry& geometry, Mesh& mesh, const Place& place, const std::string& origin) {
        const std::string source = origin + ": " + label(geometry);
        std::string path;
        Buffer bytes;
        MeshParts parts;
        if (!open(mesh.file.path, place, source, path, bytes) || !readMeshFile(bytes.bytes(), path, mesh.file.frame, parts))
            return false;
        Mesh whole;
        try {
            whole = joinParts(parts, mesh.file.part);
        } catch (const MeshFault& fault) {
            return fail(source, path + ": " + fault.text);
        }
        if (const std::string why = whyRefused(whole); !why.empty()) return fail(source, path + ": " + why);
        takeMaterial(geometry, mesh.file.part, parts, source);
        mesh = std::move(whole);
        return true;
    }

    /// A geometry without a material takes the file's, if that is one only.
    static void takeMaterial(Geometry& geometry, const std::string& name, const MeshParts& parts, const std::string& source) {
        if (geometry.material || !geometry.materialName.empty()) return;
        std::set<std::string> materials;
        for (const MeshPart& part : parts.parts)
            if (name.empty() || part.name == name) materials.insert(part.materialName);
        if (materials.size() > 1)
            return log::warning(
                source, "the parts of the file have several materials and a mesh has one; none is taken. An import keeps them");
        geometry.materialName = *materials.begin();
    }

    static constexpr std::size_t kMostLevels = 64;

    Unknown unknown_;
    std::vector<std::string> open_;  // scene files that are being read, outermost first
    std::size_t files_ = 0;
    std::size_t bytes_ = 0;
};

/// Copies of what loading changes.
Scene copyForLoading(const Scene& scene) {
    Scene copy = scene;
    for (auto& geometry : copy.geometries) {
        const auto* const mesh = std::get_if<Mesh>(&geometry->shape);
        if (mesh != nullptr && !mesh->file.path.empty()) geometry = std::make_shared<Geometry>(*geometry);
    }
    return copy;
}

bool hasReferences(const Scene& scene) {
    return !scene.imports.empty() || std::any_of(scene.geometries.begin(), scene.geometries.end(), [](const auto& geometry) {
        const auto* const mesh = std::get_if<Mesh>(&geometry->shape);
        return mesh != nullptr && !mesh->file.path.empty();
    });
}

std::string nameFor(const Scene& scene) { return "scene '" + scene.name + "'"; }

}  // namespace

bool loadImports(Scene& scene, const std::string& file, Unknown unknown) {
    if (!hasReferences(scene)) return true;
    Scene loaded = copyForLoading(scene);
    Loader loader(unknown);
    const Place place = loader.enter(file, scene);
    if (!loader.resolve(loaded, place, file.empty() ? nameFor(scene) : file)) return false;
    scene = std::move(loaded);
    return true;
}

bool loadImport(const Import& import, const Scene& into, Unknown unknown, Scene& loaded) {
    return Loader(unknown).load(import, Place{{}, into.searchPaths}, nameFor(into), loaded);
}

bool joinScenes(Scene& scene, Scene& loaded, const std::string& path) {
    std::unordered_set<std::string> geometries;
    for (const auto& geometry : scene.geometries) geometries.insert(geometry->name);
    for (const auto& geometry : loaded.geometries) {
        if (!geometries.contains(geometry->name)) continue;
        return fail(nameFor(scene),
                    "the import '" + path + "' brings a second geometry '" + geometry->name + "'; a prefix keeps them apart");
    }
    if (std::any_of(scene.nodes.begin(), scene.nodes.end(), isSetup)) {
        std::erase_if(loaded.nodes, isSetup);
    } else if (scene.activeSetup.empty()) {
        scene.activeSetup = loaded.activeSetup;
    }
    std::set<std::pair<std::string, std::string>> named;
    for (const auto& node : scene.nodes) named.emplace(node->family(), node->name());
    std::size_t doubles = 0;
    std::string example;
    for (const auto& node : loaded.nodes) {
        if (node->name().empty() || !named.contains({node->family(), node->name()})) continue;
        if (++doubles == 1) example = node->label();
    }
    if (doubles > 0)
        log::warning(nameFor(scene), "the import '" + path + "' brings " + std::to_string(doubles) +
                                         " nodes of names that are there, such as " + example + "; references find the first");
    const auto move = [](auto& to, auto& from) {
        to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
        from.clear();
    };
    move(scene.nodes, loaded.nodes);
    move(scene.geometries, loaded.geometries);
    move(scene.instances, loaded.instances);
    return true;
}

}  // namespace nemra::node
