// The instrument and the output that a result carries: out and in as svbin, from other results, and beside copies.
#include <gtest/gtest.h>

#include "engine/common/slot_table.h"
#include "engine/node/svbin/svbin.h"
#include "module/flat/nemra_raw.h"
#include "tests/engine/result/made_raw.h"

namespace nemra::test {
namespace {

int append(void* user, char byte) {
    static_cast<std::string*>(user)->push_back(byte);
    return 1;
}

std::string bytesOf(const node::Node& node) {
    const Buffer bytes = node::writeSvbin(node);
    return std::string(bytes.text());
}

class RawNodes : public testing::Test {
protected:
    RawNodes() {
        scene_.camera = makeCamera();
        raw_ = publish<nemra_raw_t>(makeRaw(scene_, 2));
    }
    ~RawNodes() override { nemraRawRelease(&raw_); }

    static std::string instrument(nemra_raw_t* raw) {
        std::string bytes;
        nemraRawGetInstrument(raw, &bytes, append);
        return bytes;
    }
    static std::string output(nemra_raw_t* raw) {
        std::string bytes;
        nemraRawGetOutput(raw, &bytes, append);
        return bytes;
    }
    static bool setOutput(nemra_raw_t* raw, const std::string& bytes) {
        return nemraRawSetOutput(raw, bytes.data(), static_cast<int>(bytes.size()));
    }

    FakeScene scene_;
    nemra_raw_t* raw_ = nullptr;
    Messages messages_;
};

TEST_F(RawNodes, GoOutAsSvbinAndComeInAgain) {
    EXPECT_EQ(instrument(raw_), bytesOf(*scene_.camera));
    EXPECT_EQ(output(raw_), bytesOf(*scene_.camera->list().at(0)));
    ASSERT_TRUE(setOutput(raw_, bytesOf(*scene_.camera->list().at(1))));
    EXPECT_STREQ(nemraRawGetOutputName(raw_), "bright");
    EXPECT_EQ(output(raw_), bytesOf(*scene_.camera->list().at(1)));

    const node::Node other(*node::findClass("instrument", "idealrectcam"), "other");
    const std::string bytes = bytesOf(other);
    const double before = nemraRawGetLightQuantity(raw_, 0, 3, 3, NEMRA_QUANTITY_SENSOR_POWER);
    ASSERT_TRUE(nemraRawSetInstrument(raw_, bytes.data(), static_cast<int>(bytes.size())));
    EXPECT_STREQ(nemraRawGetInstrumentName(raw_), "other");
    EXPECT_STREQ(nemraRawGetInstrumentOutput(raw_, 0), "rgbimage") << "the default picture of an instrument without presets";
    EXPECT_EQ(nemraRawGetInstrumentOutput(raw_, 1), nullptr);
    EXPECT_STREQ(nemraRawGetOutputName(raw_), "bright") << "the current output stays";
    EXPECT_EQ(nemraRawGetLightQuantity(raw_, 0, 3, 3, NEMRA_QUANTITY_SENSOR_POWER), before) << "what was measured stays";
    EXPECT_TRUE(messages_.errors.empty());
}

TEST_F(RawNodes, WhatIsNoNodeOfTheFamilyIsRefusedAndNothingChanges) {
    const std::string good = output(raw_);
    const std::string wrongFamily = instrument(raw_);
    std::string damaged = good;
    damaged.resize(damaged.size() / 2);
    for (const std::string& bad : {wrongFamily, damaged, std::string("<node/>"), std::string()}) {
        messages_.errors.clear();
        EXPECT_FALSE(setOutput(raw_, bad));
        EXPECT_EQ(messages_.errors.size(), 1U);
    }
    EXPECT_FALSE(nemraRawSetOutput(raw_, nullptr, 10));
    EXPECT_FALSE(nemraRawSetOutput(raw_, good.data(), -1));
    EXPECT_FALSE(nemraRawSetInstrument(nullptr, good.data(), static_cast<int>(good.size())));
    EXPECT_EQ(output(raw_), good);
    EXPECT_EQ(instrument(nullptr), "");
    EXPECT_EQ(nemraRawGetOutput(raw_, nullptr, nullptr), 1);
}

TEST_F(RawNodes, OutputsComeFromOtherResultsByName) {
    FakeScene plain;
    nemra_raw_t* target = publish<nemra_raw_t>(makeRaw(plain, 1));
    EXPECT_EQ(nemraRawImportOutput(target, raw_, "bright"), 0);
    EXPECT_STREQ(nemraRawGetOutputName(target), "bright");
    EXPECT_EQ(nemraRawImportOutput(target, raw_, "no such"), 1);
    EXPECT_EQ(nemraRawImportOutput(target, nullptr, "bright"), 1);
    EXPECT_EQ(nemraRawImportOutput(target, raw_, nullptr), 1);
    EXPECT_STREQ(nemraRawGetOutputName(target), "bright");
    nemraRawRelease(&target);
}

TEST_F(RawNodes, ACopyGoesItsOwnWay) {
    nemra_raw_t* copy = nemraRawCopy(raw_);
    ASSERT_TRUE(setOutput(copy, bytesOf(*scene_.camera->list().at(1))));
    nemraRawRemoveChannels(copy);
    EXPECT_STREQ(nemraRawGetOutputName(raw_), "plain");
    EXPECT_EQ(nemraRawChannelCount(raw_), 3);
    EXPECT_EQ(nemraRawChannelCount(copy), 0);
    EXPECT_EQ(nemraRawSPP(copy), 2.0);
    EXPECT_EQ(instrument(copy), instrument(raw_));
    nemraRawRelease(&copy);
}

// Three samples beside one count three times as much.
TEST_F(RawNodes, AddWeighsBySamples) {
    nemra_raw_t* more = publish<nemra_raw_t>(makeRaw(scene_, 6, 2));
    ASSERT_TRUE(nemraRawIsCompatible(raw_, more));
    ASSERT_TRUE(nemraRawAdd(raw_, more));
    for (const auto& [x, y] : {std::pair{0, 0}, std::pair{19, 11}, std::pair{7, 3}}) {
        EXPECT_EQ(nemraRawGetLightQuantity(raw_, 1, x, y, 0), FakeScene::mean(x, y, 8, 1));
    }
    EXPECT_EQ(nemraRawSPP(raw_), 8.0);
    FakeScene small = scene_;
    small.pixelsWide = 19;
    nemra_raw_t* other = publish<nemra_raw_t>(makeRaw(small, 1));
    EXPECT_FALSE(nemraRawIsCompatible(raw_, other));
    EXPECT_FALSE(nemraRawAdd(raw_, other));
    EXPECT_EQ(messages_.errors.size(), 1U);
    EXPECT_EQ(nemraRawSPP(raw_), 8.0);
    nemraRawRelease(&other);
    nemraRawRelease(&more);
}

}  // namespace
}  // namespace nemra::test
