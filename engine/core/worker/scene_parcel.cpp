#include "engine/core/worker/scene_parcel.h"

#include <algorithm>
#include <cstring>
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

/// How many bytes follow, and these.
void appendBlock(Buffer& parcel, const Buffer& svbin) {
    const std::size_t begin = parcel.size();
    std::uint64_t size = 0;
    parcel.append(sizeof size, '\0');
    node::appendGzip(parcel, svbin.bytes());
    size = parcel.size() - begin - sizeof size;
    std::memcpy(parcel.data() + begin, &size, sizeof size);
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

Buffer packScene(const Buffer& scene) {
    Buffer parcel;
    appendBlock(parcel, scene);
    return parcel;
}

void addLibrary(Buffer& parcel, const Buffer& library) { appendBlock(parcel, library); }

std::shared_ptr<const PreparedScene> prepareParcel(std::span<const char> parcel, const std::string& setup,
                                                   const std::vector<std::string>& libraryPaths) {
    ByteReader reader(parcel);
    const auto sceneBytes = takeBlock(reader);
    const auto libraryBytes = takeBlock(reader);
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
