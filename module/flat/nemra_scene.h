/* libnemraNode: geometries, instances, scenes. Lengths in metres. */
#ifndef NEMRA_FLAT_SCENE_H
#define NEMRA_FLAT_SCENE_H

#include "nemra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Geometries ------------------------------------------------------------------------------------------------------- */

/* A new mesh, the caller's; the arrays are copied. The two counts are element counts: 3 N and 3 M. `normals` may be null, else
 * it has verticesCount floats; `uvs` may be null, else it has 2/3 of that. */
NEMRA_API nemra_geom_t* nemraMesh_create(const char* name, const double* vertices, const float* normals, const float* uvs,
                                         int32_t verticesCount, const int32_t* triangles, int32_t trianglesCount);
/* Numbers of elements, not of rows. */
NEMRA_API uint32_t nemraMesh_getVerticesSize(nemra_geom_t* mesh);
NEMRA_API uint32_t nemraMesh_getVextexNormalsSize(nemra_geom_t* mesh);
NEMRA_API uint32_t nemraMesh_getTriangleNormalsSize(nemra_geom_t* mesh);
NEMRA_API uint32_t nemraMesh_getTrianglesSize(nemra_geom_t* mesh);
NEMRA_API uint32_t nemraMesh_getUvsSize(nemra_geom_t* mesh);
/* Engine's buffers. */
NEMRA_API const double* nemraMesh_getVertices(nemra_geom_t* mesh);
NEMRA_API const float* nemraMesh_getVextexNormals(nemra_geom_t* mesh);
NEMRA_API const float* nemraMesh_getTriangleNormals(nemra_geom_t* mesh);
NEMRA_API const int32_t* nemraMesh_getTriangles(nemra_geom_t* mesh);
NEMRA_API const float* nemraMesh_getUvs(nemra_geom_t* mesh);

/* A sphere about the origin of its own space; `reverse` turns its normals inwards. */
NEMRA_API nemra_geom_t* nemraSphere_create(const char* name, float radius, bool reverse);
NEMRA_API bool nemraSphere_setRadius(nemra_geom_t* sphere, float radius);
NEMRA_API float nemraSphere_getRadius(nemra_geom_t* sphere);

/* A truncated cone about the z axis of its own space, base radius 1 at z = 0, top radius `rtop` at z = 1. */
NEMRA_API nemra_geom_t* nemraCone_create(const char* name, float rtop, bool reverse);
NEMRA_API bool nemraCone_setRtop(nemra_geom_t* cone, float rtop);
NEMRA_API float nemraCone_getRtop(nemra_geom_t* cone);

/* Engine's text, never null. */
NEMRA_API const char* nemraGeometry_name(nemra_geom_t* geometry);
/* "mesh", "sphere" or "cone", empty for a null or stale handle. Bears both uses: a caller may free the text with freeCharArray
 * or leave it; it is never null. */
NEMRA_API char* nemraGeometry_getType(nemra_geom_t* geometry);
NEMRA_API int32_t nemraGeometry_numPrimitives(nemra_geom_t* geometry);
NEMRA_API void nemraGeometry_setName(nemra_geom_t* geometry, const char* name);
NEMRA_API void nemraGeometry_setMaterialName(nemra_geom_t* geometry, const char* name);
/* A free-standing geometry shares the node, a scene's has the scene's own: the node itself if it is in the scene, else a copy. */
NEMRA_API void nemraGeometry_setMaterial(nemra_geom_t* geometry, nemra_onode_t* material);
/* Caller's text, never null. */
NEMRA_API char* nemraGeometry_getMaterialName(nemra_geom_t* geometry);
/* The associated node, the engine's; of a scene's geometry also the one that is only named. Null if there is none. */
NEMRA_API nemra_onode_t* nemraGeometry_getMaterial(nemra_geom_t* geometry);
/* format 0: svxml text, 1: svbin. Caller's text, empty for a null or stale handle; null, with a message, for another format. */
NEMRA_API char* nemraGeometry_serialize(nemra_geom_t* geometry, int32_t format, int32_t* size);
NEMRA_API void nemraGeometry_release(nemra_geom_t** handle);

/* ---- Instances -------------------------------------------------------------------------------------------------------- */

/* A new instance with the identity transform, no geometry and no material. Caller's handle. */
NEMRA_API nemra_instance_t* nemraInstance_create(void);
/* A new instance that shares the original's material. Caller's handle. */
NEMRA_API nemra_instance_t* nemraInstance_copy(nemra_instance_t* instance);
/* Engine's text, never null. */
NEMRA_API const char* nemraInstance_geometryName(nemra_instance_t* instance);
NEMRA_API void nemraInstance_setGeometryName(nemra_instance_t* instance, const char* name);
/* Sixteen doubles, row-major, acting on column vectors (translation in the last column); engine's. Null for a null handle. */
NEMRA_API const double* nemraInstance_getTransform(nemra_instance_t* instance);
NEMRA_API void nemraInstance_setTransform(nemra_instance_t* instance, const double* matrix);
/* As nemraGeometry_getMaterial. */
NEMRA_API nemra_onode_t* nemraInstance_material(nemra_instance_t* instance);
/* Takes the address of the caller's handle. `fallback`: the material holds only where the geometry has none of its own.
 * keepOriginal false: the engine takes the node over and clears the field. */
NEMRA_API void nemraInstance_setMaterial(nemra_instance_t* instance, nemra_onode_t** material, bool fallback, bool keepOriginal);
/* As nemraGeometry_serialize. */
NEMRA_API char* nemraInstance_serialize(nemra_instance_t* instance, int32_t format, int32_t* size);
NEMRA_API void nemraInstance_release(nemra_instance_t** handle);

/* ---- Scenes ----------------------------------------------------------------------------------------------------------- */

NEMRA_API nemra_scene_t* nemraScene_create(const char* name);
NEMRA_API void nemraScene_release(nemra_scene_t** handle);
/* Engine's texts, never null. */
NEMRA_API const char* nemraScene_name(nemra_scene_t* scene);
NEMRA_API const char* nemraScene_getActiveSetupName(nemra_scene_t* scene);
NEMRA_API void nemraScene_setName(nemra_scene_t* scene, const char* name);
NEMRA_API void nemraScene_addSearchPath(nemra_scene_t* scene, const char* path);
/* The name is kept in any case. False, with a warning, if the scene has no such setup yet. An empty name takes the only one. */
NEMRA_API bool nemraScene_setActiveSetupName(nemra_scene_t* scene, const char* name);

/* These copy the object into the scene and return the scene's copy, which stays the scene's. keepOriginal false takes the
 * original away and clears the field whose address was given. Null if the object is null or stale. */
NEMRA_API nemra_onode_t* nemraScene_addNode(nemra_scene_t* scene, nemra_onode_t** node, bool keepOriginal);
NEMRA_API nemra_geom_t* nemraScene_addGeom(nemra_scene_t* scene, nemra_geom_t** geometry, bool keepOriginal);
/* layerNames: null-terminated array of paths, each a null-terminated array of layer names from the top of the tree down.
 * The result is the number of the scene's copy, good for nemraScene_remove; 0 on failure. */
NEMRA_API uint64_t nemraScene_addInstance(nemra_scene_t* scene, nemra_instance_t** instance, const char*** layerNames,
                                          bool keepOriginal);
/* Flags of an import, added up: at most one unit and one axis, both for files of meshes only. 0: what the format says, else
 * metres and +Y. */
enum {
    NEMRA_IMPORT_MM = 1,
    NEMRA_IMPORT_CM = 2,
    NEMRA_IMPORT_DM = 3,
    NEMRA_IMPORT_M = 4,
    NEMRA_IMPORT_KM = 5,
    NEMRA_IMPORT_IN = 6,
    NEMRA_IMPORT_FT = 7,
    NEMRA_IMPORT_UNIT_MASK = 15,
    NEMRA_IMPORT_UP_Y = 16,
    NEMRA_IMPORT_UP_Z = 32,
    NEMRA_IMPORT_UP_MASK = 48,
    NEMRA_IMPORT_NO_INSTANCES = 64 /* geometries and nodes alone */
};
/* path: a scene or a file of meshes (PLY, OBJ, glTF), relative to the working folder or one of the scene's search paths.
 * load: true reads it now, false keeps a tag, which is read when the scene is rendered; prefix: put before the names of what
 * comes in. False, and nothing changes, for flags that there aren't and for a file that can't be read now. */
NEMRA_API bool nemraScene_addImport(nemra_scene_t* scene, const char* path, bool load, int32_t flags, const char* prefix);

/* Where a material leaves, what refers to it keeps its name. */
NEMRA_API bool nemraScene_removeNode(nemra_scene_t* scene, nemra_onode_t* node);
NEMRA_API bool nemraScene_removeGeom(nemra_scene_t* scene, nemra_geom_t* geometry);
NEMRA_API bool nemraScene_removeInstance(nemra_scene_t* scene, nemra_instance_t* instance);
/* Removes the object with that number (the handle's value), whatever its kind. */
NEMRA_API void nemraScene_remove(nemra_scene_t* scene, uint64_t number);
NEMRA_API void nemraScene_clear(nemra_scene_t* scene);
NEMRA_API void nemraScene_clearNodes(nemra_scene_t* scene);
NEMRA_API void nemraScene_clearGeometry(nemra_scene_t* scene);
NEMRA_API void nemraScene_clearInstances(nemra_scene_t* scene);

NEMRA_API nemra_onode_t** nemraScene_getNodes(nemra_scene_t* scene, uint32_t* count);
/* An empty text is a filter that isn't wanted. */
NEMRA_API nemra_onode_t** nemraScene_findNodes(nemra_scene_t* scene, const char* className, const char* typeName,
                                               const char* name, uint32_t* count);
NEMRA_API nemra_instance_t** nemraScene_getInstances(nemra_scene_t* scene, uint32_t* count);
NEMRA_API nemra_geom_t** nemraScene_getGeometries(nemra_scene_t* scene, uint32_t* count);
NEMRA_API nemra_geom_t** nemraScene_getMeshes(nemra_scene_t* scene, uint32_t* count);
NEMRA_API nemra_geom_t** nemraScene_getSpheres(nemra_scene_t* scene, uint32_t* count);
NEMRA_API nemra_geom_t** nemraScene_getCones(nemra_scene_t* scene, uint32_t* count);

/* Both tell the encoding from the bytes. On false the scene is as it was and one message says where the fault is. */
NEMRA_API bool nemraScene_readFromFile(nemra_scene_t* scene, const char* path);
NEMRA_API bool nemraScene_readFromChar(nemra_scene_t* scene, const char* data, int32_t size);
/* format 0 svxml, 1 svbin, 2 and 3 the same gzipped. Caller's bytes, with a closing zero that *size doesn't count. */
NEMRA_API char* nemraScene_writeToChar(nemra_scene_t* scene, int32_t format, int32_t* size);

#ifdef __cplusplus
}
#endif

#endif
