// Files of results: readable by the formats' own libraries with the right values, and whole or not there at all.
#include <ImfArray.h>
#include <ImfChannelList.h>
#include <ImfFloatAttribute.h>
#include <ImfFrameBuffer.h>
#include <ImfInputFile.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>
#include <gtest/gtest.h>
#include <png.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include "engine/common/slot_table.h"
#include "engine/common/workdir.h"
#include "engine/core/data/tables.h"
#include "engine/core/output/filters.h"
#include "engine/core/output/write_file.h"
#include "engine/core/output/write_result.h"
#include "module/flat/nemra_global.h"
#include "module/flat/nemra_raw.h"
#include "tests/engine/job/recorder.h"

namespace nemra::test {
namespace {

namespace fs = std::filesystem;

/// A folder of its own, gone with the test, and the messages of this thread.
class Output : public testing::Test {
protected:
    void SetUp() override {
        node::registerClasses();
        folder_ = fs::temp_directory_path() / ("nemra-test-" + std::to_string(::getpid()));
        fs::create_directories(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }
    std::string path(const std::string& name) const { return (folder_ / name).string(); }
    std::size_t entries() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
    }

    static std::shared_ptr<core::Raw> rawOf(FakeScene& scene, std::uint32_t samples) {
        std::shared_ptr<core::Film> film = scene.makeFilm();
        const std::atomic<bool> cancel{false};
        scene.render(*film, {0, 0, scene.pixelsWide, scene.pixelsHigh}, 0, samples, cancel);
        return std::make_shared<core::Raw>(film, scene, core::RenderCounts{1.5, 100, 0});
    }

    fs::path folder_;
    std::vector<std::string> messages_;
    log::Capture capture_{[this](const log::Message& message) { messages_.push_back(message.source + ": " + message.text); }};
};

std::vector<float> exrPlane(Imf::InputFile& file, const std::string& channel) {
    const auto window = file.header().dataWindow();
    const auto width = static_cast<std::size_t>(window.max.x + 1);
    std::vector<float> plane(width * static_cast<std::size_t>(window.max.y + 1));
    Imf::FrameBuffer frame;
    frame.insert(channel, Imf::Slice(Imf::FLOAT, reinterpret_cast<char*>(plane.data()), sizeof(float), sizeof(float) * width));
    file.setFrameBuffer(frame);
    file.readPixels(0, window.max.y);
    return plane;
}

// A class that nothing is known of is named once for each picture, which is made all the same.
TEST_F(Output, UnknownOutputsAndFiltersAreNamedOnce) {
    const node::NodeClass outputClass{.family = "output", .type = "unheard_of", .summary = "Made up", .listClass = "filter"};
    const node::NodeClass filterClass{.family = "filter", .type = "unheard_of", .summary = "Made up"};
    const auto output = std::make_shared<node::Node>(outputClass, "o");
    std::string why;
    ASSERT_TRUE(output->setChild(std::make_shared<node::Node>(filterClass, "f"), why)) << why;
    FakeScene scene;
    const auto raw = rawOf(scene, 1);
    raw->setOutput(output);
    EXPECT_TRUE(core::outputFormats(*raw).empty());
    EXPECT_TRUE(core::writeAuto(*raw, path("a.png")));
    ASSERT_EQ(messages_.size(), 2U);
    EXPECT_TRUE(messages_[0].starts_with("output/unheard_of o: ")) << messages_[0];
    EXPECT_TRUE(messages_[1].starts_with("filter/unheard_of f: ")) << messages_[1];
}

TEST_F(Output, PngHoldsTheDisplayedPictureTheRightWayUp) {
    FakeScene scene;
    auto raw = rawOf(scene, 8);
    ASSERT_EQ(nemraRawWriteAuto(nullptr, path("a.png").c_str()), 1);
    ASSERT_TRUE(core::writeAuto(*raw, path("a.png")));
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_TRUE(png_image_begin_read_from_file(&image, path("a.png").c_str()));
    image.format = PNG_FORMAT_RGB;
    std::vector<unsigned char> bytes(PNG_IMAGE_SIZE(image));
    ASSERT_TRUE(png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr));
    ASSERT_EQ(image.width, 20U);
    ASSERT_EQ(image.height, 12U);

    const auto xyz = core::toXyz(*raw->film(), *raw->view(), "cie1931_2deg");
    const double gain = core::averageAutoGain(xyz, 0.18);
    double mean = 0.0;
    for (std::size_t i = 1; i < xyz.values.size(); i += 3) mean += std::min(1.0, gain * xyz.values[i]) / 240.0;
    EXPECT_NEAR(mean, 0.18, 1e-6);
    for (const auto& [x, y] : {std::pair{0, 0}, std::pair{19, 0}, std::pair{3, 11}}) {
        const double X = gain * FakeScene::mean(x, y, 8, 0), Y = gain * FakeScene::mean(x, y, 8, 1),
                     Z = gain * FakeScene::mean(x, y, 8, 2);
        const double linear =
            std::clamp(-0.9692436363 * X + 1.8759675015 * Y + 0.0415550574 * Z, 0.0, 1.0);  // green, IEC 61966-2-1
        const double code = linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
        EXPECT_NEAR(bytes[3 * static_cast<std::size_t>(y * 20 + x) + 1], 255.0 * code, 0.6 + 255 * 0.001) << x << "," << y;
    }
    std::ifstream file(path("a.png"), std::ios::binary);
    const std::string head(std::istreambuf_iterator<char>(file), {});
    for (const char* chunk : {"iCCP", "gAMA", "cHRM"}) EXPECT_NE(head.find(chunk), std::string::npos);
    EXPECT_EQ(entries(), 1U) << "no temporary file may stay";
}

TEST_F(Output, ExrOfTristimulusValuesIsPhotometric) {
    FakeScene scene;
    auto raw = rawOf(scene, 4);
    ASSERT_TRUE(core::writeAuto(*raw, path("a.EXR")));
    Imf::InputFile file(path("a.EXR").c_str());
    EXPECT_EQ(Imf::whiteLuminance(file.header()), 1.0F);
    const auto colors = Imf::chromaticities(file.header());
    EXPECT_FLOAT_EQ(colors.red.x, 0.64F);
    EXPECT_FLOAT_EQ(colors.white.y, 0.329F);
    const auto r = exrPlane(file, "R"), g = exrPlane(file, "G"), b = exrPlane(file, "B");
    for (const auto& [x, y] : {std::pair{0, 0}, std::pair{19, 0}, std::pair{3, 11}}) {
        const auto i = static_cast<std::size_t>(y * 20 + x);
        const double luminance = 0.2126390059 * r[i] + 0.7151686788 * g[i] + 0.0721923154 * b[i];
        EXPECT_NEAR(luminance, FakeScene::mean(x, y, 4, 1), 2e-3) << x << "," << y;
    }
    EXPECT_EQ(file.header().findTypedAttribute<Imf::StringAttribute>("spectralLayoutVersion"), nullptr);
}

TEST_F(Output, ExrOfBandsFollowsThePublishedLayoutAndItsLuminance) {
    FakeScene scene;
    scene.sensor = FakeScene::Sensor::spectral;
    auto raw = rawOf(scene, 4);
    ASSERT_TRUE(core::writeAuto(*raw, path("a.exr")));
    Imf::InputFile file(path("a.exr").c_str());
    EXPECT_EQ(file.header().typedAttribute<Imf::StringAttribute>("spectralLayoutVersion").value(), "1.0");
    EXPECT_EQ(file.header().typedAttribute<Imf::StringAttribute>("emissiveUnits").value(), "W.m^-2.sr^-1");
    EXPECT_EQ(file.header().typedAttribute<Imf::StringAttribute>("sarvo:valueUnit").value(), "W.m^-2.sr^-1.nm^-1");
    double luminance = 0.0;
    const std::array<std::pair<const char*, int>, 3> bands{
        {{"S0.450,000000nm", 1}, {"S0.550,000000nm", 2}, {"S0.650,000000nm", 3}}};
    for (const auto& [name, channel] : bands) {
        ASSERT_NE(file.header().channels().findChannel(name), nullptr) << name;
        const float value = exrPlane(file, name)[static_cast<std::size_t>(7 * 20 + 5)];
        EXPECT_FLOAT_EQ(value, static_cast<float>(FakeScene::mean(5, 7, 4, channel)));
        // The integral of ybar over the band, by a sum of its own: 683 lm/W times the mean radiance of the band.
        const int first = 350 + 100 * channel - 5 - core::data::kObserverFirst;
        double band = 0.0;
        for (int i = 0; i < 10; ++i) band += 0.5 * (core::data::kCie1931[first + i][1] + core::data::kCie1931[first + i + 1][1]);
        luminance += 683.0 * band * value;
    }
    EXPECT_NE(file.header().channels().findChannel("S0.1000,000000nm"), nullptr);
    const auto i = static_cast<std::size_t>(7 * 20 + 5);
    const double shown =
        0.2126390059 * exrPlane(file, "R")[i] + 0.7151686788 * exrPlane(file, "G")[i] + 0.0721923154 * exrPlane(file, "B")[i];
    EXPECT_NEAR(shown, luminance, 2e-4 * luminance);
}

TEST_F(Output, WhatCannotBeWrittenIsSaidOnceAndTheOldFileStays) {
    FakeScene scene;
    auto raw = rawOf(scene, 1);
    const auto refused = [&](const std::string& name, const std::string& reason) {
        messages_.clear();
        EXPECT_FALSE(core::writeAuto(*raw, name)) << name;
        ASSERT_EQ(messages_.size(), 1U) << name;
        EXPECT_NE(messages_[0].find(reason), std::string::npos) << messages_[0];
    };
    refused(path("missing/a.png"), "No such file or directory");
    fs::create_directory(path("folder.png"));
    refused(path("folder.png"), "Is a directory");
    fs::create_symlink("/dev/full", path("full.png"));
    refused(path("full.png"), "No space left on device");
    EXPECT_TRUE(fs::is_symlink(path("full.png")) && fs::is_character_file("/dev/full"));
    refused(path(std::string(5000, 'a') + ".png"), "File name too long");
    refused(path("a.xlsx"), "unknown format");
    refused(path("a.xyz"), "unknown format");
    refused(path("a"), "no extension");
    EXPECT_EQ(entries(), 2U);

    for (int i = 0; i < 1000; ++i) {  // what a killed process of the same number has left behind
        std::ofstream(path(".nemra-" + std::to_string(getpid()) + "-" + std::to_string(i) + ".part")) << "half";
    }
    EXPECT_TRUE(core::writeAuto(*raw, path("new.png")));
    for (int i = 0; i < 1000; ++i) fs::remove(path(".nemra-" + std::to_string(getpid()) + "-" + std::to_string(i) + ".part"));
    fs::remove(path("new.png"));
    EXPECT_EQ(entries(), 2U);

    std::ofstream(path("old.png")) << "old";
    struct rlimit before {};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{64, before.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    refused(path("old.png"), "File too large");
    setrlimit(RLIMIT_FSIZE, &before);
    std::ifstream old(path("old.png"));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(old), {}), "old");
    EXPECT_EQ(entries(), 3U);
    fs::permissions(path("old.png"), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_TRUE(core::writeAuto(*raw, path("old.png")));
    EXPECT_EQ(fs::status(path("old.png")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

/// Renders one sample. Empty if the start is refused, else the files that came.
std::vector<std::string> filesOfRender(const fs::path& folder, const std::string& given, const char* raw, Recorder& recorder) {
    core::Renderer renderer;
    recorder.attach(renderer);
    renderer.setParameter("output_file_name", given);
    renderer.setParameter("output_raw", raw);
    renderer.addLocalNode();
    renderer.setHalt({0.0, 1.0, NEMRA_HALT_STOPS});
    std::vector<std::string> files;
    if (!renderer.start(loaderOf(std::make_shared<FakeScene>()))) {
        recorder.waitFor([](const Recorder& r) { return !r.messages.empty(); });
        return files;
    }
    EXPECT_TRUE(recorder.waitForFinish());
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) files.push_back(fs::relative(entry.path(), folder).string());
    }
    for (const std::string& file : files) fs::remove(folder / file);
    return files;
}

TEST_F(Output, TheLastResultOfARenderGoesWhereTheParameterSays) {
    fs::create_directories(path("v1.5"));
    fs::create_directories(path("room.v2"));
    const struct {
        const char* given;
        const char* raw;
        const char* written;
        bool warns;
    } cases[] = {
        {"a", "false", "a.png", false},
        {"a", "true", "a.svraw", false},
        {"a.auto", "false", "a.png", false},
        {"a.AUTO", "true", "a.svraw", false},
        {"a.exr", "false", "a.exr", false},
        {"a.exr", "true", "a.exr", false},
        {"a.svraw", "false", "a.svraw", false},
        {"a.PNG", "false", "a.PNG", false},
        {"a.JPEG", "false", "a.JPEG", false},
        // What is no format belongs to the name.
        {"room.v2", "false", "room.v2.png", false},
        {"room.v2", "true", "room.v2.svraw", false},
        {"room.v2.auto", "false", "room.v2.png", false},
        {"v1.5/a", "false", "v1.5/a.png", false},
        {"a.", "false", "a.png", false},
        {"a...", "true", "a.svraw", false},
        // What this result isn't written in gives way.
        {"a.png", "true", "a.svraw", true},
        {"a.b.jpg", "true", "a.b.svraw", true},
        {"a.html", "false", "a.png", true},
    };
    for (const auto& one : cases) {
        Recorder& recorder = makeRecorder();
        EXPECT_EQ(filesOfRender(folder_, path(one.given), one.raw, recorder), std::vector<std::string>{one.written}) << one.given;
        EXPECT_EQ(recorder.messages.size(), one.warns ? 1U : 0U) << one.given;
        if (!recorder.messages.empty()) {
            EXPECT_NE(recorder.messages[0].find(path(one.written)), std::string::npos) << recorder.messages[0];
        }
    }
}

TEST_F(Output, ARenderWhoseFileCannotBeWrittenDoesNotStart) {
    fs::create_directories(path("folder.png"));
    std::ofstream(path("file")) << "x";
    for (const std::string& given :
         {path("missing/a.png"), path("missing/a"), path("file/a.png"), path("folder.png"), path("folder.png/"), path(".."),
          path("folder.png/."), path(std::string(5000, 'x')), path(std::string(252, 'x'))}) {
        Recorder& recorder = makeRecorder();
        EXPECT_TRUE(filesOfRender(folder_, given, "false", recorder).empty()) << given;
        ASSERT_EQ(recorder.messages.size(), 1U) << given;
        EXPECT_NE(recorder.messages[0].find("the render doesn't start"), std::string::npos) << recorder.messages[0];
    }
    EXPECT_EQ(core::whyNotWritable("/dev/null"), "");
}

// A class that nothing is known of offers no list, so only the encoder finds out.
TEST_F(Output, ALastResultThatCannotBeEncodedIsKeptAsItIs) {
    const node::NodeClass unknown{.family = "output", .type = "unheard_of", .summary = "Made up", .listClass = "filter"};
    FakeScene scene;
    const auto raw = rawOf(scene, 1);
    raw->setOutput(std::make_shared<node::Node>(unknown, "o"));
    EXPECT_FALSE(core::writeFinal(*raw, path("a.txt"), false));
    EXPECT_FALSE(fs::exists(path("a.txt")));
    EXPECT_TRUE(fs::exists(path("a.txt.svraw")));
    ASSERT_EQ(messages_.size(), 2U);
    EXPECT_NE(messages_[1].find("a.txt.svraw"), std::string::npos) << messages_[1];
}

TEST_F(Output, RelativeNamesCountFromTheWorkingDirectory) {
    const std::string before = nemraGlobalGetWorkdir();
    EXPECT_FALSE(nemraGlobalSetWorkdir(path("nowhere").c_str()));
    EXPECT_EQ(nemraGlobalGetWorkdir(), before);
    ASSERT_TRUE(nemraGlobalSetWorkdir(folder_.c_str()));
    EXPECT_EQ(resolvePath("a.png"), path("a.png"));
    FakeScene scene;
    nemra_raw_t* raw = publish<nemra_raw_t>(rawOf(scene, 1));
    EXPECT_EQ(nemraRawWriteAuto(raw, "a.png"), 0);
    EXPECT_TRUE(fs::exists(path("a.png")));
    nemraRawRelease(&raw);
    ASSERT_TRUE(nemraGlobalSetWorkdir(before.c_str()));
}

TEST(AverageAutoGain, ALampInViewDoesNotDarkenTheRoom) {
    core::XyzImage room{10, 10, std::vector<float>(300, 2.0F)};
    EXPECT_NEAR(core::averageAutoGain(room, 0.18), 0.09, 1e-9);
    room.values[1] = 1.0e6F;
    EXPECT_NEAR(core::averageAutoGain(room, 0.18), (18.0 - 1.0) / 198.0, 1e-6);
    EXPECT_EQ(core::averageAutoGain({10, 10, std::vector<float>(300, 0.0F)}, 0.18), 1.0);
    core::XyzImage lampAlone{10, 10, std::vector<float>(300, 0.0F)};
    lampAlone.values[1] = 5.0F;
    EXPECT_TRUE(std::isfinite(core::averageAutoGain(lampAlone, 0.18)));
}

}  // namespace
}  // namespace nemra::test
