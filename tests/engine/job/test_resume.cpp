// Renders that go on from the file of an earlier one.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <thread>

#include "engine/core/job/done_samples.h"
#include "engine/core/job/tile_schedule.h"
#include "engine/core/output/write_result.h"
#include "engine/core/result/read_file.h"
#include "engine/core/result/svraw.h"
#include "tests/engine/job/recorder.h"
#include "tests/engine/job/sampled_scene.h"

namespace nemra::test {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

/// A folder of its own, gone with the test, and the messages of this thread.
class Resume : public testing::Test {
protected:
    void SetUp() override {
        static int count = 0;  // a job of the test before may still be saving
        folder_ = fs::temp_directory_path() / ("nemra-resume-" + std::to_string(::getpid()) + "-" + std::to_string(++count));
        fs::create_directories(folder_);
        scene_->pixelsWide = 50;
        scene_->pixelsHigh = 40;
        scene_->perSample = 2us;
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string file() const { return (folder_ / "long.svraw").string(); }

    struct Started {
        Recorder& recorder;
        std::shared_ptr<core::Renderer> renderer;
        bool ok;
    };
    Started start(const core::HaltCondition& halt, int threads = 2, const char* interval = "0",
                  std::shared_ptr<const FakeScene> scene = nullptr) {
        if (!scene) scene = scene_;
        Recorder& recorder = makeRecorder();
        auto renderer = std::make_shared<core::Renderer>();
        recorder.attach(*renderer);
        renderer->setParameter("num_threads", std::to_string(threads));
        renderer->setParameter("output_file_name", (folder_ / "long").string());
        renderer->setParameter("output_raw", "true");
        renderer->setParameter("resume", "true");
        renderer->setParameter("save_interval", interval);
        renderer->setParameter("adaptive", adaptive_ ? "true" : "false");
        renderer->setParameter("first_sample", std::to_string(firstSample_));
        renderer->addLocalNode();
        renderer->setHalt(halt);
        const bool ok = renderer->start([&](const core::Settings& settings, core::RenderPlaces) {
            EXPECT_TRUE(settings.resume);
            return core::LoadedScene{scene, nullptr, print_};
        });
        return {recorder, renderer, ok};
    }
    std::shared_ptr<core::Raw> saved() const {
        const auto bytes = core::readFileWhole(file());
        return bytes ? core::readSvraw(bytes->bytes(), file()) : nullptr;
    }
    std::string bytes() const {
        std::ifstream stream(file(), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    void expectWhole(std::uint32_t samples) const {
        const auto raw = saved();
        ASSERT_TRUE(raw);
        const auto film = scene_->makeFilm();
        const std::atomic<bool> cancel{false};
        auto quick = *scene_;
        quick.perSample = 0us;
        quick.render(*film, {0, 0, 50, 40}, 0, samples, cancel);
        EXPECT_EQ(raw->film()->high, film->high);
        EXPECT_EQ(raw->film()->samples, film->samples);
        EXPECT_EQ(raw->film()->squares, film->squares);
        EXPECT_EQ(raw->film()->depth, film->depth);
        EXPECT_EQ(raw->film()->depthSamples, film->depthSamples);
        EXPECT_EQ(raw->counts().samples, std::uint64_t{50} * 40 * samples);
        EXPECT_EQ(raw->counts().wrong, 0U);
    }

    fs::path folder_;
    std::shared_ptr<FakeScene> scene_ = std::make_shared<FakeScene>();
    std::uint64_t print_ = 77;
    bool adaptive_ = false;
    std::uint32_t firstSample_ = 0;
};

TEST_F(Resume, StoppedAnywhereAndGoneOnWithItIsTheRenderThatWasNotInterrupted) {
    double time = 0.0;
    for (int session = 0; session < 6; ++session) {
        auto [recorder, renderer, ok] = start({0.0, 60.0, NEMRA_HALT_STOPS}, 1 + session % 3);
        ASSERT_TRUE(ok);
        std::this_thread::sleep_for(std::chrono::milliseconds(10 + 7 * session));
        renderer->stop();
        ASSERT_TRUE(recorder.waitForFinish());
        EXPECT_GT(renderer->statistic(NEMRA_STAT_TIME), time) << "sessions add up";
        time = renderer->statistic(NEMRA_STAT_TIME);
        const auto raw = saved();
        ASSERT_TRUE(raw && raw->parts().progress);
        EXPECT_EQ(raw->counts().samples, renderer->statistic(NEMRA_STAT_SAMPLES));
        std::uint64_t kept = 0;
        for (const std::uint32_t n : raw->film()->samples) kept += n;
        EXPECT_EQ(raw->counts().samples, kept);
    }
    auto [recorder, renderer, ok] = start({0.0, 60.0, NEMRA_HALT_STOPS}, 2);
    ASSERT_TRUE(ok);
    ASSERT_TRUE(recorder.waitForFinish());
    expectWhole(60);
}

TEST_F(Resume, AHaltThatIsReachedAlreadyFinishesWithWhatIsThere) {
    auto first = start({0.0, 9.0, NEMRA_HALT_STOPS});
    ASSERT_TRUE(first.ok && first.recorder.waitForFinish());
    auto fewer = start({0.0, 4.0, NEMRA_HALT_STOPS});
    ASSERT_TRUE(fewer.ok && fewer.recorder.waitForFinish());
    expectWhole(9);
    auto timed = start({1.0e-6, 0.0, NEMRA_HALT_STOPS});  // earlier sessions took longer
    ASSERT_TRUE(timed.ok && timed.recorder.waitForFinish());
    EXPECT_LT(nemraRawSPP(timed.recorder.finished[0]), 20.0);
    auto more = start({0.0, 200.0, NEMRA_HALT_STOPS});
    ASSERT_TRUE(more.ok && more.recorder.waitForFinish());
    expectWhole(200);
}

TEST_F(Resume, WhatIsSavedMeanwhileCanBeGoneOnWith) {
    {
        auto killed = start({}, 2, "0.01");
        ASSERT_TRUE(killed.ok);
        std::shared_ptr<core::Raw> raw;
        for (int wait = 0; wait < 500 && !(raw && raw->spp() > 2.0); ++wait) {
            std::this_thread::sleep_for(10ms);
            if (fs::exists(file())) raw = saved();
        }
        ASSERT_TRUE(raw && raw->spp() > 2.0);
        killed.renderer->release();  // no last result is written
    }
    std::this_thread::sleep_for(100ms);  // a file on its way
    const double there = saved()->spp();
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 1);
    const auto more = 2 * static_cast<std::uint32_t>(std::ceil(there)) + 70;  // beyond the pass that was under way
    auto again = start({0.0, static_cast<double>(more), NEMRA_HALT_STOPS});
    ASSERT_TRUE(again.ok && again.recorder.waitForFinish());
    expectWhole(more);
}

TEST_F(Resume, WhatCannotBeSavedIsOneWarning) {
    auto started = start({}, 1, "0.01");
    ASSERT_TRUE(started.ok);
    fs::remove_all(folder_);
    ASSERT_TRUE(started.recorder.waitFor([](const Recorder& r) { return !r.messages.empty(); }));
    std::this_thread::sleep_for(60ms);
    const std::lock_guard lock(started.recorder.mutex);
    ASSERT_EQ(started.recorder.messages.size(), 1U);
    EXPECT_NE(started.recorder.messages[0].find("the render so far isn't saved: can't create the file"), std::string::npos)
        << started.recorder.messages[0];
}

TEST_F(Resume, FilesOfAnotherSceneAndDamagedOnesAreRefusedAndStay) {
    auto first = start({0.0, 3.0, NEMRA_HALT_STOPS});
    ASSERT_TRUE(first.ok && first.recorder.waitForFinish());
    const std::string good = bytes();
    const auto refused = [&](const std::string& reason) {
        const std::string before = bytes();
        auto again = start({0.0, 5.0, NEMRA_HALT_STOPS});
        EXPECT_FALSE(again.ok) << reason;
        EXPECT_TRUE(again.recorder.waitFor([](const Recorder& r) { return r.messages.size() == 1; })) << reason;
        EXPECT_NE(again.recorder.messages[0].find(reason), std::string::npos) << again.recorder.messages[0];
        EXPECT_EQ(bytes(), before);
    };
    print_ = 78;
    refused("another scene");
    print_ = 77;
    scene_->sensor = FakeScene::Sensor::energy;
    refused("another scene");
    scene_->sensor = FakeScene::Sensor::xyz;
    adaptive_ = true;
    refused("without \"adaptive\"");
    adaptive_ = false;
    std::string bad = good;
    bad[bad.size() / 2] = static_cast<char>(bad[bad.size() / 2] ^ 1);
    std::ofstream(file(), std::ios::binary) << bad;
    refused("checksum");
    std::ofstream(file(), std::ios::binary) << good.substr(0, good.size() - 30);
    refused("cut short");

    // Records with a right checksum that say what can't be.
    std::ofstream(file(), std::ios::binary) << good;
    const auto raw = saved();
    ASSERT_TRUE(raw);
    const auto write = [&](const std::function<void(core::RenderProgress&)>& spoil) {
        auto progress = std::make_shared<core::RenderProgress>(*raw->parts().progress);
        spoil(*progress);
        raw->setProgress(progress);
        ASSERT_TRUE(core::writeRaw(*raw, file(), "svraw"));
    };
    const auto original = *raw->parts().progress;
    for (const auto& spoil : std::vector<std::function<void(core::RenderProgress&)>>{
             [](auto& p) { p.done.pop_back(); },                  // samples that nobody took
             [](auto& p) { p.done.push_back(p.done.front()); },   // taken twice
             [](auto& p) { p.done.front().tile.x1 += 1; },        // across two tiles
             [](auto& p) { p.done.front().tile.y0 = -5; },        //
             [](auto& p) { p.done.back().tile.x1 = 1 << 30; },    //
             [](auto& p) { p.done.front().count = 0; },           //
             [](auto& p) { p.done.front().count = 0xFFFFFFFF; },  // beyond the last sample there can be
             [](auto& p) { p.tileSize = 0; },                     //
             [](auto& p) { p.tileSize = 0x7FFFFFFF; }}) {
        write([&](auto& p) {
            p = original;
            spoil(p);
        });
        refused("record of the samples taken is damaged");
    }
    raw->setProgress(nullptr);
    ASSERT_TRUE(core::writeRaw(*raw, file(), "svraw"));
    refused("wasn't saved by a render with \"resume\"");
    std::ofstream(file(), std::ios::binary) << good;
    auto again = start({0.0, 5.0, NEMRA_HALT_STOPS});
    ASSERT_TRUE(again.ok && again.recorder.waitForFinish());
    expectWhole(5);
}

TEST_F(Resume, AnAdaptiveRenderGoesOnWithTheSharesThatItsPilotGave) {
    adaptive_ = true;
    const auto quick = unevenScene(11);
    {
        auto whole = start({0.0, 90.0, NEMRA_HALT_STOPS}, 1, "0", quick);
        ASSERT_TRUE(whole.ok && whole.recorder.waitForFinish());
    }
    const auto expected = saved();
    ASSERT_TRUE(expected);
    fs::remove(file());

    const auto slow = unevenScene(11);
    slow->perPixel = 1us;
    int inPilot = 0;
    int behindPilot = 0;
    for (int session = 0; session < 40; ++session) {
        auto [recorder, renderer, ok] = start({0.0, 90.0, NEMRA_HALT_STOPS}, 1 + session % 3, "0", slow);
        ASSERT_TRUE(ok);
        std::this_thread::sleep_for(8ms);
        renderer->stop();
        ASSERT_TRUE(recorder.waitForFinish());
        const auto raw = saved();
        ASSERT_TRUE(raw && raw->parts().progress && raw->parts().progress->adaptive);
        if (raw->counts().samples == expected->counts().samples) break;
        (raw->parts().progress->adaptive->shares.empty() ? inPilot : behindPilot) += 1;
    }
    EXPECT_GT(inPilot, 0);
    EXPECT_GT(behindPilot, 0);
    auto last = start({0.0, 90.0, NEMRA_HALT_STOPS}, 2, "0", quick);
    ASSERT_TRUE(last.ok && last.recorder.waitForFinish());
    const auto raw = saved();
    EXPECT_EQ(raw->film()->high, expected->film()->high);
    EXPECT_EQ(raw->film()->samples, expected->film()->samples);
    EXPECT_EQ(raw->film()->squares, expected->film()->squares);
    const auto& samples = raw->film()->samples;
    EXPECT_GT(*std::max_element(samples.begin(), samples.end()), 2 * *std::min_element(samples.begin(), samples.end()));

    // Shares that no pilot gives.
    const auto original = *raw->parts().progress;
    for (const auto& spoil : std::vector<std::function<void(core::AdaptiveProgress&)>>{
             [](auto& a) { a.shares.pop_back(); }, [](auto& a) { a.shares[3] = 9.0; },
             [](auto& a) { a.shares[3] = std::nan(""); }, [](auto& a) { a.pilot = 31; }}) {
        auto progress = std::make_shared<core::RenderProgress>(original);
        spoil(*progress->adaptive);
        raw->setProgress(progress);
        ASSERT_TRUE(core::writeRaw(*raw, file(), "svraw"));
        auto refused = start({0.0, 99.0, NEMRA_HALT_STOPS}, 2, "0", quick);
        EXPECT_FALSE(refused.ok);
        EXPECT_TRUE(refused.recorder.waitFor([](const Recorder& r) { return r.messages.size() == 1; }));
        EXPECT_NE(refused.recorder.messages[0].find("damaged"), std::string::npos);
    }
    raw->setProgress(std::make_shared<core::RenderProgress>(original));
    ASSERT_TRUE(core::writeRaw(*raw, file(), "svraw"));
    adaptive_ = false;
    EXPECT_FALSE(start({0.0, 99.0, NEMRA_HALT_STOPS}, 2, "0", quick).ok);
}

TEST_F(Resume, RendersOfRangesOfSamplesMakeUpOne) {
    std::shared_ptr<core::Raw> sum;
    const std::vector<std::uint32_t> cuts{0, 17, 18, 60};
    for (const std::size_t range : {2, 0, 1}) {
        firstSample_ = cuts[range];
        auto part = start({0.0, static_cast<double>(cuts[range + 1]), NEMRA_HALT_STOPS}, 3);
        ASSERT_TRUE(part.ok && part.recorder.waitForFinish());
        const auto raw = saved();
        EXPECT_EQ(raw->spp(), cuts[range + 1] - cuts[range]);
        if (sum) {
            ASSERT_TRUE(sum->add(*raw));
        } else {
            sum = raw;
        }
        fs::remove(file());
    }
    ASSERT_TRUE(core::writeRaw(*sum, file(), "svraw"));
    expectWhole(60);
    fs::remove(file());

    // Cut short, gone on with, and then with what comes before.
    firstSample_ = 20;
    auto cut = start({0.0, 60.0, NEMRA_HALT_STOPS});
    ASSERT_TRUE(cut.ok);
    std::this_thread::sleep_for(20ms);
    cut.renderer->stop();
    ASSERT_TRUE(cut.recorder.waitForFinish());
    auto rest = start({0.0, 60.0, NEMRA_HALT_STOPS});
    ASSERT_TRUE(rest.ok && rest.recorder.waitForFinish());
    EXPECT_EQ(saved()->spp(), 40.0);
    firstSample_ = 0;
    auto before = start({0.0, 60.0, NEMRA_HALT_STOPS});
    ASSERT_TRUE(before.ok && before.recorder.waitForFinish());
    expectWhole(60);
    adaptive_ = true;
    firstSample_ = 20;
    EXPECT_FALSE(start({0.0, 99.0, NEMRA_HALT_STOPS}).ok);
}

TEST_F(Resume, NeedsARawFile) {
    for (const bool named : {false, true}) {
        Recorder& recorder = makeRecorder();
        core::Renderer renderer;
        recorder.attach(renderer);
        renderer.setParameter("resume", "true");
        if (named) {
            renderer.setParameter("output_raw", "true");
            renderer.setParameter("output_file_name", (folder_ / "long.exr").string());
        }
        renderer.addLocalNode();
        EXPECT_FALSE(renderer.start([this](const core::Settings&, core::RenderPlaces) {
            return core::LoadedScene{scene_, nullptr, print_};
        }));
        EXPECT_TRUE(recorder.waitFor([](const Recorder& r) { return r.messages.size() == 1; }));
    }
}

TEST(DoneSamples, KnowsJustWhatWasAdded) {
    std::mt19937 random(7);
    const core::PreparedScene::Tile tile{16, 32, 20, 37};
    for (int round = 0; round < 200; ++round) {
        core::DoneSamples done(tile);
        std::set<std::pair<int, std::uint32_t>> known;  // row and sample
        for (int i = 0; i < 40; ++i) {
            const int y0 = 32 + static_cast<int>(random() % 5), y1 = y0 + 1 + static_cast<int>(random() % (37 - y0));
            const core::Piece piece{
                {16, y0, 20, y1}, static_cast<std::uint32_t>(random() % 20), 1 + static_cast<std::uint32_t>(random() % 6)};
            bool isFree = true;
            const auto each = [&](auto&& what) {
                for (int y = y0; y < y1; ++y) {
                    for (std::uint32_t s = piece.first; s < piece.end(); ++s) what(std::pair{y, s});
                }
            };
            each([&](const auto& sample) { isFree = isFree && !known.contains(sample); });
            ASSERT_EQ(done.add(piece), isFree);
            if (isFree) each([&](const auto& sample) { known.insert(sample); });
        }
        std::uint32_t end = 0;
        for (const auto& sample : known) end = std::max(end, sample.second + 1);
        EXPECT_EQ(done.end(), end);
        std::set<std::pair<int, std::uint32_t>> told, free;
        const auto collect = [](const std::vector<core::Piece>& pieces, auto& into) {
            for (const core::Piece& piece : pieces) {
                EXPECT_EQ(piece.tile.x0, 16);
                EXPECT_EQ(piece.tile.x1, 20);
                for (int y = piece.tile.y0; y < piece.tile.y1; ++y) {
                    for (std::uint32_t s = piece.first; s < piece.end(); ++s) EXPECT_TRUE(into.insert({y, s}).second);
                }
            }
        };
        collect(done.done(), told);
        EXPECT_EQ(told, known);
        collect(done.missing(), free);
        EXPECT_EQ(free.size() + known.size(), 5U * end);
        for (const auto& sample : free) EXPECT_FALSE(known.contains(sample));
        for (const core::Piece& piece : done.missing()) ASSERT_TRUE(done.add(piece));
        if (end == 0) continue;
        EXPECT_EQ(done.done(), (std::vector<core::Piece>{{tile, 0, end}})) << "all of it is one piece again";
    }
    core::DoneSamples done(tile);
    EXPECT_FALSE(done.add({{16, 31, 20, 37}, 0, 1}));
    EXPECT_FALSE(done.add({{16, 32, 21, 37}, 0, 1}));
    EXPECT_FALSE(done.add({{16, 33, 20, 33}, 0, 1}));
}

}  // namespace
}  // namespace nemra::test
