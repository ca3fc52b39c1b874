#include "engine/core/worker/scene_parcel.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "engine/common/byte_reader.h"
#include "engine/common/log.h"
#include "engine/core/library/libraries.h"
#include "engine/node/encoding/gzip.h"
#include "engine/node/read_scene.h"

namespace nemra::core::worker {

namespace {

constexpr const char* kOrigin = "scene of the client";

void appendBlock(Buffer& parcel, const Buffer& svbin) {
    const Buffer packed = node::gzip(svbin.bytes());
    const auto size = static_cast<std::uint64_t>(packed.size());
    parcel.append({reinterpret_cast<const char*>(&size), sizeof size});
    parcel.append(packed.text());
}

std::span<const char> takeBlock(ByteReader& reader) {
    const auto size = reader.value<std::uint64_t>();
    return reader.take(std::min<std::uint64_t>(size, reader.left() + 1));
}

bool namesFiles(const node::Scene& scene) {
    return !scene.imports.empty() || std::any_of(scene.geometries.begin(), scene.geometries.end(), [](const auto& geometry) {
        const auto* const mesh = geometry ? std::get_if<node::Mesh>(&geometry->shape) : nullptr;
        return mesh && !mesh->file.path.empty();
    });
}

}  // namespace

Buffer packScene(const SceneContent& content) {
    Buffer parcel;
    appendBlock(parcel, content.library);
    appendBlock(parcel, content.scene);
    return parcel;
}

std::shared_ptr<const PreparedScene> prepareParcel(std::span<const char> parcel, const std::string& setup,
                                                   const std::vector<std::string>& libraryPaths) {
    ByteReader reader(parcel);
    const auto libraryBytes = takeBlock(reader);
    const auto sceneBytes = takeBlock(reader);
    if (!reader.ok() || reader.left() != 0) {
        log::error(kOrigin, "what was sent is no scene");
        return nullptr;
    }
    node::Scene library;
    node::Scene scene;
    if (!node::readScene(libraryBytes, kOrigin, library) || !node::readScene(sceneBytes, kOrigin, scene)) return nullptr;
    if (namesFiles(scene)) {
        log::error(kOrigin, "it names files, and none is read for a client");
        return nullptr;
    }
    Libraries libraries(libraryPaths);
    libraries.addFirst(std::make_shared<const Library>(library.nodes));
    return prepareScene(scene, setup, &libraries);
}

}  // namespace nemra::core::worker
