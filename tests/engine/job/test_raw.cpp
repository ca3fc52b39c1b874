// Results by their handles: what a reader of pixels and metadata relies on.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <thread>

#include "engine/common/slot_table.h"
#include "engine/core/result/raw.h"
#include "module/flat/nemra_raw.h"
#include "tests/engine/job/fake_scene.h"

namespace nemra::test {
namespace {

nemra_raw_t* rawOf(const FakeScene& scene, std::uint32_t first, std::uint32_t samples) {
    std::shared_ptr<core::Film> film = scene.makeFilm();
    const std::atomic<bool> cancel{false};
    scene.render(*film, {0, 0, scene.pixelsWide, scene.pixelsHigh}, first, samples, cancel);
    return publish<nemra_raw_t>(std::make_shared<core::Raw>(film, scene, core::RenderCounts{2.0, 240U * samples, 0}));
}

TEST(Raw, ChannelsAndMetaChannelsAreNamedAndBounded) {
    FakeScene scene;
    scene.sensor = FakeScene::Sensor::spectral;
    nemra_raw_t* raw = rawOf(scene, 0, 3);
    EXPECT_EQ(nemraRawChannelCount(raw), 4);
    EXPECT_STREQ(nemraRawChannelName(raw, 2), "550 nm");
    EXPECT_STREQ(nemraRawChannelResponse(raw, 2), "spectral");
    EXPECT_TRUE(nemraRawIsChannelSpectral(raw, 2));
    EXPECT_FALSE(nemraRawIsChannelLuminous(raw, 2));
    EXPECT_DOUBLE_EQ(nemraRawChannelWavelength(raw, 2), 550e-9);
    EXPECT_EQ(nemraRawChannelIndex(raw, "550 nm"), 2);
    EXPECT_EQ(nemraRawChannelIndex(raw, "no"), -1);
    EXPECT_TRUE(nemraRawHasChannel(raw, "450 nm"));
    EXPECT_FALSE(nemraRawHasChannel(raw, "spp")) << "a meta channel is none of the sensor's";
    EXPECT_TRUE(nemraRawHasMetaChannel(raw, "depth"));
    EXPECT_FALSE(nemraRawHasMetaChannel(raw, "snr"));
    nemraRawGenerateSNR(raw);
    ASSERT_TRUE(nemraRawHasMetaChannel(raw, "snr"));
    const int snr = nemraRawChannelIndex(raw, "snr");
    const int variance = nemraRawChannelIndex(raw, "variance");
    EXPECT_EQ(variance, 4);
    EXPECT_STREQ(nemraRawChannelName(raw, snr), "snr");
    double mean = 0.0;
    for (int c = 0; c < 4; ++c) mean += nemraRawGetLightQuantity(raw, c, 4, 4, 0) / 4.0;
    EXPECT_NEAR(nemraRawGetLightQuantity(raw, snr, 4, 4, 0),
                mean / std::sqrt(nemraRawGetLightQuantity(raw, variance, 4, 4, 0) / 3.0), 1e-9);
    for (const int index : {-1, snr + 1, 1 << 30}) {
        EXPECT_EQ(nemraRawChannelName(raw, index), nullptr);
        EXPECT_EQ(nemraRawChannelResponse(raw, index), nullptr);
        EXPECT_EQ(nemraRawGetLightQuantity(raw, index, 0, 0, 0), 0.0);
    }
    EXPECT_EQ(nemraRawGetLightQuantity(raw, 0, 20, 0, 0), 0.0);
    EXPECT_EQ(nemraRawGetLightQuantity(raw, 0, -1, 0, 0), 0.0);
    EXPECT_STREQ(nemraRawGetXHeaderName(raw, 19), "19");
    EXPECT_EQ(nemraRawGetYHeaderName(raw, 12), nullptr);
    nemraRawRelease(&raw);
}

TEST(Raw, VarianceIsThatOfTheSamples) {
    FakeScene scene;
    scene.sensor = FakeScene::Sensor::energy;
    nemra_raw_t* raw = rawOf(scene, 0, 16);
    const double mean = FakeScene::mean(2, 9, 16, 0);
    double sum = 0.0;
    for (std::uint32_t i = 0; i < 16; ++i) sum += std::pow(FakeScene::sample(2, 9, i, 0) - mean, 2);
    EXPECT_NEAR(nemraRawGetLightQuantity(raw, nemraRawChannelIndex(raw, "variance"), 2, 9, 0), sum / 15.0, 1e-9);
    EXPECT_EQ(nemraRawGetLightQuantity(raw, nemraRawChannelIndex(raw, "spp"), 2, 9, 0), 16.0);
    EXPECT_EQ(nemraRawGetLightQuantity(raw, nemraRawChannelIndex(raw, "depth"), 2, 9, 0), 2.0);
    EXPECT_EQ(nemraRawSPS(raw), 240 * 16 / 2.0);
    nemraRawRelease(&raw);
}

TEST(Raw, QuantitiesFollowTheInstrument) {
    FakeScene scene;
    nemra_raw_t* raw = rawOf(scene, 0, 2);
    ASSERT_EQ(nemraRawGetQuantityCount(raw), 5);
    const double radiance = nemraRawGetLightQuantity(raw, 1, 3, 3, NEMRA_QUANTITY_SCENE_RADIANCE);
    EXPECT_EQ(radiance, nemraRawGetLightQuantity(raw, 1, 3, 3, NEMRA_QUANTITY_RAW));
    EXPECT_DOUBLE_EQ(nemraRawGetLightQuantity(raw, 1, 3, 3, NEMRA_QUANTITY_SENSOR_IRRADIANCE), 0.25 * radiance);
    EXPECT_DOUBLE_EQ(nemraRawGetLightQuantity(raw, 1, 3, 3, NEMRA_QUANTITY_SENSOR_POWER), 1.0e-9 * radiance);
    EXPECT_DOUBLE_EQ(nemraRawGetLightQuantity(raw, 1, 3, 3, NEMRA_QUANTITY_SENSOR_EXPOSURE), 0.0025 * radiance);
    const double edge = nemraRawGetLightQuantity(raw, 1, 0, 3, NEMRA_QUANTITY_SCENE_RADIANCE);
    EXPECT_DOUBLE_EQ(nemraRawGetLightQuantity(raw, 1, 0, 3, NEMRA_QUANTITY_SENSOR_IRRADIANCE), 0.125 * edge);
    EXPECT_EQ(nemraRawGetLightQuantity(raw, 1, 3, 3, NEMRA_QUANTITY_SCENE_IRRADIANCE), 0.0);
    EXPECT_EQ(nemraRawGetLightQuantity(raw, 1, 3, 3, 99), 0.0);
    scene.factors = {};
    nemra_raw_t* pinhole = rawOf(scene, 0, 2);
    EXPECT_EQ(nemraRawGetQuantityCount(pinhole), 2);
    EXPECT_EQ(nemraRawGetQuantity(pinhole, 1), NEMRA_QUANTITY_SCENE_RADIANCE);
    nemraRawRelease(&raw);
    nemraRawRelease(&pinhole);
}

TEST(Raw, HalvesMergeToTheWhole) {
    FakeScene scene;
    nemra_raw_t* whole = rawOf(scene, 0, 9);
    nemra_raw_t* first = rawOf(scene, 0, 5);
    nemra_raw_t* second = rawOf(scene, 5, 4);
    nemra_raw_t* before = nemraRawCopy(first);
    ASSERT_TRUE(nemraRawIsCompatible(first, second));
    ASSERT_TRUE(nemraRawAdd(first, second));
    EXPECT_EQ(nemraRawSPP(first), 9.0);
    EXPECT_EQ(nemraRawSPP(before), 5.0) << "a copy keeps what it had";
    for (int x = 0; x < 20; ++x) {
        for (int c = 0; c < 6; ++c)
            EXPECT_EQ(nemraRawGetLightQuantity(first, c, x, 6, 0), nemraRawGetLightQuantity(whole, c, x, 6, 0));
    }
    scene.sensor = FakeScene::Sensor::energy;
    nemra_raw_t* other = rawOf(scene, 0, 1);
    EXPECT_FALSE(nemraRawIsCompatible(first, other));
    EXPECT_FALSE(nemraRawAdd(first, nullptr));
    nemraRawRemoveChannels(first);
    EXPECT_EQ(nemraRawChannelCount(first), 0);
    EXPECT_EQ(nemraRawWidth(first), 20);
    EXPECT_EQ(nemraRawSPP(first), 9.0);
    EXPECT_EQ(nemraRawGetLightQuantity(first, 0, 0, 0, 0), 0.0);
    EXPECT_FALSE(nemraRawHasMetaChannel(first, "spp"));
    for (nemra_raw_t* raw : {whole, first, second, before, other}) nemraRawRelease(&raw);
}

TEST(Raw, AReleasedOneIsStaleForEachThread) {
    FakeScene scene;
    nemra_raw_t* raw = rawOf(scene, 0, 1);
    nemra_raw_t* const stale = raw;
    EXPECT_NE(nemraRawGetLightQuantity(stale, 1, 1, 1, 0), 0.0);
    std::thread([&] { nemraRawRelease(&raw); }).join();
    EXPECT_EQ(nemraRawGetLightQuantity(stale, 1, 1, 1, 0), 0.0);
    EXPECT_EQ(nemraRawWidth(stale), 0);
    EXPECT_EQ(nemraRawGetInstrumentName(stale), nullptr);
    EXPECT_EQ(nemraRawCopy(stale), nullptr);
    EXPECT_EQ(nemraRawChannelIndex(stale, "X"), -1);
}

}  // namespace
}  // namespace nemra::test
