// Valid files that were cut or damaged, in each encoding: refused with one message, or a sound scene that can be written, read
// back and rendered.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <random>

#include "engine/core/render.h"
#include "engine/node/encoding/encode.h"
#include "engine/node/read_scene.h"
#include "tests/engine/scene/messages.h"
#include "tests/engine/scene/read_or_explain.h"
#include "tests/engine/scene/small_scene.h"

namespace nemra::node {
namespace {

using test::Messages;
using test::svxmlOf;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kMutations = 1000;
#else
constexpr int kMutations = 10000;
#endif
constexpr int kRenderEach = 20;  // of the mutations that can be read

struct Input {
    Format format;
    bool box;  // the Cornell box, else the small scene
};

std::string encodedScene(const Input& input) {
    Scene scene;
    if (input.box) {
        EXPECT_TRUE(readSceneFile(NEMRA_SOURCE_DIR "/sarvo/examples/cornellbox.svxml", scene));
    } else {
        EXPECT_TRUE(readScene(test::kSmallScene, "small scene", scene));
    }
    return std::string(encode(scene, input.format).text());
}

/// A sample for each pixel of 8 x 8.
void render(const Scene& scene) {
    const Messages messages;
    const auto prepared = core::prepareScene(scene, "");
    EXPECT_EQ(messages.errors(), prepared ? 0 : 1) << messages.text();
    if (!prepared || prepared->width() > 1024 || prepared->height() > 1024) return;
    const auto film = prepared->makeFilm();
    const std::atomic<bool> cancel{false};
    prepared->render(*film, {0, 0, std::min(8, prepared->width()), std::min(8, prepared->height())}, 0, 1, cancel);
}

class DamagedScenes : public testing::TestWithParam<Input> {
protected:
    static void SetUpTestSuite() { registerClasses(); }

    /// True if it was read; one in some of these is rendered too.
    bool readOrExplain(std::string_view bytes) {
        Scene scene;
        if (!test::readOrExplain(bytes, scene)) return false;
        if (++taken_ % kRenderEach == 0) render(scene);
        return true;
    }

    int taken_ = 0;
};

TEST_P(DamagedScenes, CutAnywhere) {
    const std::string whole = encodedScene(GetParam());
    // A text may lack the line end behind its last element.
    const std::size_t needed = GetParam().format == Format::svxml ? whole.size() - 1 : whole.size();
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t size = 0; size < whole.size(); ++size)
        ASSERT_EQ(readOrExplain(std::string_view(whole).substr(0, size)), size >= needed) << "cut at " << size;
    EXPECT_TRUE(readOrExplain(whole));
    // Far below the 50 ms that one may take, or the loop would be felt.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50) * static_cast<int>(whole.size()));
}

TEST_P(DamagedScenes, EachBitOfTheFirstKilobyte) {
    const std::string whole = encodedScene(GetParam());
    std::string bytes = whole;
    for (std::size_t bit = 0; bit < 8 * std::min<std::size_t>(1024, whole.size()); ++bit) {
        const auto flip = [&] { bytes[bit / 8] ^= static_cast<char>(1U << bit % 8); };
        flip();
        readOrExplain(bytes);
        flip();
        if (HasFailure()) FAIL() << "bit " << bit;
    }
}

/// Bits, bytes, words or pieces, wherever.
class Damage {
public:
    explicit Damage(unsigned seed) : random_(seed) {}

    std::string of(const std::string& whole, int kind) {
        std::string bytes = whole;
        const auto position = [&] { return random_() % whole.size(); };
        switch (kind % 4) {
            case 0:  // single bits
                for (unsigned k = 0, bits = 1 + random_() % 16; k < bits; ++k)
                    bytes[position()] ^= static_cast<char>(1U << random_() % 8);
                break;
            case 1:  // a byte
                bytes[position()] = static_cast<char>(random_());
                break;
            case 2: {  // a word with an awkward number
                constexpr std::uint32_t kAwkward[] = {0, 1, 0x7f, 0x7fffffff, 0x80000000, 0xffffffff, 0xfffffffc, 4};
                const std::size_t at = position() / 4 * 4;
                const std::uint32_t word = kAwkward[random_() % std::size(kAwkward)];
                for (std::size_t k = 0; k < 4 && at + k < bytes.size(); ++k) bytes[at + k] = static_cast<char>(word >> (8 * k));
                break;
            }
            default: {  // a piece moved elsewhere
                const std::size_t from = position(), to = position();
                const std::size_t size = std::min({std::size_t{1 + random_() % 64}, whole.size() - from, whole.size() - to});
                bytes.replace(to, size, whole, from, size);
            }
        }
        return bytes;
    }

private:
    std::mt19937 random_;
};

TEST_P(DamagedScenes, DamagedAnywhere) {
    const std::string whole = encodedScene(GetParam());
    Damage damage(20240611);
    for (int i = 0; i < kMutations; ++i) {
        readOrExplain(damage.of(whole, i));
        if (HasFailure()) FAIL() << "damage number " << i;
    }
}

// Nearly every damage to gzipped bytes is caught by their checksum. Here the damage is done first.
TEST_P(DamagedScenes, DamagedAndGzipped) {
    if (GetParam().format == Format::svxmlz || GetParam().format == Format::svbinz) return;
    const std::string whole = encodedScene(GetParam());
    Damage damage(20240612);
    for (int i = 0; i < kMutations / 10; ++i) {
        const std::string bytes = damage.of(whole, i);
        const Messages messages;
        Scene plain, zipped;
        ASSERT_EQ(readScene(gzip(bytes).bytes(), "test", zipped), readScene(bytes, "test", plain)) << "damage number " << i;
        ASSERT_EQ(svxmlOf(zipped), svxmlOf(plain)) << "damage number " << i;
    }
}

constexpr Input kInputs[] = {{Format::svxml, false}, {Format::svbin, false}, {Format::svxmlz, false}, {Format::svbinz, false},
                             {Format::svxml, true},  {Format::svbin, true},  {Format::svxmlz, true},  {Format::svbinz, true}};

std::string nameOf(const testing::TestParamInfo<Input>& info) {
    constexpr const char* kNames[] = {"svxml", "svbin", "svxmlz", "svbinz"};
    return std::string(info.param.box ? "box_" : "small_") + kNames[static_cast<int>(info.param.format)];
}

INSTANTIATE_TEST_SUITE_P(All, DamagedScenes, testing::ValuesIn(kInputs), nameOf);

}  // namespace
}  // namespace nemra::node
