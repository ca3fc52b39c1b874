// Nodes, parameters and values of the recording engine. A node keeps its class, type and name; all else is scripted.
#include "module/flat/nemra_node.h"

#include <map>
#include <mutex>

#include "tests/probe/recorder.h"

using probe::call;
using probe::callArray;

namespace {

struct NodeData {
    std::string className;
    std::string typeName;
    std::string name;
};

struct Nodes {
    std::mutex mutex;
    std::map<nemra_onode_t*, NodeData> data;
};

Nodes& nodes() {
    static auto* instance = new Nodes;
    return *instance;
}

NodeData* find(nemra_onode_t* node) {
    const std::lock_guard lock(nodes().mutex);
    const auto found = nodes().data.find(node);
    return found == nodes().data.end() ? nullptr : &found->second;
}

nemra_onode_t* make(const char* className, const char* typeName, const char* name) {
    auto* node = probe::freshHandle<nemra_onode_t>();
    const std::lock_guard lock(nodes().mutex);
    nodes().data[node] = {className, typeName, name};
    return node;
}

/// One of the node's own texts, unless the test scripted another.
const char* ownText(const char* function, nemra_onode_t* node, std::string NodeData::* field) {
    probe::record(function, node);
    const NodeData* data = find(node);
    return probe::answerOr<const char*>(function, data ? (data->*field).c_str() : "");
}

}  // namespace

extern "C" {

/// A node of the same class, type and name, as the engine's clones, copies and scenes make it.
PROBE_API nemra_onode_t* probeDuplicateNode(nemra_onode_t* node) {
    const NodeData* data = find(node);
    return data ? make(data->className.c_str(), data->typeName.c_str(), data->name.c_str()) : nullptr;
}

void nemraNode_register() { call<void>("nemraNode_register"); }

nemra_onode_t* nemraNode_create(const char* className, const char* typeName, const char* name) {
    probe::record("nemraNode_create", className, typeName, name);
    return probe::findAnswer("nemraNode_create") ? probe::answerOr<nemra_onode_t*>("nemraNode_create", nullptr)
                                                 : make(className, typeName, name);
}
void nemraNode_release(nemra_onode_t** handle) { call<void>("nemraNode_release", handle); }
const char* nemraNode_name(nemra_onode_t* node) { return ownText("nemraNode_name", node, &NodeData::name); }
const char* nemraNode_className(nemra_onode_t* node) { return ownText("nemraNode_className", node, &NodeData::className); }
const char* nemraNode_typeName(nemra_onode_t* node) { return ownText("nemraNode_typeName", node, &NodeData::typeName); }
const char* nemraNode_comments(nemra_onode_t* node) { return call<const char*>("nemraNode_comments", node); }
const char* nemraNode_listClass(nemra_onode_t* node) { return call<const char*>("nemraNode_listClass", node); }
bool nemraNode_setName(nemra_onode_t* node, const char* name) { return call<bool>("nemraNode_setName", node, name); }
void nemraNode_setComments(nemra_onode_t* node, const char* comments) {
    call<void>("nemraNode_setComments", node, comments);
}
nemra_onode_t** nemraNode_children(nemra_onode_t* node, uint32_t* count) {
    return callArray<nemra_onode_t*>("nemraNode_children", count, node);
}
nemra_onode_t** nemraNode_getChildList(nemra_onode_t* node, uint32_t* count) {
    return callArray<nemra_onode_t*>("nemraNode_getChildList", count, node);
}
nemra_onode_t* nemraNode_getChild(nemra_onode_t* node, const char* name) {
    return call<nemra_onode_t*>("nemraNode_getChild", node, name);
}
nemra_onode_t* nemraNode_getListChild(nemra_onode_t* node, const char* name) {
    return call<nemra_onode_t*>("nemraNode_getListChild", node, name);
}
bool nemraNode_setChild(nemra_onode_t* parent, nemra_onode_t* child) { return call<bool>("nemraNode_setChild", parent, child); }
bool nemraNode_isListType(nemra_onode_t* node) { return call<bool>("nemraNode_isListType", node); }
nemra_onode_t* nemraNode_clone(nemra_onode_t* node) {
    probe::record("nemraNode_clone", node);
    return probeDuplicateNode(node);
}
nemra_onode_t* nemraNode_copy(nemra_onode_t* node) {
    probe::record("nemraNode_copy", node);
    return probeDuplicateNode(node);
}
char* nemraNode_serialize(nemra_onode_t* node, int format, uint32_t* size) {
    *size = probe::answerOr<uint32_t>("size", 0);
    return call<char*>("nemraNode_serialize", node, format);
}
nemra_parameter** nemraNode_getParameters(nemra_onode_t* node, uint32_t* count) {
    return callArray<nemra_parameter*>("nemraNode_getParameters", count, node);
}
bool nemraNode_setParameter(nemra_onode_t* node, const char* name, nemra_value* value, int flags) {
    return call<bool>("nemraNode_setParameter", node, name, value, flags);
}
int32_t nemraNode_getRawDataSize(nemra_onode_t* node) { return call<int32_t>("nemraNode_getRawDataSize", node); }
char* nemraNode_getRawDataName(nemra_onode_t* node, int32_t index) {
    return call<char*>("nemraNode_getRawDataName", node, index);
}
int32_t nemraNode_getRawDataType(nemra_onode_t* node, const char* name) {
    return call<int32_t>("nemraNode_getRawDataType", node, name);
}
nemra_value* nemraNode_getRawDataValue(nemra_onode_t* node, const char* name) {
    return call<nemra_value*>("nemraNode_getRawDataValue", node, name);
}
bool nemraNode_setRawDataValue(nemra_onode_t* node, const char* name, nemra_value* value) {
    return call<bool>("nemraNode_setRawDataValue", node, name, value);
}

const char* nemraParameter_name(nemra_parameter* parameter) { return call<const char*>("nemraParameter_name", parameter); }
int32_t nemraParameter_type(nemra_parameter* parameter) { return call<int32_t>("nemraParameter_type", parameter); }
nemra_value* nemraParameter_value(nemra_parameter* parameter) { return call<nemra_value*>("nemraParameter_value", parameter); }
nemra_parameter* nemraParameter_findRecursive(nemra_parameter* top, const char* name) {
    return call<nemra_parameter*>("nemraParameter_findRecursive", top, name);
}
uint32_t nemraParameter_choicesSize(nemra_parameter* parameter) {
    return call<uint32_t>("nemraParameter_choicesSize", parameter);
}
const char* nemraParameter_choiceName(nemra_parameter* parameter, uint32_t index) {
    return call<const char*>("nemraParameter_choiceName", parameter, index);
}
uint32_t nemraParameter_choiceParametersSize(nemra_parameter* parameter, uint32_t choice) {
    return call<uint32_t>("nemraParameter_choiceParametersSize", parameter, choice);
}
nemra_parameter* nemraParameter_choiceParameter(nemra_parameter* parameter, uint32_t choice, uint32_t index) {
    return call<nemra_parameter*>("nemraParameter_choiceParameter", parameter, choice, index);
}
nemra_table* nemraParameter_tableValues(nemra_parameter* parameter) {
    return call<nemra_table*>("nemraParameter_tableValues", parameter);
}
uint32_t nemraParameter_tableColumnParamsSize(nemra_parameter* parameter) {
    return call<uint32_t>("nemraParameter_tableColumnParamsSize", parameter);
}
nemra_parameter* nemraParameter_tableColumnParam(nemra_parameter* parameter, uint32_t index) {
    return call<nemra_parameter*>("nemraParameter_tableColumnParam", parameter, index);
}

nemra_value* nemraValue_create() { return call<nemra_value*>("nemraValue_create"); }
nemra_value* nemraValue_create_bool(bool value) { return call<nemra_value*>("nemraValue_create_bool", value); }
nemra_value* nemraValue_create_int32(int32_t value) { return call<nemra_value*>("nemraValue_create_int32", value); }
nemra_value* nemraValue_create_uint64(uint64_t value) { return call<nemra_value*>("nemraValue_create_uint64", value); }
nemra_value* nemraValue_create_float(float value) { return call<nemra_value*>("nemraValue_create_float", value); }
nemra_value* nemraValue_create_double(double value) { return call<nemra_value*>("nemraValue_create_double", value); }
nemra_value* nemraValue_create_c_str(const char* text) { return call<nemra_value*>("nemraValue_create_c_str", text); }
nemra_value* nemraValue_create_vec_int32_t(const int32_t* data, int count) {
    return call<nemra_value*>("nemraValue_create_vec_int32_t", probe::Ready{probe::jsonArray(data, count)}, count);
}
nemra_value* nemraValue_create_vec_float(const float* data, int count) {
    return call<nemra_value*>("nemraValue_create_vec_float", probe::Ready{probe::jsonArray(data, count)}, count);
}
nemra_value* nemraValue_create_vec_double(const double* data, int count) {
    return call<nemra_value*>("nemraValue_create_vec_double", probe::Ready{probe::jsonArray(data, count)}, count);
}
nemra_value* nemraValue_create_vec_char(const char* data, int count) {
    return call<nemra_value*>("nemraValue_create_vec_char", probe::Ready{data ? probe::jsonText(data, count) : "null"}, count);
}
nemra_value* nemraValue_create_table(nemra_table* table) { return call<nemra_value*>("nemraValue_create_table", table); }
nemra_value* nemraValue_create_tricolor(nemra_color* color) {
    return call<nemra_value*>("nemraValue_create_tricolor", color);
}
void nemraValue_release(nemra_value** value) { call<void>("nemraValue_release", value); }
int32_t nemraValue_type(nemra_value* value) { return call<int32_t>("nemraValue_type", value); }
int32_t nemraValue_size(nemra_value* value) { return call<int32_t>("nemraValue_size", value); }
char* nemraValue_toString(nemra_value* value) { return call<char*>("nemraValue_toString", value); }
const float* nemraValue_get_float(nemra_value* value) { return call<const float*>("nemraValue_get_float", value); }
const double* nemraValue_get_double(nemra_value* value) { return call<const double*>("nemraValue_get_double", value); }
const int32_t* nemraValue_get_int32(nemra_value* value) { return call<const int32_t*>("nemraValue_get_int32", value); }
const uint64_t* nemraValue_get_uint64(nemra_value* value) { return call<const uint64_t*>("nemraValue_get_uint64", value); }
const char* nemraValue_get_binary(nemra_value* value) { return call<const char*>("nemraValue_get_binary", value); }
bool nemraValue_get_bool(nemra_value* value) { return call<bool>("nemraValue_get_bool", value); }
nemra_color* nemraValue_get_color(nemra_value* value) { return call<nemra_color*>("nemraValue_get_color", value); }

nemra_table* nemraTableValue_create() { return call<nemra_table*>("nemraTableValue_create"); }
void nemraTableValue_release(nemra_table** table) { call<void>("nemraTableValue_release", table); }
void nemraTableValue_addColumn(nemra_table* table, const char* name) { call<void>("nemraTableValue_addColumn", table, name); }
bool nemraTableValue_hasColumn(nemra_table* table, const char* name) {
    return call<bool>("nemraTableValue_hasColumn", table, name);
}
uint32_t nemraTableValue_columnIndex(nemra_table* table, const char* name) {
    return call<uint32_t>("nemraTableValue_columnIndex", table, name);
}
uint32_t nemraTableValue_numRows(nemra_table* table) { return call<uint32_t>("nemraTableValue_numRows", table); }
uint32_t nemraTableValue_numColumns(nemra_table* table) { return call<uint32_t>("nemraTableValue_numColumns", table); }
void nemraTableValue_resizeRows(nemra_table* table, uint32_t rows) { call<void>("nemraTableValue_resizeRows", table, rows); }
nemra_value* nemraTableValue_get(nemra_table* table, uint32_t column, uint32_t row) {
    return call<nemra_value*>("nemraTableValue_get", table, column, row);
}
bool nemraTableValue_set(nemra_table* table, uint32_t column, uint32_t row, nemra_value* value) {
    return call<bool>("nemraTableValue_set", table, column, row, value);
}

nemra_color* nemraTriColor_create_name(const char* space, float c0, float c1, float c2) {
    return call<nemra_color*>("nemraTriColor_create_name", space, c0, c1, c2);
}
int32_t nemraTriColor_space(nemra_color* color) { return call<int32_t>("nemraTriColor_space", color); }
const char* nemraTriColor_spaceToString(int32_t space) { return call<const char*>("nemraTriColor_spaceToString", space); }
const float* nemraTriColor_coords(nemra_color* color) { return call<const float*>("nemraTriColor_coords", color); }

}  // extern "C"
