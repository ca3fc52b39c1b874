// svraw: what was written comes back to the bit, and nothing that is damaged does.
#include <gtest/gtest.h>
#include <libdeflate.h>

#include <cstring>
#include <random>

#include "engine/common/byte_reader.h"
#include "engine/core/result/read_file.h"
#include "engine/core/result/svraw.h"
#include "engine/core/result/svraw_layout.h"
#include "tests/engine/result/made_raw.h"

namespace nemra::test {
namespace {

std::vector<char> fileOf(const core::Raw& raw) {
    const Buffer file = core::writeSvraw(raw);
    return {file.data(), file.data() + file.size()};
}

/// Reads what must be refused.
void expectRefused(const std::vector<char>& file, const std::string& what) {
    Messages messages;
    EXPECT_EQ(core::readSvraw(file, "test.svraw"), nullptr) << what;
    ASSERT_EQ(messages.errors.size(), 1U) << what;
    EXPECT_TRUE(messages.errors[0].starts_with("test.svraw:byte ")) << messages.errors[0];
}

/// A chunk with its checksum right.
void appendChunk(std::vector<char>& file, std::string_view tag, const std::vector<char>& payload, std::uint32_t codec = 0) {
    const std::size_t start = file.size();
    file.insert(file.end(), tag.begin(), tag.end());
    appendNumber(file, codec);
    appendNumber(file, static_cast<std::uint64_t>(payload.size()));
    file.insert(file.end(), payload.begin(), payload.end());
    appendNumber(file, libdeflate_crc32(0, file.data() + start, file.size() - start));
}

TEST(Svraw, HoldsEverythingToTheBit) {
    for (const auto sensor : {FakeScene::Sensor::xyz, FakeScene::Sensor::spectral, FakeScene::Sensor::energy}) {
        FakeScene scene;
        scene.sensor = sensor;
        scene.camera = makeCamera();
        const auto raw = makeRaw(scene, 5);
        raw->setOutput(raw->outputs().at(1));
        raw->generateSnr();
        raw->setDraft(true);
        const auto file = fileOf(*raw);
        const auto again = core::readSvraw(file, "a");
        ASSERT_NE(again, nullptr);
        EXPECT_TRUE(sameFilm(*raw->film(), *again->film()));
        EXPECT_TRUE(raw->isCompatible(*again));
        EXPECT_EQ(again->quantities(), raw->quantities());
        EXPECT_EQ(again->counts().time, 1.5);
        EXPECT_EQ(again->counts().samples, raw->counts().samples);
        EXPECT_EQ(again->counts().wrong, 2U);
        EXPECT_TRUE(again->hasMetaChannel("snr"));
        EXPECT_TRUE(again->isDraft());
        EXPECT_EQ(again->instrument()->name(), "north view");
        EXPECT_EQ(again->instrument()->real("exposure_time"), 0.125);
        EXPECT_EQ(again->output()->name(), "bright");
        EXPECT_EQ(again->output()->list().at(0)->real("gain"), 0.05);
        ASSERT_EQ(again->outputs().size(), 2U);
        for (const int quantity : {0, 1, 2, 4, 5}) {
            EXPECT_EQ(again->view()->at(0, 0, 3, quantity), raw->view()->at(0, 0, 3, quantity)) << quantity;
        }
        EXPECT_EQ(fileOf(*again), file) << "written again";
    }
}

// A render that was stored half-way and goes on elsewhere is the whole render.
TEST(Svraw, HalvesMergeToTheWholeAfterward) {
    FakeScene scene;
    const auto whole = makeRaw(scene, 12);
    const auto first = core::readSvraw(fileOf(*makeRaw(scene, 5)), "a");
    const auto second = core::readSvraw(fileOf(*makeRaw(scene, 7, 5)), "b");
    ASSERT_TRUE(first && second);
    ASSERT_TRUE(second->add(*first));
    EXPECT_TRUE(sameFilm(*whole->film(), *second->film()));
    EXPECT_EQ(second->spp(), 12.0);
    EXPECT_EQ(second->counts().time, 3.0);
}

TEST(Svraw, WithoutChannelsTheMetadataIsKept) {
    FakeScene scene;
    scene.camera = makeCamera();
    const auto raw = makeRaw(scene, 3);
    raw->removeChannels();
    const auto again = core::readSvraw(fileOf(*raw), "a");
    ASSERT_NE(again, nullptr);
    EXPECT_TRUE(again->film()->channels.empty());
    EXPECT_EQ(again->spp(), 3.0);
    EXPECT_EQ(again->instrument()->name(), "north view");
}

// Written when blocks were shuffled and deflated; the numbers are those that its writer gave then.
TEST(Svraw, FilesOfTheFirstVersionAreRead) {
    node::registerClasses();
    const auto file = core::readFileWhole(NEMRA_SOURCE_DIR "/tests/data/results/version_1.svraw");
    ASSERT_TRUE(file.has_value());
    const auto raw = core::readSvraw(file->bytes(), "a");
    ASSERT_NE(raw, nullptr);
    const auto view = raw->view();
    ASSERT_EQ(view->channels, 3);
    EXPECT_EQ(static_cast<float>(view->at(1, 3, 2, NEMRA_QUANTITY_RAW)), 5663.1753F);
    EXPECT_NEAR(view->at(2, 3, 2, NEMRA_QUANTITY_SENSOR_POWER), 1.16656e-4, 1.0e-9);
    double sum = 0.0, variances = 0.0, depths = 0.0;
    for (int x = 0; x < 12; ++x) {
        for (int y = 0; y < 8; ++y) {
            for (int c = 0; c < 3; ++c) sum += static_cast<float>(view->at(c, x, y, NEMRA_QUANTITY_RAW));
            variances += static_cast<float>(view->at(3, x, y, NEMRA_QUANTITY_RAW));
            depths += static_cast<float>(view->at(5, x, y, NEMRA_QUANTITY_RAW));
        }
    }
    EXPECT_DOUBLE_EQ(sum, 2446729.24234581);
    EXPECT_DOUBLE_EQ(variances, 659883062824.8047);
    EXPECT_DOUBLE_EQ(depths, 70.82660561800003);
    EXPECT_EQ(raw->spp(), 4.0);
    EXPECT_EQ(raw->counts().samples, 384U);
    EXPECT_TRUE(raw->hasMetaChannel("snr"));
    EXPECT_EQ(raw->output()->name(), "image");
    auto none = std::vector<char>(file->bytes().begin(), file->bytes().end());
    none[8] = 0;
    expectRefused(none, "a version that there never was");
}

// Blocks of 4 MiB: arrays of more than one, black ones (which pack best) and noise (which doesn't pack).
TEST(Svraw, LargeImagesAreCutAndBlackOnesStayReadable) {
    FakeScene scene;
    scene.pixelsWide = 700;
    scene.pixelsHigh = 1000;
    const auto black = std::make_shared<core::Raw>(scene.makeFilm(), scene, core::RenderCounts{});
    const auto file = fileOf(*black);
    EXPECT_LT(file.size(), 700U * 1000U);
    const auto again = core::readSvraw(file, "a");
    ASSERT_NE(again, nullptr);
    EXPECT_TRUE(sameFilm(*black->film(), *again->film()));

    std::shared_ptr<core::Film> film = scene.makeFilm();
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> uniform(0.0, 1.0e6);
    for (double& value : film->high) value = uniform(random);
    const core::Raw noise(film, scene, {});
    const auto noisy = core::readSvraw(fileOf(noise), "a");
    ASSERT_NE(noisy, nullptr);
    EXPECT_TRUE(sameFilm(*film, *noisy->film()));
}

TEST(Svraw, EveryTruncationAndEveryFlippedBitIsRefused) {
    FakeScene scene;
    scene.pixelsWide = 3;
    scene.pixelsHigh = 2;
    scene.camera = makeCamera();
    const auto file = fileOf(*makeRaw(scene, 2));
    for (std::size_t size = 0; size < file.size(); ++size) {
        expectRefused({file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size)}, "cut at " + std::to_string(size));
    }
    for (std::size_t at = 0; at < file.size(); ++at) {
        auto damaged = file;
        damaged[at] = static_cast<char>(damaged[at] ^ (1 << (at % 8)));
        expectRefused(damaged, "bit of byte " + std::to_string(at));
    }
    auto longer = file;
    longer.push_back(0);
    expectRefused(longer, "a byte behind the end");
    auto later = file;
    later[8] = 3;
    expectRefused(later, "a later version");
}

// Checksums are no protection against those who mean it.
TEST(Svraw, ClaimsOfGreatSizeAreRefusedBeforeMemoryIsTaken) {
    const auto head = [](std::int32_t width, std::int32_t height, std::uint32_t channels) {
        std::vector<char> file(core::kSvrawMagic.begin(), core::kSvrawMagic.end());
        appendNumber(file, core::kSvrawVersion);
        std::vector<char> info;
        appendNumber(info, width);
        appendNumber(info, height);
        for (int i = 0; i < 3; ++i) appendNumber(info, std::uint64_t{0});
        appendNumber(info, std::uint32_t{0});
        appendNumber(info, std::uint32_t{0});
        appendChunk(file, "INFO", info);
        std::vector<char> list;
        appendNumber(list, channels);
        for (std::uint32_t i = 0; i < std::min(channels, 4U); ++i) {
            appendText(list, "c");
            appendText(list, "1");
            appendNumber(list, std::uint32_t{0});
            appendNumber(list, 0.0);
            appendNumber(list, 0.0);
        }
        appendChunk(file, "CHAN", list);
        appendChunk(file, "HIGH", {});
        return file;
    };
    expectRefused(head(0, 5, 1), "no pixels");
    expectRefused(head(-1, 5, 1), "fewer than none");
    expectRefused(head(1 << 20, 1 << 20, 1), "a product that is too large");
    expectRefused(head(2147483647, 2147483647, 4), "a product that overflows");
    expectRefused(head(16000, 16000, 1), "two gigabytes out of three hundred bytes");
    expectRefused(head(2, 2, 0xffffffff), "four billion channels");
    expectRefused(head(2, 2, 1), "a missing block");
}

TEST(Svraw, ChunksThatMayBeSkippedAreAndOthersAreNot) {
    FakeScene scene;
    auto file = fileOf(*makeRaw(scene, 1));
    std::vector<char> extra;
    appendChunk(extra, "note", {'h', 'i'});
    auto with = file;
    with.insert(with.begin() + static_cast<std::ptrdiff_t>(core::svraw::kFileHead), extra.begin(), extra.end());
    EXPECT_NE(core::readSvraw(with, "a"), nullptr);
    std::vector<char> needed;
    appendChunk(needed, "NOTE", {'h', 'i'});
    with = file;
    with.insert(with.begin() + static_cast<std::ptrdiff_t>(core::svraw::kFileHead), needed.begin(), needed.end());
    expectRefused(with, "an unknown chunk that counts");
}

}  // namespace
}  // namespace nemra::test
