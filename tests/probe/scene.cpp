// Geometries, instances and scenes of the recording engine. What is made and added gets a fresh handle; the rest is scripted.
#include "module/flat/nemra_scene.h"

#include <map>
#include <mutex>

#include "tests/probe/recorder.h"

using probe::call;
using probe::callArray;
using probe::freshHandle;
using probe::jsonArray;
using probe::Ready;

extern "C" nemra_onode_t* probeDuplicateNode(nemra_onode_t* node);

namespace {

std::mutex mutex;

/// Types of the geometries made so far.
std::map<nemra_geom_t*, std::string>& types() {
    static auto* instance = new std::map<nemra_geom_t*, std::string>;
    return *instance;
}

nemra_geom_t* makeGeometry(const std::string& type) {
    auto* geometry = freshHandle<nemra_geom_t>();
    const std::lock_guard lock(mutex);
    types()[geometry] = type;
    return geometry;
}

std::string typeOf(nemra_geom_t* geometry) {
    const std::lock_guard lock(mutex);
    const auto found = types().find(geometry);
    return found == types().end() ? "" : found->second;
}

/// A source that isn't kept reads as deleted afterwards, unless the test scripted "keepsHandles".
template <class T>
void takeAway(T** source, bool keepOriginal) {
    if (!keepOriginal && !probe::findAnswer("keepsHandles")) *source = nullptr;
}

std::string jsonPaths(const char*** paths) {
    if (!paths) return "null";
    std::string text = "[";
    for (; *paths; ++paths) {
        text += text.size() > 1 ? ",[" : "[";
        for (const char** name = *paths; *name; ++name) text += (name == *paths ? "" : ",") + probe::json(*name);
        text += "]";
    }
    return text + "]";
}

template <class Count>
void scriptedSize(Count* size) {
    *size = probe::answerOr<Count>("size", 0);
}

/// Array of scripted elements, and the number of them.
template <class T>
uint32_t scriptedCount(const char* size, const char* data, nemra_geom_t* mesh) {
    probe::record(size, mesh);
    return probe::answerOr<uint32_t>(size, static_cast<uint32_t>(probe::scriptedBytes(data).size() / sizeof(T)));
}

}  // namespace

extern "C" {

nemra_geom_t* nemraMesh_create(const char* name, const double* vertices, const float* normals, const float* uvs,
                               int32_t verticesCount, const int32_t* triangles, int32_t trianglesCount) {
    probe::record("nemraMesh_create", name, Ready{jsonArray(vertices, verticesCount)}, Ready{jsonArray(normals, verticesCount)},
                  Ready{jsonArray(uvs, verticesCount / 3 * 2)}, verticesCount, Ready{jsonArray(triangles, trianglesCount)},
                  trianglesCount);
    return makeGeometry("mesh");
}
uint32_t nemraMesh_getVerticesSize(nemra_geom_t* mesh) {
    return scriptedCount<double>("nemraMesh_getVerticesSize", "nemraMesh_getVertices", mesh);
}
uint32_t nemraMesh_getVextexNormalsSize(nemra_geom_t* mesh) {
    return scriptedCount<float>("nemraMesh_getVextexNormalsSize", "nemraMesh_getVextexNormals", mesh);
}
uint32_t nemraMesh_getTriangleNormalsSize(nemra_geom_t* mesh) {
    return scriptedCount<float>("nemraMesh_getTriangleNormalsSize", "nemraMesh_getTriangleNormals", mesh);
}
uint32_t nemraMesh_getTrianglesSize(nemra_geom_t* mesh) {
    return scriptedCount<int32_t>("nemraMesh_getTrianglesSize", "nemraMesh_getTriangles", mesh);
}
uint32_t nemraMesh_getUvsSize(nemra_geom_t* mesh) {
    return scriptedCount<float>("nemraMesh_getUvsSize", "nemraMesh_getUvs", mesh);
}
const double* nemraMesh_getVertices(nemra_geom_t* mesh) { return call<const double*>("nemraMesh_getVertices", mesh); }
const float* nemraMesh_getVextexNormals(nemra_geom_t* mesh) { return call<const float*>("nemraMesh_getVextexNormals", mesh); }
const float* nemraMesh_getTriangleNormals(nemra_geom_t* mesh) {
    return call<const float*>("nemraMesh_getTriangleNormals", mesh);
}
const int32_t* nemraMesh_getTriangles(nemra_geom_t* mesh) { return call<const int32_t*>("nemraMesh_getTriangles", mesh); }
const float* nemraMesh_getUvs(nemra_geom_t* mesh) { return call<const float*>("nemraMesh_getUvs", mesh); }

nemra_geom_t* nemraSphere_create(const char* name, float radius, bool reverse) {
    probe::record("nemraSphere_create", name, radius, reverse);
    return makeGeometry("sphere");
}
bool nemraSphere_setRadius(nemra_geom_t* sphere, float radius) { return call<bool>("nemraSphere_setRadius", sphere, radius); }
float nemraSphere_getRadius(nemra_geom_t* sphere) { return call<float>("nemraSphere_getRadius", sphere); }
nemra_geom_t* nemraCone_create(const char* name, float rtop, bool reverse) {
    probe::record("nemraCone_create", name, rtop, reverse);
    return makeGeometry("cone");
}
bool nemraCone_setRtop(nemra_geom_t* cone, float rtop) { return call<bool>("nemraCone_setRtop", cone, rtop); }
float nemraCone_getRtop(nemra_geom_t* cone) { return call<float>("nemraCone_getRtop", cone); }

const char* nemraGeometry_name(nemra_geom_t* geometry) { return call<const char*>("nemraGeometry_name", geometry); }
char* nemraGeometry_getType(nemra_geom_t* geometry) {
    probe::record("nemraGeometry_getType", geometry);
    return probe::callersText(typeOf(geometry));
}
int32_t nemraGeometry_numPrimitives(nemra_geom_t* geometry) { return call<int32_t>("nemraGeometry_numPrimitives", geometry); }
void nemraGeometry_setName(nemra_geom_t* geometry, const char* name) { call<void>("nemraGeometry_setName", geometry, name); }
void nemraGeometry_setMaterialName(nemra_geom_t* geometry, const char* name) {
    call<void>("nemraGeometry_setMaterialName", geometry, name);
}
void nemraGeometry_setMaterial(nemra_geom_t* geometry, nemra_onode_t* material) {
    call<void>("nemraGeometry_setMaterial", geometry, material);
}
char* nemraGeometry_getMaterialName(nemra_geom_t* geometry) { return call<char*>("nemraGeometry_getMaterialName", geometry); }
nemra_onode_t* nemraGeometry_getMaterial(nemra_geom_t* geometry) {
    return call<nemra_onode_t*>("nemraGeometry_getMaterial", geometry);
}
char* nemraGeometry_serialize(nemra_geom_t* geometry, int32_t format, int32_t* size) {
    scriptedSize(size);
    return call<char*>("nemraGeometry_serialize", geometry, format);
}
void nemraGeometry_release(nemra_geom_t** handle) { call<void>("nemraGeometry_release", handle); }

nemra_instance_t* nemraInstance_create() {
    auto* instance = freshHandle<nemra_instance_t>();
    probe::record("nemraInstance_create", instance);
    return instance;
}
nemra_instance_t* nemraInstance_copy(nemra_instance_t* instance) {
    probe::record("nemraInstance_copy", instance);
    return freshHandle<nemra_instance_t>();
}
const char* nemraInstance_geometryName(nemra_instance_t* instance) {
    return call<const char*>("nemraInstance_geometryName", instance);
}
void nemraInstance_setGeometryName(nemra_instance_t* instance, const char* name) {
    call<void>("nemraInstance_setGeometryName", instance, name);
}
const double* nemraInstance_getTransform(nemra_instance_t* instance) {
    return call<const double*>("nemraInstance_getTransform", instance);
}
void nemraInstance_setTransform(nemra_instance_t* instance, const double* matrix) {
    call<void>("nemraInstance_setTransform", instance, Ready{jsonArray(matrix, 16)});
}
nemra_onode_t* nemraInstance_material(nemra_instance_t* instance) {
    return call<nemra_onode_t*>("nemraInstance_material", instance);
}
void nemraInstance_setMaterial(nemra_instance_t* instance, nemra_onode_t** material, bool fallback, bool keepOriginal) {
    call<void>("nemraInstance_setMaterial", instance, material, fallback, keepOriginal);
    takeAway(material, keepOriginal);
}
char* nemraInstance_serialize(nemra_instance_t* instance, int32_t format, int32_t* size) {
    scriptedSize(size);
    return call<char*>("nemraInstance_serialize", instance, format);
}
void nemraInstance_release(nemra_instance_t** handle) { call<void>("nemraInstance_release", handle); }

nemra_scene_t* nemraScene_create(const char* name) {
    probe::record("nemraScene_create", name);
    return freshHandle<nemra_scene_t>();
}
void nemraScene_release(nemra_scene_t** handle) { call<void>("nemraScene_release", handle); }
const char* nemraScene_name(nemra_scene_t* scene) { return call<const char*>("nemraScene_name", scene); }
const char* nemraScene_getActiveSetupName(nemra_scene_t* scene) {
    return call<const char*>("nemraScene_getActiveSetupName", scene);
}
void nemraScene_setName(nemra_scene_t* scene, const char* name) { call<void>("nemraScene_setName", scene, name); }
void nemraScene_addSearchPath(nemra_scene_t* scene, const char* path) { call<void>("nemraScene_addSearchPath", scene, path); }
bool nemraScene_setActiveSetupName(nemra_scene_t* scene, const char* name) {
    return call<bool>("nemraScene_setActiveSetupName", scene, name);
}
nemra_onode_t* nemraScene_addNode(nemra_scene_t* scene, nemra_onode_t** node, bool keepOriginal) {
    probe::record("nemraScene_addNode", scene, node, keepOriginal);
    nemra_onode_t* added = probeDuplicateNode(*node);
    takeAway(node, keepOriginal);
    return added;
}
nemra_geom_t* nemraScene_addGeom(nemra_scene_t* scene, nemra_geom_t** geometry, bool keepOriginal) {
    probe::record("nemraScene_addGeom", scene, geometry, keepOriginal);
    nemra_geom_t* added = *geometry ? makeGeometry(typeOf(*geometry)) : nullptr;
    takeAway(geometry, keepOriginal);
    return added;
}
uint64_t nemraScene_addInstance(nemra_scene_t* scene, nemra_instance_t** instance, const char*** layers, bool keepOriginal) {
    const auto number = call<uint64_t>("nemraScene_addInstance", scene, instance, Ready{jsonPaths(layers)}, keepOriginal);
    takeAway(instance, keepOriginal);
    return number;
}
bool nemraScene_addImport(nemra_scene_t* scene, const char* path, bool load, int32_t flags, const char* prefix) {
    return call<bool>("nemraScene_addImport", scene, path, load, flags, prefix);
}
bool nemraScene_removeNode(nemra_scene_t* scene, nemra_onode_t* node) {
    return call<bool>("nemraScene_removeNode", scene, node);
}
bool nemraScene_removeGeom(nemra_scene_t* scene, nemra_geom_t* geometry) {
    return call<bool>("nemraScene_removeGeom", scene, geometry);
}
bool nemraScene_removeInstance(nemra_scene_t* scene, nemra_instance_t* instance) {
    return call<bool>("nemraScene_removeInstance", scene, instance);
}
void nemraScene_remove(nemra_scene_t* scene, uint64_t number) {
    probe::record("nemraScene_remove", scene, Ready{std::to_string(number)});
}
void nemraScene_clear(nemra_scene_t* scene) { call<void>("nemraScene_clear", scene); }
void nemraScene_clearNodes(nemra_scene_t* scene) { call<void>("nemraScene_clearNodes", scene); }
void nemraScene_clearGeometry(nemra_scene_t* scene) { call<void>("nemraScene_clearGeometry", scene); }
void nemraScene_clearInstances(nemra_scene_t* scene) { call<void>("nemraScene_clearInstances", scene); }

nemra_onode_t** nemraScene_getNodes(nemra_scene_t* scene, uint32_t* count) {
    return callArray<nemra_onode_t*>("nemraScene_getNodes", count, scene);
}
nemra_onode_t** nemraScene_findNodes(nemra_scene_t* scene, const char* className, const char* typeName, const char* name,
                                     uint32_t* count) {
    return callArray<nemra_onode_t*>("nemraScene_findNodes", count, scene, className, typeName, name);
}
nemra_instance_t** nemraScene_getInstances(nemra_scene_t* scene, uint32_t* count) {
    return callArray<nemra_instance_t*>("nemraScene_getInstances", count, scene);
}
nemra_geom_t** nemraScene_getGeometries(nemra_scene_t* scene, uint32_t* count) {
    return callArray<nemra_geom_t*>("nemraScene_getGeometries", count, scene);
}
nemra_geom_t** nemraScene_getMeshes(nemra_scene_t* scene, uint32_t* count) {
    return callArray<nemra_geom_t*>("nemraScene_getMeshes", count, scene);
}
nemra_geom_t** nemraScene_getSpheres(nemra_scene_t* scene, uint32_t* count) {
    return callArray<nemra_geom_t*>("nemraScene_getSpheres", count, scene);
}
nemra_geom_t** nemraScene_getCones(nemra_scene_t* scene, uint32_t* count) {
    return callArray<nemra_geom_t*>("nemraScene_getCones", count, scene);
}

bool nemraScene_readFromFile(nemra_scene_t* scene, const char* path) {
    return call<bool>("nemraScene_readFromFile", scene, path);
}
bool nemraScene_readFromChar(nemra_scene_t* scene, const char* data, int32_t size) {
    return call<bool>("nemraScene_readFromChar", scene, Ready{probe::jsonText(data, size)}, size);
}
char* nemraScene_writeToChar(nemra_scene_t* scene, int32_t format, int32_t* size) {
    scriptedSize(size);
    return call<char*>("nemraScene_writeToChar", scene, format);
}

}  // extern "C"
