// Functions of the flat interface that later work brings. Each answers "empty" and says so in the log.
#include "engine/common/log.h"
#include "module/flat/nemra_node.h"
#include "module/flat/nemra_scene.h"

namespace {

void notAvailable(const char* function) { nemra::log::warning(function, "not available yet"); }

}  // namespace

extern "C" {

__attribute__((weak)) const char* nemraNode_name(nemra_onode_t*) { notAvailable(__func__); return ""; }
__attribute__((weak)) const char* nemraNode_className(nemra_onode_t*) { notAvailable(__func__); return ""; }
__attribute__((weak)) const char* nemraNode_typeName(nemra_onode_t*) { notAvailable(__func__); return ""; }
__attribute__((weak)) const char* nemraNode_comments(nemra_onode_t*) { notAvailable(__func__); return ""; }
__attribute__((weak)) const char* nemraNode_listClass(nemra_onode_t*) { notAvailable(__func__); return ""; }
__attribute__((weak)) bool nemraNode_setName(nemra_onode_t*, const char*) { notAvailable(__func__); return false; }
__attribute__((weak)) void nemraNode_setComments(nemra_onode_t*, const char*) { notAvailable(__func__); }
__attribute__((weak)) nemra_onode_t** nemraNode_children(nemra_onode_t*, uint32_t* count) { if (count) *count = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_onode_t** nemraNode_getChildList(nemra_onode_t*, uint32_t* count) { if (count) *count = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_onode_t* nemraNode_getChild(nemra_onode_t*, const char*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_onode_t* nemraNode_getListChild(nemra_onode_t*, const char*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) bool nemraNode_setChild(nemra_onode_t*, nemra_onode_t*) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraNode_isListType(nemra_onode_t*) { notAvailable(__func__); return false; }
__attribute__((weak)) nemra_parameter** nemraNode_getParameters(nemra_onode_t*, uint32_t* count) { if (count) *count = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) bool nemraNode_setParameter(nemra_onode_t*, const char*, nemra_value*, int) { notAvailable(__func__); return false; }
__attribute__((weak)) int32_t nemraNode_getRawDataSize(nemra_onode_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) char* nemraNode_getRawDataName(nemra_onode_t*, int32_t) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) int32_t nemraNode_getRawDataType(nemra_onode_t*, const char*) { notAvailable(__func__); return 0; }
__attribute__((weak)) nemra_value* nemraNode_getRawDataValue(nemra_onode_t*, const char*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) bool nemraNode_setRawDataValue(nemra_onode_t*, const char*, nemra_value*) { notAvailable(__func__); return false; }
__attribute__((weak)) const char* nemraParameter_name(nemra_parameter*) { notAvailable(__func__); return ""; }
__attribute__((weak)) int32_t nemraParameter_type(nemra_parameter*) { notAvailable(__func__); return 0; }
__attribute__((weak)) nemra_value* nemraParameter_value(nemra_parameter*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_parameter* nemraParameter_findRecursive(nemra_parameter*, const char*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) uint32_t nemraParameter_choicesSize(nemra_parameter*) { notAvailable(__func__); return 0; }
__attribute__((weak)) const char* nemraParameter_choiceName(nemra_parameter*, uint32_t) { notAvailable(__func__); return ""; }
__attribute__((weak)) uint32_t nemraParameter_choiceParametersSize(nemra_parameter*, uint32_t) { notAvailable(__func__); return 0; }
__attribute__((weak)) nemra_parameter* nemraParameter_choiceParameter(nemra_parameter*, uint32_t, uint32_t) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_table* nemraParameter_tableValues(nemra_parameter*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) uint32_t nemraParameter_tableColumnParamsSize(nemra_parameter*) { notAvailable(__func__); return 0; }
__attribute__((weak)) nemra_parameter* nemraParameter_tableColumnParam(nemra_parameter*, uint32_t) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_value* nemraValue_create() { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_value* nemraValue_create_bool(bool) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_value* nemraValue_create_int32(int32_t) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_value* nemraValue_create_uint64(uint64_t) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_value* nemraValue_create_float(float) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_value* nemraValue_create_double(double) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_value* nemraValue_create_c_str(const char*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_value* nemraValue_create_vec_int32_t(const int32_t*, int) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_value* nemraValue_create_vec_float(const float*, int) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_value* nemraValue_create_vec_double(const double*, int) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_value* nemraValue_create_vec_char(const char*, int) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_value* nemraValue_create_table(nemra_table*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_value* nemraValue_create_tricolor(nemra_color*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) void nemraValue_release(nemra_value**) { notAvailable(__func__); }
__attribute__((weak)) int32_t nemraValue_type(nemra_value*) { notAvailable(__func__); return 0; }
__attribute__((weak)) int32_t nemraValue_size(nemra_value*) { notAvailable(__func__); return 0; }
__attribute__((weak)) char* nemraValue_toString(nemra_value*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) const float* nemraValue_get_float(nemra_value*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) const double* nemraValue_get_double(nemra_value*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) const int32_t* nemraValue_get_int32(nemra_value*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) const uint64_t* nemraValue_get_uint64(nemra_value*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) const char* nemraValue_get_binary(nemra_value*) { notAvailable(__func__); return ""; }
__attribute__((weak)) bool nemraValue_get_bool(nemra_value*) { notAvailable(__func__); return false; }
__attribute__((weak)) nemra_color* nemraValue_get_color(nemra_value*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_table* nemraTableValue_create() { notAvailable(__func__); return nullptr; }
__attribute__((weak)) void nemraTableValue_release(nemra_table**) { notAvailable(__func__); }
__attribute__((weak)) void nemraTableValue_addColumn(nemra_table*, const char*) { notAvailable(__func__); }
__attribute__((weak)) bool nemraTableValue_hasColumn(nemra_table*, const char*) { notAvailable(__func__); return false; }
__attribute__((weak)) uint32_t nemraTableValue_columnIndex(nemra_table*, const char*) { notAvailable(__func__); return 0; }
__attribute__((weak)) uint32_t nemraTableValue_numRows(nemra_table*) { notAvailable(__func__); return 0; }
__attribute__((weak)) uint32_t nemraTableValue_numColumns(nemra_table*) { notAvailable(__func__); return 0; }
__attribute__((weak)) void nemraTableValue_resizeRows(nemra_table*, uint32_t) { notAvailable(__func__); }
__attribute__((weak)) nemra_value* nemraTableValue_get(nemra_table*, uint32_t, uint32_t) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) bool nemraTableValue_set(nemra_table*, uint32_t, uint32_t, nemra_value*) { notAvailable(__func__); return false; }
__attribute__((weak)) nemra_color* nemraTriColor_create_name(const char*, float, float, float) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) int32_t nemraTriColor_space(nemra_color*) { notAvailable(__func__); return 0; }
__attribute__((weak)) const char* nemraTriColor_spaceToString(int32_t) { notAvailable(__func__); return ""; }
__attribute__((weak)) const float* nemraTriColor_coords(nemra_color*) { notAvailable(__func__); return nullptr; }

}  // extern "C"
