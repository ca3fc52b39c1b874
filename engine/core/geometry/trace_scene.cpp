#include "engine/core/geometry/trace_scene.h"

#include <algorithm>
#include <stdexcept>

namespace nemra::core {

namespace {

enum { kCamera, kPath, kShadow };

bool takesPart(int target, int kind) {
    const bool hiddenFromCamera = kind & 1;
    const bool letsShadowsPass = kind & 2;
    return !(target == kCamera && hiddenFromCamera) && !(target == kShadow && letsShadowsPass);
}

struct Corners {
    Vec3 v0, e1, e2;
};

Corners cornersOf(const TriangleRecord& t) {
    return {{t.v0[0], t.v0[1], t.v0[2]}, {t.e1[0], t.e1[1], t.e1[2]}, {t.e2[0], t.e2[1], t.e2[2]}};
}

/// The plane of a triangle, so far without triangles.
FlatPlane planeOf(const TriangleRecord& t) {
    const Corners c = cornersOf(t);
    const Vec3 n = normalized(cross(c.e1, c.e2));
    FlatPlane plane{};
    for (int i = 0; i < 3; ++i) plane.n[i] = static_cast<float>(n[i]);
    plane.d = static_cast<float>(-dot(n, c.v0));
    int steep = 0;  // the coordinate along which the plane is seen best
    for (int i = 1; i < 3; ++i) {
        if (std::abs(n[i]) > std::abs(n[steep])) steep = i;
    }
    plane.axisA = steep == 0 ? 1 : 0;
    plane.axisB = steep == 2 ? 1 : 2;
    return plane;
}

bool liesIn(const FlatPlane& plane, const TriangleRecord& t) {
    const Corners c = cornersOf(t);
    const Vec3 n{plane.n[0], plane.n[1], plane.n[2]};
    const double near = 0.3 * t.offset;
    return std::abs(dot(n, c.v0) + plane.d) < near && std::abs(dot(n, c.v0 + c.e1) + plane.d) < near &&
           std::abs(dot(n, c.v0 + c.e2) + plane.d) < near;
}

/// The triangle grown by the rounding of positions, about the middle of its inscribed circle, so that neighbours overlap rather
/// than leave a gap; then as linear functions of the plane's coordinates.
FlatTriangle flatten(const FlatPlane& plane, const TriangleRecord& t) {
    const Corners c = cornersOf(t);
    const double l0 = length(c.e2 - c.e1);  // opposite of v0, of v0 + e1, of v0 + e2
    const double l1 = length(c.e2);
    const double l2 = length(c.e1);
    const double perimeter = l0 + l1 + l2;
    const double inradius = length(cross(c.e1, c.e2)) / perimeter;
    const Vec3 incenter = c.v0 + (c.e1 * l1 + c.e2 * l2) * (1.0 / perimeter);
    const double growth = 1.0 + std::min(0.01, t.offset / inradius);
    const Vec3 corner = incenter + (c.v0 - incenter) * growth;
    const int a = plane.axisA;
    const int b = plane.axisB;
    const double e1a = c.e1[a] * growth, e1b = c.e1[b] * growth, e2a = c.e2[a] * growth, e2b = c.e2[b] * growth;
    const double determinant = e1a * e2b - e1b * e2a;
    const double ua = e2b / determinant, ub = -e2a / determinant;
    const double va = -e1b / determinant, vb = e1a / determinant;
    return {static_cast<float>(ua), static_cast<float>(ub), static_cast<float>(-ua * corner[a] - ub * corner[b]),
            static_cast<float>(va), static_cast<float>(vb), static_cast<float>(-va * corner[a] - vb * corner[b])};
}

embree::Geometry triangleGeometry(const TriangleRecord* records, std::size_t count) {
    const RTCDevice device = embree::device();
    embree::Geometry geometry(rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE));
    auto* vertices = static_cast<float*>(
        rtcSetNewGeometryBuffer(geometry.get(), RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, 3 * sizeof(float), 3 * count));
    auto* indices = static_cast<unsigned*>(
        rtcSetNewGeometryBuffer(geometry.get(), RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 3 * sizeof(unsigned), count));
    if (!vertices || !indices) throw std::runtime_error("no memory for the triangles of the scene");
    for (std::size_t i = 0; i < count; ++i) {
        const TriangleRecord& t = records[i];
        for (int c = 0; c < 3; ++c) {
            vertices[9 * i + c] = t.v0[c];
            vertices[9 * i + 3 + c] = t.v0[c] + t.e1[c];
            vertices[9 * i + 6 + c] = t.v0[c] + t.e2[c];
            indices[3 * i + c] = static_cast<unsigned>(3 * i + c);
        }
    }
    rtcCommitGeometry(geometry.get());
    return geometry;
}

embree::Scene newScene() {
    embree::Scene scene(rtcNewScene(embree::device()));
    if (!scene) throw std::runtime_error("Embree gives no scene");
    rtcSetSceneFlags(scene.get(), RTC_SCENE_FLAG_ROBUST);  // rays don't slip through where triangles meet
    rtcSetSceneBuildQuality(scene.get(), RTC_BUILD_QUALITY_MEDIUM);
    return scene;
}

}  // namespace

TraceScenes::TraceScenes(World& world, std::size_t flatLimit) {
    const auto any = [&](int kind) {
        return world.firstTriangle[kind + 1] > world.firstTriangle[kind] ||
               world.firstCurved[kind + 1] > world.firstCurved[kind] ||
               std::any_of(world.instanceKinds.begin(), world.instanceKinds.end(), [&](RayKinds k) { return k.index() == kind; });
    };
    if (!any(1) && !any(3)) use_[kCamera] = kPath;
    if (!any(2) && !any(3)) use_[kShadow] = kPath;
    if (world.curved.empty() && world.instances.empty() && world.triangles.size() <= flatLimit) {
        makeFlat(world);
    } else {
        makeEmbree(world);
    }
}

void TraceScenes::makeFlat(const World& world) {
    for (int target = 0; target < 3; ++target) {
        if (use_[target] != target) continue;
        std::vector<std::pair<FlatPlane, std::vector<std::uint32_t>>> found;
        for (int kind = 0; kind < kRayKinds; ++kind) {
            if (!takesPart(target, kind)) continue;
            for (unsigned i = world.firstTriangle[kind]; i < world.firstTriangle[kind + 1]; ++i) {
                const auto same = std::find_if(found.begin(), found.end(),
                                               [&](const auto& entry) { return liesIn(entry.first, world.triangles[i]); });
                if (same != found.end()) {
                    same->second.push_back(i);
                } else {
                    found.push_back({planeOf(world.triangles[i]), {i}});
                }
            }
        }
        Target& made = targets_[target];
        for (auto& [plane, members] : found) {
            plane.first = static_cast<std::int32_t>(made.flat.size());
            plane.count = static_cast<std::int32_t>(members.size());
            made.planes.push_back(plane);
            for (const std::uint32_t i : members) {
                made.flat.push_back(flatten(plane, world.triangles[i]));
                made.ids.push_back(i);
            }
        }
    }
}

void TraceScenes::makeEmbree(World& world) {
    const std::size_t before = embree::bytesInUse();
    rtcGetDeviceError(embree::device());  // takes out what an earlier scene may have left behind that couldn't be built
    for (auto& mesh : world.meshes) {
        mesh->scene = newScene();
        const embree::Geometry geometry = triangleGeometry(mesh->triangles.data(), mesh->triangles.size());
        rtcAttachGeometry(mesh->scene.get(), geometry.get());
        rtcCommitScene(mesh->scene.get());
    }
    embree::Geometry triangles[kRayKinds];
    embree::Geometry curved[kRayKinds];
    for (int kind = 0; kind < kRayKinds; ++kind) {
        const unsigned first = world.firstTriangle[kind];
        if (const unsigned count = world.firstTriangle[kind + 1] - first)
            triangles[kind] = triangleGeometry(&world.triangles[first], count);
        const unsigned firstCurved = world.firstCurved[kind];
        if (const unsigned count = world.firstCurved[kind + 1] - firstCurved) {
            curved[kind].reset(makeCurvedGeometry(embree::device(), &world.curved[firstCurved], count));
        }
    }
    std::vector<embree::Geometry> instances;
    for (const InstanceRecord& record : world.instances) {
        embree::Geometry geometry(rtcNewGeometry(embree::device(), RTC_GEOMETRY_TYPE_INSTANCE));
        rtcSetGeometryInstancedScene(geometry.get(), record.mesh->scene.get());
        float rows[12];
        for (int r = 0; r < 3; ++r) {
            for (int c = 0; c < 3; ++c) rows[4 * r + c] = static_cast<float>(record.toWorld.linear[r][c]);
            rows[4 * r + 3] = static_cast<float>(record.toWorld.shift[r]);
        }
        rtcSetGeometryTransform(geometry.get(), 0, RTC_FORMAT_FLOAT3X4_ROW_MAJOR, rows);
        rtcCommitGeometry(geometry.get());
        instances.push_back(std::move(geometry));
    }
    for (int target = 0; target < 3; ++target) {
        if (use_[target] != target) continue;
        embree::Scene scene = newScene();
        for (int kind = 0; kind < kRayKinds; ++kind) {
            if (!takesPart(target, kind)) continue;
            if (triangles[kind]) rtcAttachGeometryByID(scene.get(), triangles[kind].get(), kind);
            if (curved[kind]) rtcAttachGeometryByID(scene.get(), curved[kind].get(), kCurvedIds + kind);
        }
        for (std::size_t i = 0; i < instances.size(); ++i) {
            if (!takesPart(target, world.instanceKinds[i].index())) continue;
            rtcAttachGeometryByID(scene.get(), instances[i].get(), static_cast<unsigned>(kInstanceIds + i));
        }
        rtcCommitScene(scene.get());
        if (const RTCError error = rtcGetDeviceError(embree::device())) {
            throw std::runtime_error("Embree can't build the scene (error " + std::to_string(error) + ")");
        }
        targets_[target].scene = std::move(scene);
    }
    const std::size_t after = embree::bytesInUse();
    bytes_ = after > before ? after - before : 0;
}

TraceTarget TraceScenes::view(int target) const {
    const Target& used = targets_[use_[target]];
    TraceTarget result;
    result.embree = used.scene.get();
    if (!used.planes.empty()) {
        result.planes = used.planes.data();
        result.planeCount = static_cast<std::int32_t>(used.planes.size());
        result.flat = used.flat.data();
        result.flatId = used.ids.data();
    }
    return result;
}

void TraceScenes::connect(KernelScene& scene) const {
    scene.camera = view(kCamera);
    scene.path = view(kPath);
    scene.shadow = view(kShadow);
}

}  // namespace nemra::core
