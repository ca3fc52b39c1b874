/* libnemraNode: nodes, their parameters, values, tables and colours.
 *
 * Parameters, values, tables and colours are plain pointers. A value, table or colour that a setter takes belongs to the engine
 * afterwards; the caller does not release it, also when the setter declined or was never called. A table that never became a
 * value is the caller's to release. */
#ifndef NEMRA_FLAT_NODE_H
#define NEMRA_FLAT_NODE_H

#include "nemra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Registers the engine's node classes. Before it no node can be created. A second call does nothing. */
NEMRA_API void nemraNode_register(void);

/* ---- Nodes ------------------------------------------------------------------------------------------------------------ */

/* A new node with a default child in each slot, or null for a class and type that the engine doesn't know. Caller's handle. */
NEMRA_API nemra_onode_t* nemraNode_create(const char* className, const char* typeName, const char* name);
/* Gives a node back and clears the field. Takes the address of the handle; bears a null address or field. */
NEMRA_API void nemraNode_release(nemra_onode_t** handle);

/* Engine's text, never null: empty for a null or stale handle. */
NEMRA_API const char* nemraNode_name(nemra_onode_t* node);
NEMRA_API const char* nemraNode_className(nemra_onode_t* node);
NEMRA_API const char* nemraNode_typeName(nemra_onode_t* node);
NEMRA_API const char* nemraNode_comments(nemra_onode_t* node);
/* Family of the varying children; empty if the node has no such list. */
NEMRA_API const char* nemraNode_listClass(nemra_onode_t* node);

NEMRA_API bool nemraNode_setName(nemra_onode_t* node, const char* name);
NEMRA_API void nemraNode_setComments(nemra_onode_t* node, const char* comments);

/* Fixed children, in the order of the slots; each one's name is its slot's name. */
NEMRA_API nemra_onode_t** nemraNode_children(nemra_onode_t* node, uint32_t* count);
/* Varying children of a list node, in the order of adding. */
NEMRA_API nemra_onode_t** nemraNode_getChildList(nemra_onode_t* node, uint32_t* count);
/* The child of that name, the parent's, or null. */
NEMRA_API nemra_onode_t* nemraNode_getChild(nemra_onode_t* node, const char* name);
NEMRA_API nemra_onode_t* nemraNode_getListChild(nemra_onode_t* node, const char* name);
/* Takes the child into the parent: into the slot of its name (same family required), or into the list (family listClass),
 * where a child of the same name is replaced. False if refused: then nothing has changed. */
NEMRA_API bool nemraNode_setChild(nemra_onode_t* parent, nemra_onode_t* child);
NEMRA_API bool nemraNode_isListType(nemra_onode_t* node);

/* A new node that shares its children with the source. Caller's handle. */
NEMRA_API nemra_onode_t* nemraNode_clone(nemra_onode_t* node);
/* A deep copy. Caller's handle. */
NEMRA_API nemra_onode_t* nemraNode_copy(nemra_onode_t* node);

/* format 0: svxml text, 1: svbin. *size: count of bytes. Caller's text; empty for a stale node, null on failure. */
NEMRA_API char* nemraNode_serialize(nemra_onode_t* node, int format, uint32_t* size);

/* Top-level parameters in the order of the class. Engine's array and engine's parameters: good while the node lives. */
NEMRA_API nemra_parameter** nemraNode_getParameters(nemra_onode_t* node, uint32_t* count);
/* Sets the parameter of that raw name wherever it is active. `value` becomes the engine's. `flags` is 0.
 * False if there is no such active parameter, or the value is of the wrong kind or out of range: then nothing has changed. */
NEMRA_API bool nemraNode_setParameter(nemra_onode_t* node, const char* name, nemra_value* value, int flags);

/* Raw data: named, typed slots outside the parameters. */
NEMRA_API int32_t nemraNode_getRawDataSize(nemra_onode_t* node);
/* Caller's text; null for an index out of bounds. */
NEMRA_API char* nemraNode_getRawDataName(nemra_onode_t* node, int32_t index);
NEMRA_API int32_t nemraNode_getRawDataType(nemra_onode_t* node, const char* name);
/* Engine's value, good until the slot is set or the node dies; the caller does not release it. */
NEMRA_API nemra_value* nemraNode_getRawDataValue(nemra_onode_t* node, const char* name);
NEMRA_API bool nemraNode_setRawDataValue(nemra_onode_t* node, const char* name, nemra_value* value);

/* ---- Parameters ------------------------------------------------------------------------------------------------------- */

/* Raw name; engine's text, null for a null parameter. */
NEMRA_API const char* nemraParameter_name(nemra_parameter* parameter);
/* nemra_parameter_type_t; 0 for null or a parameter that the current choice doesn't make active. */
NEMRA_API int32_t nemraParameter_type(nemra_parameter* parameter);
/* A new value, the caller's: released with nemraValue_release. Null for a null parameter. */
NEMRA_API nemra_value* nemraParameter_value(nemra_parameter* parameter);
/* Finds `name` in the subtree that the current selection of `top` makes active; null if absent or `top` is null. */
NEMRA_API nemra_parameter* nemraParameter_findRecursive(nemra_parameter* top, const char* name);

NEMRA_API uint32_t nemraParameter_choicesSize(nemra_parameter* parameter);
/* Engine's text; null for an index out of bounds. */
NEMRA_API const char* nemraParameter_choiceName(nemra_parameter* parameter, uint32_t index);
NEMRA_API uint32_t nemraParameter_choiceParametersSize(nemra_parameter* parameter, uint32_t choice);
/* The index-th parameter that the choice brings, active or not. */
NEMRA_API nemra_parameter* nemraParameter_choiceParameter(nemra_parameter* parameter, uint32_t choice, uint32_t index);

/* Current contents of a table parameter. Engine's table, good until the parameter is set; the caller doesn't release it. */
NEMRA_API nemra_table* nemraParameter_tableValues(nemra_parameter* parameter);
NEMRA_API uint32_t nemraParameter_tableColumnParamsSize(nemra_parameter* parameter);
/* Parameter that stands for a column of the schema: its name is the column's. */
NEMRA_API nemra_parameter* nemraParameter_tableColumnParam(nemra_parameter* parameter, uint32_t index);

/* ---- Values ----------------------------------------------------------------------------------------------------------- */

NEMRA_API nemra_value* nemraValue_create(void);
NEMRA_API nemra_value* nemraValue_create_bool(bool value);
NEMRA_API nemra_value* nemraValue_create_int32(int32_t value);
NEMRA_API nemra_value* nemraValue_create_uint64(uint64_t value);
NEMRA_API nemra_value* nemraValue_create_float(float value);
NEMRA_API nemra_value* nemraValue_create_double(double value);
NEMRA_API nemra_value* nemraValue_create_c_str(const char* text);
/* These copy `count` elements. A null pointer with count 0 gives an empty vector. */
NEMRA_API nemra_value* nemraValue_create_vec_int32_t(const int32_t* data, int count);
NEMRA_API nemra_value* nemraValue_create_vec_float(const float* data, int count);
NEMRA_API nemra_value* nemraValue_create_vec_double(const double* data, int count);
NEMRA_API nemra_value* nemraValue_create_vec_char(const char* data, int count);
/* These take the table or the colour over. */
NEMRA_API nemra_value* nemraValue_create_table(nemra_table* table);
NEMRA_API nemra_value* nemraValue_create_tricolor(nemra_color* color);
/* Frees a value and clears the field. Takes the address of the pointer. */
NEMRA_API void nemraValue_release(nemra_value** value);

NEMRA_API int32_t nemraValue_type(nemra_value* value);
/* Element count of a vector value (1 for a scalar, bytes for text and binary, 0 for an empty value). */
NEMRA_API int32_t nemraValue_size(nemra_value* value);
/* Caller's text, never null: a number in its shortest form that reads back equal. */
NEMRA_API char* nemraValue_toString(nemra_value* value);
/* Pointers to nemraValue_size elements inside the value, or null if the value holds another kind. */
NEMRA_API const float* nemraValue_get_float(nemra_value* value);
NEMRA_API const double* nemraValue_get_double(nemra_value* value);
NEMRA_API const int32_t* nemraValue_get_int32(nemra_value* value);
NEMRA_API const uint64_t* nemraValue_get_uint64(nemra_value* value);
NEMRA_API const char* nemraValue_get_binary(nemra_value* value);
NEMRA_API bool nemraValue_get_bool(nemra_value* value);
/* The colour inside the value; engine's, good while the value lives. */
NEMRA_API nemra_color* nemraValue_get_color(nemra_value* value);

/* ---- Tables ----------------------------------------------------------------------------------------------------------- */

NEMRA_API nemra_table* nemraTableValue_create(void);
NEMRA_API void nemraTableValue_release(nemra_table** table);
NEMRA_API void nemraTableValue_addColumn(nemra_table* table, const char* name);
NEMRA_API bool nemraTableValue_hasColumn(nemra_table* table, const char* name);
NEMRA_API uint32_t nemraTableValue_columnIndex(nemra_table* table, const char* name);
NEMRA_API uint32_t nemraTableValue_numRows(nemra_table* table);
NEMRA_API uint32_t nemraTableValue_numColumns(nemra_table* table);
NEMRA_API void nemraTableValue_resizeRows(nemra_table* table, uint32_t rows);
/* A new value, the caller's; an empty one (type 0) for a cell that was never set, null out of bounds. */
NEMRA_API nemra_value* nemraTableValue_get(nemra_table* table, uint32_t column, uint32_t row);
/* `value` becomes the engine's. False without such a cell (nemraTableValue_columnIndex answers 2^32 - 1 for an unknown column) or
 * if the column holds another kind. */
NEMRA_API bool nemraTableValue_set(nemra_table* table, uint32_t column, uint32_t row, nemra_value* value);

/* ---- Colours ---------------------------------------------------------------------------------------------------------- */

NEMRA_API nemra_color* nemraTriColor_create_name(const char* space, float c0, float c1, float c2);
/* Number of the colour's space, for nemraTriColor_spaceToString; -1 for a space that isn't known. */
NEMRA_API int32_t nemraTriColor_space(nemra_color* color);
/* Engine's text, never null. */
NEMRA_API const char* nemraTriColor_spaceToString(int32_t space);
/* Three floats inside the colour. */
NEMRA_API const float* nemraTriColor_coords(nemra_color* color);

#ifdef __cplusplus
}
#endif

#endif
