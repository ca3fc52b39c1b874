// Files that claim to be enormous: refused with one message, soon, and before the memory is taken.
#include <ImfChannelList.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <gtest/gtest.h>
#include <libdeflate.h>

#include <chrono>
#include <cstring>

#include "engine/common/byte_reader.h"
#include "engine/core/image/image_node.h"
#include "engine/core/output/encode.h"
#include "tests/engine/result/made_raw.h"
#include "tests/engine/scene/peak_memory.h"

namespace nemra::test {
namespace {

void expectRefused(const std::vector<char>& file, const std::string& what) {
    node::Node image(*node::findClass("image", "embedded"), "bomb");
    std::string why;
    ASSERT_TRUE(image.setRawSlot("data", node::Value{file}, why)) << why;
    Messages messages;
    std::shared_ptr<core::Raw> raw;
    const auto began = std::chrono::steady_clock::now();
    const double peak = peakMemory([&] { raw = core::rawFromImage(image); });
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
    EXPECT_EQ(raw, nullptr) << what;
    EXPECT_EQ(messages.errors.size(), 1U) << what;
    EXPECT_LT(took.count(), 1.0) << what;
    EXPECT_LT(peak, 64.0 * 1024 * 1024) << what;
}

void appendBigEndian(std::vector<char>& bytes, std::uint32_t number) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<char>(number >> shift));
}

void appendPngChunk(std::vector<char>& png, std::string_view tag, const std::vector<char>& data) {
    appendBigEndian(png, static_cast<std::uint32_t>(data.size()));
    const std::size_t start = png.size();
    png.insert(png.end(), tag.begin(), tag.end());
    png.insert(png.end(), data.begin(), data.end());
    appendBigEndian(png, libdeflate_crc32(0, png.data() + start, png.size() - start));
}

std::vector<char> png(std::uint32_t width, std::uint32_t height, char bits, char colors, char interlace, std::size_t size) {
    std::vector<char> file{'\x89', 'P', 'N', 'G', '\r', '\n', '\x1a', '\n'};
    std::vector<char> head;
    appendBigEndian(head, width);
    appendBigEndian(head, height);
    head.insert(head.end(), {bits, colors, 0, 0, interlace});
    appendPngChunk(file, "IHDR", head);
    appendPngChunk(file, "IDAT", std::vector<char>(size, 'x'));  // no deflated stream
    appendPngChunk(file, "IEND", {});
    return file;
}

class Bombs : public testing::Test {
protected:
    void SetUp() override {
        node::registerClasses();
        raw_ = makeRaw(FakeScene(), 1);
    }
    std::shared_ptr<core::Raw> raw_;
};

TEST_F(Bombs, Png) {
    for (const char interlace : {'\0', '\1'}) {
        expectRefused(png(0x7fffffff, 1, 8, 2, interlace, 100), "2^31 - 1 wide");
        expectRefused(png(1, 0x7fffffff, 8, 2, interlace, 100), "2^31 - 1 high");
        expectRefused(png(0x7fffffff, 0x7fffffff, 16, 6, interlace, 100), "a product that overflows");
        expectRefused(png(100000, 100000, 8, 2, interlace, 100), "100000 x 100000");
        expectRefused(png(60000, 60000, 1, 0, interlace, 4000), "3.6 billion pixels of one bit");
    }
    expectRefused(png(65536, 500, 1, 0, 0, 4000), "as many as the best compression gives, but none are there");
}

TEST_F(Bombs, Jpeg) {
    const auto jpeg = core::encodeJpeg(core::makeDisplayImage(*raw_, false));
    const std::string text(jpeg.begin(), jpeg.end());
    const auto frame = text.find("\xff\xc0");
    ASSERT_NE(frame, std::string::npos);
    for (const auto& [width, height] : {std::pair{65535, 65535}, std::pair{65500, 65500}, std::pair{1200, 2000}}) {
        auto bomb = jpeg;
        for (int i = 0; i < 2; ++i) {
            const auto at = frame + 5 + static_cast<std::size_t>(i);
            bomb[at] = static_cast<char>(height >> (8 - 8 * i));
            bomb[at + 2] = static_cast<char>(width >> (8 - 8 * i));
        }
        expectRefused(bomb, std::to_string(width) + " x " + std::to_string(height));
    }
}

TEST_F(Bombs, Radiance) {
    const std::string head = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n";
    for (const char* const size : {"-Y 100000 +X 100000\n", "-Y 2147483647 +X 2147483647\n", "-Y 65536 +X 65536\n",
                                   "-Y 1e300 +X 1e300\n", "-Y 2000 +X 400\n"}) {  // the last is plausible, and cut short
        std::string file = head + size;
        file.resize(file.size() + 4000, 'x');
        expectRefused({file.begin(), file.end()}, size);
    }
}

/// With another data window.
std::vector<char> exr(std::vector<char> file, std::array<std::int32_t, 4> window) {
    const std::string_view name("dataWindow\0box2i\0", 17);
    const auto at = std::string_view(file.data(), file.size()).find(name);
    EXPECT_NE(at, std::string_view::npos);
    std::memcpy(file.data() + at + name.size() + 4, window.data(), sizeof window);
    return file;
}

TEST_F(Bombs, OpenExr) {
    FakeScene scene;
    scene.sensor = FakeScene::Sensor::spectral;
    for (const auto& raw : {raw_, makeRaw(scene, 1)}) {
        const auto file = core::encodeExr(*raw);
        constexpr std::int32_t most = 0x7fffffff;
        expectRefused(exr(file, {0, 0, most - 1, most - 1}), "2^31 - 1 a side");
        expectRefused(exr(file, {-most - 1, -most - 1, most, most}), "a width that overflows");
        expectRefused(exr(file, {5, 5, 4, 4}), "nothing");
        expectRefused(exr(file, {0, 0, 99999, 99999}), "100000 x 100000");
        expectRefused(exr(file, {0, 0, 65535, 65535}), "the largest side that is read");
        expectRefused(exr(file, {0, 0, 8457, 769}), "more than deflate can shrink");
        expectRefused(exr(file, {0, 0, 16392, 3}),
                      "few rows, so wide that the library's own buffers are larger than the picture");
        expectRefused(exr(file, {0, 0, 300, 300}), "plausible, and not there");
    }
}

class StringStream final : public Imf::OStream {
public:
    StringStream() : OStream("bomb") {}
    void write(const char data[], int size) override { bytes.append(data, static_cast<std::size_t>(size)); }
    std::uint64_t tellp() override { return bytes.size(); }
    void seekp(std::uint64_t) override {}

    std::string bytes;
};

// Tiles of a pixel each: the table of their places would be what takes the memory.
TEST_F(Bombs, OpenExrOfTiles) {
    for (const int side : {60000, 8000, 2000}) {
        Imf::Header header(side, side);
        header.setTileDescription(Imf::TileDescription(1, 1));
        for (const char* const name : {"R", "G", "B"}) header.channels().insert(name, Imf::Channel(Imf::HALF));
        StringStream file;
        const int magic = 20000630, tiled = 2 | 0x200;
        file.write(reinterpret_cast<const char*>(&magic), 4);
        file.write(reinterpret_cast<const char*>(&tiled), 4);
        header.writeTo(file, true);
        file.bytes.resize(file.bytes.size() + 4000);
        expectRefused({file.bytes.begin(), file.bytes.end()}, std::to_string(side));
    }
}

}  // namespace
}  // namespace nemra::test
