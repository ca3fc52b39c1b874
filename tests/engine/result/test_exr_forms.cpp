// OpenEXR in the forms that other programs write: every compression, types of numbers, subsampled channels, any window and order
// of rows, tiles. And rows that unpack to less than they should, which the library takes for whole.
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfOutputFile.h>
#include <ImfTiledOutputFile.h>
#include <gtest/gtest.h>
#include <half.h>
#include <malloc.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "engine/core/image/exr_head.h"
#include "engine/core/image/picture_film.h"
#include "engine/core/image/read_exr.h"
#include "engine/core/result/read_file.h"
#include "tests/engine/result/made_raw.h"

namespace nemra::test {
namespace {

constexpr int kWidth = 38;
constexpr int kHeight = 300;  // more than the rows that any compression takes together

/// Exact in half precision, and zero over whole blocks, which then pack well.
float value(int channel, int x, int y) {
    return x < 20 && y > 100 ? 0.0F : static_cast<float>((7 * x + 3 * y + 100 * channel) % 1000);
}

struct Form {
    Imf::Compression compression;
    bool subsampled, tiled;
    Imf::LineOrder order;
};

Buffer fileOf(const Form& form, int width = kWidth) {
    const std::string path = (std::filesystem::temp_directory_path() / ("nemra-exr-" + std::to_string(::getpid()))).string();
    const Imath::Box2i window({-4, -6}, {width - 5, kHeight - 7});
    Imf::Header header(window, window, 1.0F, Imath::V2f(0, 0), 1.0F, form.order, form.compression);
    Imf::FrameBuffer frame;
    std::vector<std::vector<float>> planes(3);
    const char* const names[] = {"R", "G", "B"};
    for (int c = 0; c < 3; ++c) {
        auto& plane = planes[static_cast<std::size_t>(c)];
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < width; ++x) plane.push_back(value(c, x, y));
        header.channels().insert(names[c], Imf::Channel(c == 1 ? Imf::FLOAT : Imf::HALF));
    }
    std::vector<std::vector<half>> halves(3);
    for (std::size_t c = 0; c < 3; ++c) {
        halves[c].assign(planes[c].begin(), planes[c].end());
        if (c == 1) {
            frame.insert(names[c], Imf::Slice::Make(Imf::FLOAT, planes[c].data(), window));
        } else {
            frame.insert(names[c], Imf::Slice::Make(Imf::HALF, halves[c].data(), window));
        }
    }
    std::vector<float> coarse(static_cast<std::size_t>(width * kHeight), 5.0F);
    if (form.subsampled) {
        header.channels().insert("coarse", Imf::Channel(Imf::FLOAT, 2, 2));
        frame.insert("coarse",
                     Imf::Slice::Make(Imf::FLOAT, coarse.data(), window, 4, 4 * static_cast<std::size_t>(width / 2 + 1), 2, 2));
    }
    if (form.tiled) {
        header.setTileDescription(Imf::TileDescription(16, 48));
        Imf::TiledOutputFile file(path.c_str(), header);
        file.setFrameBuffer(frame);
        file.writeTiles(0, file.numXTiles() - 1, 0, file.numYTiles() - 1);
    } else {
        Imf::OutputFile file(path.c_str(), header);
        file.setFrameBuffer(frame);
        file.writePixels(kHeight);
    }
    auto bytes = core::readFileWhole(path);
    std::filesystem::remove(path);
    return std::move(bytes).value();
}

TEST(ExrForms, EachIsRead) {
    node::registerClasses();
    for (int compression = Imf::NO_COMPRESSION; compression < Imf::NUM_COMPRESSION_METHODS; ++compression) {
        for (const int variant : {0, 1, 2, 3}) {
            const bool lossy = compression >= Imf::B44_COMPRESSION;
            const Form form{static_cast<Imf::Compression>(compression), variant == 1, variant == 2,
                            variant == 3 ? Imf::DECREASING_Y : Imf::INCREASING_Y};
            const std::string what = "compression " + std::to_string(compression) + ", variant " + std::to_string(variant);
            const Messages messages;
            core::ColorSpace same = core::colorSpace("srgb");
            same.toXyzRows = {1, 0, 0, 0, 1, 0, 0, 0, 1};
            const auto raw =
                core::readExr(fileOf(form).bytes(), "a.exr", {.colors = &same, .scale = 0.5, .flipped = variant == 3});
            ASSERT_EQ(raw->width(), kWidth) << what;
            ASSERT_EQ(raw->height(), kHeight) << what;
            ASSERT_TRUE(messages.errors.empty()) << what;
            double worst = 0.0;
            for (int x = 0; x < kWidth; ++x) {
                for (int y = 0; y < kHeight; ++y) {
                    for (int c = 0; c < 3; ++c)
                        worst = std::max(
                            worst, std::abs(2.0 * raw->film()->high[raw->film()->cell(x, variant == 3 ? kHeight - 1 - y : y, c)] -
                                            value(c, x, y)));
                }
            }
            EXPECT_LE(worst, lossy ? 100.0 : 0.0) << what;
        }
    }
}

/// With rows that are said to be wider than they were packed.
std::vector<char> widened(const Buffer& file) {
    std::vector<char> wider(file.bytes().begin(), file.bytes().end());
    const std::string_view name("dataWindow\0box2i\0", 17);
    const auto at = std::string_view(wider.data(), wider.size()).find(name);
    EXPECT_NE(at, std::string_view::npos);
    const std::int32_t last = kWidth + 200;
    std::memcpy(wider.data() + at + name.size() + 4 + 8, &last, sizeof last);
    return wider;
}

// Whatever memory held before must not become a picture.
TEST(ExrForms, RowsThatUnpackToTooLittleAreRefused) {
    node::registerClasses();
    for (int compression = Imf::NO_COMPRESSION; compression < Imf::NUM_COMPRESSION_METHODS; ++compression) {
        for (const bool tiled : {false, true}) {
            if (compression == Imf::PIZ_COMPRESSION && !tiled) continue;
            const Buffer file = fileOf({static_cast<Imf::Compression>(compression), false, tiled, Imf::INCREASING_Y});
            EXPECT_THROW(core::readExr(widened(file), "a.exr"), core::PictureFault) << "compression " << compression;
        }
    }
}

// PIZ goes on decoding zero bits where its rows end: such a picture is what the file says, and nothing else.
TEST(ExrForms, ShortRowsOfPizHoldNothingOfMemory) {
    node::registerClasses();
    const auto file = widened(fileOf({Imf::PIZ_COMPRESSION, false, false, Imf::INCREASING_Y}));
    const auto numbers = [&](int filling) {
        ::mallopt(M_PERTURB, filling);  // what memory holds when it is given out
        PagedVector<double> high;
        try {
            high = core::readExr(file, "a.exr")->film()->high;
        } catch (const core::PictureFault&) {
            // refused, which is as good
        }
        ::mallopt(M_PERTURB, 0);
        return high;
    };
    EXPECT_EQ(numbers(0x11), numbers(0xee));
}

template <class Number>
Number numberAt(const std::vector<char>& bytes, std::size_t at) {
    Number number{};
    std::memcpy(&number, bytes.data() + at, sizeof number);
    return number;
}

// What the tables of places lead to: chunks of nothing, cut ones, other tiles than those that are wanted, and none at all.
TEST(ExrForms, DamagedChunksAreRefused) {
    node::registerClasses();
    for (int compression = Imf::NO_COMPRESSION; compression < Imf::NUM_COMPRESSION_METHODS; ++compression) {
        for (const bool tiled : {false, true}) {
            const std::string what = "compression " + std::to_string(compression) + (tiled ? ", tiled" : "");
            const Buffer file = fileOf({static_cast<Imf::Compression>(compression), false, tiled, Imf::INCREASING_Y});
            const std::vector<char> whole(file.bytes().begin(), file.bytes().end());
            const std::size_t table = core::checkExrHead(whole);
            const auto place = numberAt<std::uint64_t>(whole, table);
            const std::size_t sizeAt = place + (tiled ? 16 : 4);
            const auto size = numberAt<std::int32_t>(whole, sizeAt);
            ASSERT_NO_THROW(core::readExr(whole, "a.exr")) << what;
            const auto refused = [&](std::size_t at, auto number) {
                auto damaged = whole;
                std::memcpy(damaged.data() + at, &number, sizeof number);
                EXPECT_THROW(core::readExr(damaged, "a.exr"), core::PictureFault) << what << ", " << number << " at " << at;
            };
            refused(sizeAt, std::int32_t{0});
            refused(sizeAt, std::int32_t{-1});
            refused(sizeAt, std::int32_t{0x7fffffff});
            refused(sizeAt, std::int32_t{size / 2});
            refused(place, std::int32_t{1});
            if (!tiled) continue;
            refused(table, numberAt<std::uint64_t>(whole, table + 8));
            refused(table, std::uint64_t{0});
            refused(table, std::uint64_t{0x7fffffffffffffff});
            refused(place + 8, std::int32_t{1});  // of another level
        }
    }
}

// DWA packs channels in three ways, and says of each how much there is: less than the channels need would come out of memory.
TEST(ExrForms, CountsOfDwaAreCompared) {
    node::registerClasses();
    for (const auto compression : {Imf::DWAA_COMPRESSION, Imf::DWAB_COMPRESSION}) {
        const Buffer file = fileOf({compression, true, false, Imf::INCREASING_Y});
        const std::vector<char> whole(file.bytes().begin(), file.bytes().end());
        ASSERT_NO_THROW(core::readExr(whole, "a.exr"));
        const std::size_t counts = numberAt<std::uint64_t>(whole, core::checkExrHead(whole)) + 8;
        const auto refused = [&](std::size_t word, auto&& change) {
            auto damaged = whole;
            const std::uint64_t number = change(numberAt<std::uint64_t>(whole, counts + 8 * word));
            std::memcpy(damaged.data() + counts + 8 * word, &number, sizeof number);
            EXPECT_THROW(core::readExr(damaged, "a.exr"), core::PictureFault) << compression << ", word " << word;
        };
        const auto less = [](std::uint64_t number) { return number - 1; };
        const auto none = [](std::uint64_t) { return std::uint64_t{0}; };
        for (const std::size_t word : {1U, 2U, 3U, 4U, 8U, 9U}) refused(word, none);  // the file has nothing in runs
        for (const std::size_t word : {1U, 9U}) refused(word, less);
        for (const std::size_t word : {1U, 5U}) refused(word, [](std::uint64_t) { return ~std::uint64_t{0}; });
    }
}

}  // namespace
}  // namespace nemra::test
