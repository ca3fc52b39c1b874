// Memory that runs out at any point of reading, preparing and writing a scene: an answer that says so, the scene as it was, and a
// program that goes on as if nothing had been. Under AddressSanitizer also: nothing is left behind.
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "engine/common/buffer.h"
#include "engine/node/encoding/encode.h"
#include "engine/node/node_class.h"
#include "engine/node/read_scene.h"
#include "module/flat/nemra_common.h"
#include "module/flat/nemra_scene.h"
#include "tests/allocation/failing_memory.h"
#include "tests/engine/light/render_scene.h"
#include "tests/engine/scene/messages.h"

namespace nemra::node {
namespace {

constexpr int kFailures = 500;

/// Runs `body` with its n-th allocation on this thread failing. True if it came to that.
template <class Body>
bool failing(long n, const Body& body) {
    test::FailingMemory memory(test::Counted::here, n);
    body();
    return memory.end();
}

Scene cornellBox() {
    Scene scene;
    EXPECT_TRUE(readSceneFile(NEMRA_SOURCE_DIR "/sarvo/examples/cornellbox.svxml", scene));
    return scene;
}

class FailingAllocation : public testing::Test {
protected:
    static void SetUpTestSuite() { registerClasses(); }

    static std::vector<double> picture(const Scene& scene) {
        const auto prepared = core::prepareScene(scene, "");
        const auto rendered = lighttest::render(*prepared, 1);
        std::vector<double> values;
        for (int x = 0; x < prepared->width(); x += 16)
            for (int y = 0; y < prepared->height(); y += 16) values.push_back(lighttest::value(*rendered.film, x, y, 1));
        return values;
    }
};

TEST_F(FailingAllocation, Reading) {
    const Scene box = cornellBox();
    for (const Format format : {Format::svxml, Format::svbin, Format::svxmlz, Format::svbinz}) {
        const Buffer bytes = encode(box, format);
        nemra_scene_t* scene = nemraScene_create("mark");
        for (int n = 1; n <= kFailures; ++n) {
            bool read = false;
            const bool failed =
                failing(n, [&] { read = nemraScene_readFromChar(scene, bytes.data(), static_cast<std::int32_t>(bytes.size())); });
            ASSERT_EQ(read, !failed) << n;
            if (!failed) break;
            ASSERT_STREQ(nemraScene_name(scene), "mark") << n;
        }
        ASSERT_TRUE(nemraScene_readFromChar(scene, bytes.data(), static_cast<std::int32_t>(bytes.size())));
        nemraScene_release(&scene);
    }
}

TEST_F(FailingAllocation, Writing) {
    const Buffer bytes = encode(cornellBox(), Format::svxml);
    nemra_scene_t* scene = nemraScene_create("mark");
    ASSERT_TRUE(nemraScene_readFromChar(scene, bytes.data(), static_cast<std::int32_t>(bytes.size())));
    for (int format = 0; format < 4; ++format) {
        for (int n = 1; n <= kFailures; ++n) {
            char* written = nullptr;
            std::int32_t size = -1;
            const bool failed = failing(n, [&] { written = nemraScene_writeToChar(scene, format, &size); });
            ASSERT_EQ(written == nullptr, failed) << n;
            ASSERT_EQ(size == 0, failed) << n;
            freeCharArray(written);
            if (!failed) break;
        }
    }
    std::int32_t size = 0;
    char* const written = nemraScene_writeToChar(scene, 0, &size);
    EXPECT_EQ(std::string_view(written, static_cast<std::size_t>(size)), bytes.text());
    freeCharArray(written);
    nemraScene_release(&scene);
}

TEST_F(FailingAllocation, Preparing) {
    const Scene box = cornellBox();
    const auto expected = picture(box);
    for (int n = 1; n <= kFailures; ++n) {
        bool done = false;
        const bool failed = failing(n, [&] {
            try {
                done = core::prepareScene(box, "") != nullptr;
            } catch (const std::bad_alloc&) {  // the job that asked for it says so
            }
        });
        if (!failed) {
            ASSERT_TRUE(done);
            break;
        }
    }
    EXPECT_EQ(picture(box), expected);
}

}  // namespace
}  // namespace nemra::node
