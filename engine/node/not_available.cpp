// Functions of the flat interface that later work brings. Each answers "empty" and says so in the log.
#include "engine/common/log.h"
#include "module/flat/nemra_node.h"
#include "module/flat/nemra_scene.h"

namespace {

void notAvailable(const char* function) { nemra::log::warning(function, "not available yet"); }

}  // namespace

extern "C" {

__attribute__((weak)) char* nemraNode_serialize(nemra_onode_t*, int, uint32_t* size) { if (size) *size = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_geom_t* nemraMesh_create(const char*, const double*, const float*, const float*, int32_t, const int32_t*, int32_t) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) uint32_t nemraMesh_getVerticesSize(nemra_geom_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) uint32_t nemraMesh_getVextexNormalsSize(nemra_geom_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) uint32_t nemraMesh_getTriangleNormalsSize(nemra_geom_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) uint32_t nemraMesh_getTrianglesSize(nemra_geom_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) uint32_t nemraMesh_getUvsSize(nemra_geom_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) const double* nemraMesh_getVertices(nemra_geom_t*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) const float* nemraMesh_getVextexNormals(nemra_geom_t*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) const float* nemraMesh_getTriangleNormals(nemra_geom_t*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) const int32_t* nemraMesh_getTriangles(nemra_geom_t*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) const float* nemraMesh_getUvs(nemra_geom_t*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_geom_t* nemraSphere_create(const char*, float, bool) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) bool nemraSphere_setRadius(nemra_geom_t*, float) { notAvailable(__func__); return false; }
__attribute__((weak)) float nemraSphere_getRadius(nemra_geom_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) nemra_geom_t* nemraCone_create(const char*, float, bool) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) bool nemraCone_setRtop(nemra_geom_t*, float) { notAvailable(__func__); return false; }
__attribute__((weak)) float nemraCone_getRtop(nemra_geom_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) const char* nemraGeometry_name(nemra_geom_t*) { notAvailable(__func__); return ""; }
__attribute__((weak)) char* nemraGeometry_getType(nemra_geom_t*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) int32_t nemraGeometry_numPrimitives(nemra_geom_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) void nemraGeometry_setName(nemra_geom_t*, const char*) { notAvailable(__func__); }
__attribute__((weak)) void nemraGeometry_setMaterialName(nemra_geom_t*, const char*) { notAvailable(__func__); }
__attribute__((weak)) void nemraGeometry_setMaterial(nemra_geom_t*, nemra_onode_t*) { notAvailable(__func__); }
__attribute__((weak)) char* nemraGeometry_getMaterialName(nemra_geom_t*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_onode_t* nemraGeometry_getMaterial(nemra_geom_t*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) char* nemraGeometry_serialize(nemra_geom_t*, int32_t, int32_t* size) { if (size) *size = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) void nemraGeometry_release(nemra_geom_t**) { notAvailable(__func__); }
__attribute__((weak)) nemra_instance_t* nemraInstance_create() { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_instance_t* nemraInstance_copy(nemra_instance_t*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) const char* nemraInstance_geometryName(nemra_instance_t*) { notAvailable(__func__); return ""; }
__attribute__((weak)) void nemraInstance_setGeometryName(nemra_instance_t*, const char*) { notAvailable(__func__); }
__attribute__((weak)) const double* nemraInstance_getTransform(nemra_instance_t*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) void nemraInstance_setTransform(nemra_instance_t*, const double*) { notAvailable(__func__); }
__attribute__((weak)) nemra_onode_t* nemraInstance_material(nemra_instance_t*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) void nemraInstance_setMaterial(nemra_instance_t*, nemra_onode_t**, bool, bool) { notAvailable(__func__); }
__attribute__((weak)) char* nemraInstance_serialize(nemra_instance_t*, int32_t, int32_t* size) { if (size) *size = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) void nemraInstance_release(nemra_instance_t**) { notAvailable(__func__); }
__attribute__((weak)) nemra_scene_t* nemraScene_create(const char*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) void nemraScene_release(nemra_scene_t**) { notAvailable(__func__); }
__attribute__((weak)) const char* nemraScene_name(nemra_scene_t*) { notAvailable(__func__); return ""; }
__attribute__((weak)) const char* nemraScene_getActiveSetupName(nemra_scene_t*) { notAvailable(__func__); return ""; }
__attribute__((weak)) void nemraScene_setName(nemra_scene_t*, const char*) { notAvailable(__func__); }
__attribute__((weak)) void nemraScene_addSearchPath(nemra_scene_t*, const char*) { notAvailable(__func__); }
__attribute__((weak)) bool nemraScene_setActiveSetupName(nemra_scene_t*, const char*) { notAvailable(__func__); return false; }
__attribute__((weak)) nemra_onode_t* nemraScene_addNode(nemra_scene_t*, nemra_onode_t**, bool) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_geom_t* nemraScene_addGeom(nemra_scene_t*, nemra_geom_t**, bool) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) uint64_t nemraScene_addInstance(nemra_scene_t*, nemra_instance_t**, const char***, bool) { notAvailable(__func__); return 0; }
__attribute__((weak)) bool nemraScene_addImport(nemra_scene_t*, const char*, bool, int32_t, const char*) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraScene_removeNode(nemra_scene_t*, nemra_onode_t*) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraScene_removeGeom(nemra_scene_t*, nemra_geom_t*) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraScene_removeInstance(nemra_scene_t*, nemra_instance_t*) { notAvailable(__func__); return false; }
__attribute__((weak)) void nemraScene_remove(nemra_scene_t*, uint64_t) { notAvailable(__func__); }
__attribute__((weak)) void nemraScene_clear(nemra_scene_t*) { notAvailable(__func__); }
__attribute__((weak)) void nemraScene_clearNodes(nemra_scene_t*) { notAvailable(__func__); }
__attribute__((weak)) void nemraScene_clearGeometry(nemra_scene_t*) { notAvailable(__func__); }
__attribute__((weak)) void nemraScene_clearInstances(nemra_scene_t*) { notAvailable(__func__); }
__attribute__((weak)) nemra_onode_t** nemraScene_getNodes(nemra_scene_t*, uint32_t* count) { if (count) *count = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_onode_t** nemraScene_findNodes(nemra_scene_t*, const char*, const char*, const char*, uint32_t* count) { if (count) *count = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_instance_t** nemraScene_getInstances(nemra_scene_t*, uint32_t* count) { if (count) *count = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_geom_t** nemraScene_getGeometries(nemra_scene_t*, uint32_t* count) { if (count) *count = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_geom_t** nemraScene_getMeshes(nemra_scene_t*, uint32_t* count) { if (count) *count = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_geom_t** nemraScene_getSpheres(nemra_scene_t*, uint32_t* count) { if (count) *count = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_geom_t** nemraScene_getCones(nemra_scene_t*, uint32_t* count) { if (count) *count = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) bool nemraScene_readFromFile(nemra_scene_t*, const char*) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraScene_readFromChar(nemra_scene_t*, const char*, int32_t) { notAvailable(__func__); return false; }
__attribute__((weak)) char* nemraScene_writeToChar(nemra_scene_t*, int32_t, int32_t* size) { if (size) *size = 0; notAvailable(__func__); return nullptr; }

}  // extern "C"
