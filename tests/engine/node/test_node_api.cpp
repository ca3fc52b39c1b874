// The functions of the flat interface for nodes, used as a binding uses them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/common/log.h"
#include "engine/common/slot_table.h"
#include "engine/node/node_handle.h"
#include "module/flat/nemra_common.h"
#include "module/flat/nemra_node.h"

namespace {

nemra_onode_t* create(const char* family, const char* type, const char* name = "n") {
    nemraNode_register();
    return nemraNode_create(family, type, name);
}

nemra_parameter* findTop(nemra_onode_t* node, const std::string& name) {
    std::uint32_t count = 0;
    nemra_parameter** const parameters = nemraNode_getParameters(node, &count);
    for (std::uint32_t i = 0; i < count; ++i) {
        if (nemraParameter_name(parameters[i]) == name) return parameters[i];
    }
    return nullptr;
}

std::string textOf(nemra_value* value) {
    char* const text = nemraValue_toString(value);
    std::string result(text);
    freeCharArray(text);
    nemraValue_release(&value);
    return result;
}

std::uint64_t number(nemra_onode_t* handle) { return nemra::toId(handle); }

/// Silences and counts the messages of refused calls.
class NodeApi : public testing::Test {
protected:
    std::vector<std::string> messages;
    nemra::log::Capture capture{[this](const nemra::log::Message& m) { messages.push_back(m.source + ": " + m.text); }};
};

TEST_F(NodeApi, EveryFunctionBearsNullStaleAndForeignHandles) {
    nemra_onode_t* const source = create("bsdf", "lambertian");
    nemra_onode_t* stale = nemraNode_clone(source);
    nemra_onode_t* const kept = stale;
    nemraNode_release(&stale);
    EXPECT_EQ(stale, nullptr);
    auto* const scene = nemra::publish<nemra_scene_t>(std::make_shared<int>(1));
    for (nemra_onode_t* const handle : {static_cast<nemra_onode_t*>(nullptr), kept, reinterpret_cast<nemra_onode_t*>(scene)}) {
        std::uint32_t count = 7;
        EXPECT_STREQ(nemraNode_name(handle), "");
        EXPECT_STREQ(nemraNode_className(handle), "");
        EXPECT_STREQ(nemraNode_typeName(handle), "");
        EXPECT_STREQ(nemraNode_comments(handle), "");
        EXPECT_STREQ(nemraNode_listClass(handle), "");
        EXPECT_FALSE(nemraNode_setName(handle, "x"));
        nemraNode_setComments(handle, "x");
        nemraNode_children(handle, &count);
        EXPECT_EQ(count, 0U);
        count = 7;
        nemraNode_getChildList(handle, &count);
        EXPECT_EQ(count, 0U);
        EXPECT_EQ(nemraNode_getChild(handle, "reflectance"), nullptr);
        EXPECT_EQ(nemraNode_getListChild(handle, "reflectance"), nullptr);
        EXPECT_FALSE(nemraNode_setChild(handle, source));
        EXPECT_FALSE(nemraNode_setChild(source, handle));
        EXPECT_FALSE(nemraNode_isListType(handle));
        EXPECT_EQ(nemraNode_clone(handle), nullptr);
        EXPECT_EQ(nemraNode_copy(handle), nullptr);
        count = 7;
        nemraNode_getParameters(handle, &count);
        EXPECT_EQ(count, 0U);
        EXPECT_FALSE(nemraNode_setParameter(handle, "value", nemraValue_create_double(1.0), 0));
        EXPECT_EQ(nemraNode_getRawDataSize(handle), 0);
        EXPECT_EQ(nemraNode_getRawDataName(handle, 0), nullptr);
        EXPECT_EQ(nemraNode_getRawDataType(handle, "x"), 0);
        EXPECT_EQ(nemraNode_getRawDataValue(handle, "x"), nullptr);
        EXPECT_FALSE(nemraNode_setRawDataValue(handle, "x", nemraValue_create()));
        nemra_onode_t* field = handle;
        nemraNode_release(&field);
        EXPECT_EQ(field, nullptr);
    }
    nemraNode_release(nullptr);
    EXPECT_STREQ(nemraNode_name(source), "n");
    EXPECT_EQ(create("bsdf", "none such"), nullptr);
    EXPECT_EQ(nemraNode_create(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(nemraParameter_type(nullptr), 0);
    EXPECT_EQ(nemraParameter_findRecursive(nullptr, "x"), nullptr);
    EXPECT_EQ(nemraParameter_value(nullptr), nullptr);
    EXPECT_EQ(nemraParameter_tableValues(nullptr), nullptr);
    EXPECT_EQ(nemraValue_size(nullptr), 0);
    EXPECT_EQ(textOf(nullptr), "");
    nemraValue_release(nullptr);
    nemraTableValue_release(nullptr);
}

TEST_F(NodeApi, ANodeHasOneHandle) {
    nemra_onode_t* const bsdf = create("bsdf", "lambertian");
    nemra_onode_t* const child = nemraNode_getChild(bsdf, "reflectance");
    EXPECT_EQ(nemraNode_getChild(bsdf, "reflectance"), child);
    std::uint32_t count = 0;
    EXPECT_EQ(nemraNode_children(bsdf, &count)[0], child);
    EXPECT_EQ(count, nemra::node::findClass("bsdf", "lambertian")->children.size());
    EXPECT_STREQ(nemraNode_name(child), "reflectance");
    EXPECT_GT(number(child), 0U);
    EXPECT_LT(number(child), std::uint64_t{1} << 31);
    EXPECT_EQ(nemraNode_getChild(bsdf, "nothing"), nullptr);
}

TEST_F(NodeApi, AChildThatIsReplacedGoesStale) {
    nemra_onode_t* const bsdf = create("bsdf", "lambertian");
    nemra_onode_t* const before = nemraNode_getChild(bsdf, "reflectance");
    nemra_onode_t* const spectrum = create("spectrum", "blackbody", "mine");
    EXPECT_TRUE(nemraNode_setName(spectrum, nemraNode_name(before)));
    EXPECT_TRUE(nemraNode_setChild(bsdf, spectrum));
    EXPECT_EQ(nemraNode_getChild(bsdf, "reflectance"), spectrum);
    EXPECT_STREQ(nemraNode_typeName(before), "") << "its parent was the only one who held it";
    EXPECT_STREQ(nemraNode_typeName(spectrum), "blackbody");

    // What the caller made lives on when it is replaced in turn; a clone lives as long as its parent keeps it.
    nemra_onode_t* const clone = nemraNode_clone(spectrum);
    EXPECT_TRUE(nemraNode_setChild(bsdf, clone));
    EXPECT_STREQ(nemraNode_typeName(spectrum), "blackbody");
    EXPECT_TRUE(nemraNode_setChild(bsdf, spectrum));
    EXPECT_STREQ(nemraNode_typeName(clone), "");
}

TEST_F(NodeApi, ReleasingAHandleLeavesWhatOthersHold) {
    const std::size_t before = nemra::SlotTable::of(nemra::Kind::node).size();
    nemra_onode_t* layer = nemraNode_clone(create("layer", "generic", "outer"));
    nemra_onode_t* const outer = layer;
    nemra_onode_t* inner = nemraNode_copy(layer);
    nemra_onode_t* const kept = inner;
    EXPECT_TRUE(nemraNode_setName(inner, "inner"));
    EXPECT_TRUE(nemraNode_setChild(layer, inner));
    nemraNode_release(&inner);
    EXPECT_EQ(nemraNode_getListChild(outer, "inner"), kept);
    nemraNode_release(&layer);
    EXPECT_STREQ(nemraNode_name(outer), "");
    EXPECT_STREQ(nemraNode_name(kept), "");
    EXPECT_EQ(nemra::SlotTable::of(nemra::Kind::node).size(), before + 1) << "only the one that was made lives on";
}

TEST_F(NodeApi, NestedParametersAreSeenAtGenerationAndFoundWhenActive) {
    nemra_onode_t* const body = create("spectrum", "blackbody");
    nemra_parameter* const choice = findTop(body, "normalization");
    ASSERT_EQ(nemraParameter_type(choice), NEMRA_PARAMETER_CHOICE);
    ASSERT_EQ(nemraParameter_choicesSize(choice), 3U);
    EXPECT_STREQ(nemraParameter_choiceName(choice, 2), "luminance");
    EXPECT_EQ(nemraParameter_choiceName(choice, 3), nullptr);
    ASSERT_EQ(nemraParameter_choiceParametersSize(choice, 2), 1U);
    EXPECT_EQ(nemraParameter_choiceParametersSize(choice, 9), 0U);
    nemra_parameter* const nested = nemraParameter_choiceParameter(choice, 2, 0);
    EXPECT_EQ(nemraParameter_type(nested), NEMRA_PARAMETER_REAL) << "what an option brings is described before it is selected";
    EXPECT_EQ(nemraParameter_choiceParameter(choice, 2, 1), nullptr);

    EXPECT_EQ(nemraParameter_findRecursive(choice, "luminance"), nullptr);
    EXPECT_FALSE(nemraNode_setParameter(body, "luminance", nemraValue_create_double(3.0), 0));
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0], "spectrum/blackbody n: parameter 'luminance' exists only with normalization = luminance");
    EXPECT_TRUE(nemraNode_setParameter(body, "normalization", nemraValue_create_c_str("luminance"), 0));
    EXPECT_EQ(nemraParameter_findRecursive(choice, "luminance"), nested);
    EXPECT_EQ(nemraParameter_findRecursive(choice, "temperature"), nullptr) << "stands beside the choice, not below it";
    EXPECT_TRUE(nemraNode_setParameter(body, "luminance", nemraValue_create_double(3.0), 0));
    nemra_value* value = nemraParameter_value(nested);
    EXPECT_EQ(*nemraValue_get_double(value), 3.0);
    nemraValue_release(&value);
    EXPECT_EQ(value, nullptr);
}

TEST_F(NodeApi, ValuesComeBackInTheKindThatABindingReads) {
    nemra_onode_t* const camera = create("instrument", "stdcam");
    EXPECT_TRUE(nemraNode_setParameter(camera, "focal_length", nemraValue_create_double(35.1), 0));
    EXPECT_TRUE(nemraNode_setParameter(camera, "width", nemraValue_create_int32(256), 0));
    const float position[3] = {1.5F, -2.0F, 1e-3F};
    EXPECT_TRUE(nemraNode_setParameter(camera, "position", nemraValue_create_vec_float(position, 3), 0));
    EXPECT_FALSE(nemraNode_setParameter(camera, "position", nemraValue_create_vec_float(position, 2), 0));
    nemra_value* value = nemraParameter_value(findTop(camera, "focal_length"));
    EXPECT_EQ(nemraValue_size(value), 1);
    EXPECT_EQ(*nemraValue_get_double(value), 35.1);
    EXPECT_EQ(nemraValue_get_float(value), nullptr);
    nemraValue_release(&value);
    value = nemraParameter_value(findTop(camera, "width"));
    EXPECT_EQ(*nemraValue_get_int32(value), 256);
    nemraValue_release(&value);
    value = nemraParameter_value(findTop(camera, "position"));
    ASSERT_EQ(nemraValue_size(value), 3);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(nemraValue_get_float(value)[i], position[i]);
    nemraValue_release(&value);
    EXPECT_EQ(textOf(nemraParameter_value(findTop(camera, "position"))), "1.5 -2 0.001");
    EXPECT_EQ(textOf(nemraParameter_value(findTop(camera, "aperture"))), "pinhole");

    nemra_onode_t* const rgb = create("spectrum", "rgb");
    EXPECT_FALSE(nemraNode_setParameter(rgb, "color", nemraValue_create_tricolor(nemraTriColor_create_name("", 1, 1, 1)), 0));
    EXPECT_TRUE(nemraNode_setParameter(rgb, "color", nemraValue_create_tricolor(nemraTriColor_create_name("lab", 50, 1, -2)), 0));
    value = nemraParameter_value(findTop(rgb, "color"));
    nemra_color* const color = nemraValue_get_color(value);
    EXPECT_STREQ(nemraTriColor_spaceToString(nemraTriColor_space(color)), "lab");
    EXPECT_EQ(nemraTriColor_coords(color)[2], -2.0F);
    nemraValue_release(&value);
    EXPECT_STREQ(nemraTriColor_spaceToString(99), "");
}

TEST_F(NodeApi, TablesTravelByColumnAndCell) {
    nemra_onode_t* const spectrum = create("spectrum", "tabulated");
    nemra_parameter* const samples = findTop(spectrum, "samples");
    ASSERT_EQ(nemraParameter_tableColumnParamsSize(samples), 2U);
    EXPECT_STREQ(nemraParameter_name(nemraParameter_tableColumnParam(samples, 0)), "wavelength");
    EXPECT_EQ(nemraTableValue_numRows(nemraParameter_tableValues(samples)), 0U);

    nemra_table* table = nemraTableValue_create();
    nemraTableValue_addColumn(table, "wavelength");
    nemraTableValue_addColumn(table, "value");
    nemraTableValue_addColumn(table, "value");
    EXPECT_EQ(nemraTableValue_numColumns(table), 2U);
    EXPECT_EQ(nemraTableValue_columnIndex(table, "value"), 1U);
    EXPECT_FALSE(nemraTableValue_hasColumn(table, "power"));
    EXPECT_FALSE(nemraTableValue_set(table, nemraTableValue_columnIndex(table, "power"), 0, nemraValue_create_double(1)));
    nemraTableValue_resizeRows(table, 3);
    nemraTableValue_resizeRows(table, 0xffffffffU);
    EXPECT_EQ(nemraTableValue_numRows(table), 3U) << "more rows than a table may have are refused";
    for (std::uint32_t row = 0; row < 3; ++row) {
        EXPECT_TRUE(nemraTableValue_set(table, 0, row, nemraValue_create_int32(400 + 100 * int(row))));
        EXPECT_TRUE(nemraTableValue_set(table, 1, row, nemraValue_create_float(0.5F)));
    }
    EXPECT_FALSE(nemraTableValue_set(table, 0, 3, nemraValue_create_int32(1)));
    EXPECT_FALSE(nemraTableValue_set(table, 0, 1, nemraValue_create_c_str("x"))) << "a column holds one kind";
    ASSERT_TRUE(nemraNode_setParameter(spectrum, "samples", nemraValue_create_table(table), 0));
    table = nemraParameter_tableValues(samples);
    nemra_value* cell = nemraTableValue_get(table, 0, 2);
    EXPECT_EQ(nemraValue_type(cell), NEMRA_VALUE_INT32);
    EXPECT_EQ(*nemraValue_get_int32(cell), 600);
    nemraValue_release(&cell);
    EXPECT_EQ(nemraTableValue_get(table, 2, 0), nullptr);
    EXPECT_EQ(nemraTableValue_get(table, 0, 3), nullptr);
}

}  // namespace
