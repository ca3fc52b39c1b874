// Every filter and output, with each option of its choices: it runs on each kind of result, in full and in draft, and leaves
// numbers.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/core/output/write_result.h"
#include "tests/engine/light/render_scene.h"
#include "tests/engine/output/picture_maker.h"

namespace nemra::outputtest {
namespace {

/// The class's default node, and one for each option of each of its choices, also of those that another option brings.
std::vector<NodeHandle> variants(const node::NodeClass& nodeClass) {
    std::vector<NodeHandle> made{std::make_shared<node::Node>(nodeClass, nodeClass.type)};
    for (const auto& setting : std::vector(made.front()->activeParameters())) {
        for (const node::OptionSpec& option : setting.spec->options) {
            auto changed = std::make_shared<node::Node>(nodeClass, nodeClass.type);
            std::string why;
            EXPECT_TRUE(changed->set(setting.spec->name, {option.name}, why)) << why;
            made.push_back(changed);
        }
    }
    return made;
}

std::vector<const node::NodeClass*> classesOf(const std::string& family) {
    node::registerClasses();
    std::vector<const node::NodeClass*> classes;
    for (const node::NodeClass* const known : node::allClasses()) {
        if (known->family == family && known->type != "linked") classes.push_back(known);
    }
    return classes;
}

/// Results of each kind of sensor: even, black, and with a broken pixel.
std::vector<std::shared_ptr<core::Film>> films() {
    const core::Channel energy{"E", core::ChannelKind::energy, 0, 0, "W.m^-2.sr^-1"};
    std::vector<std::shared_ptr<core::Film>> all;
    for (const Channels& channels : {xyzChannels(), bands({450, 550, 650}, 20), Channels{energy}}) {
        all.push_back(film(
            12, 9, channels, [](int x, int y, int c) { return 1.0 + x + 20.0 * y + c; }, 4, [](int, int) { return 0.5; }));
        all.push_back(film(12, 9, channels, [](int, int, int) { return 0.0; }));
        all.push_back(film(1, 1, channels, [](int, int, int) { return 5.0; }));
        all.push_back(film(12, 9, channels, [](int x, int y, int) { return x == 3 && y == 3 ? std::nan("") : 10.0; }));
    }
    return all;
}

NodeHandle eye() { return make("instrument", "idealrectcam", {{"width", integer(12)}, {"height", integer(9)}}, "eye"); }

TEST(EveryOutputClass, FiltersLeaveNumbers) {
    const auto all = films();
    for (const node::NodeClass* const filterClass : classesOf("filter")) {
        for (const NodeHandle& filter : variants(*filterClass)) {
            for (const bool fast : {false, true}) {
                for (std::size_t i = 0; i < all.size(); ++i) {
                    const lighttest::Messages messages;
                    Filtered filtered(all[i], eye(), fast);
                    ASSERT_NO_THROW(filtered.run(filter)) << filterClass->type << " on film " << i;
                    const core::XyzImage& image = filtered.picture.image;
                    ASSERT_EQ(image.values.size(), 3 * std::size_t(image.width) * std::size_t(image.height)) << filterClass->type;
                    std::size_t broken = 0;
                    for (const float value : image.values) broken += !std::isfinite(value);
                    EXPECT_LE(broken, i % 4 == 3 ? 3U : 0U)
                        << filterClass->type << " on film " << i << ": only the broken pixel may be";
                }
            }
        }
    }
}

TEST(EveryOutputClass, OutputsAreWrittenInEachOfTheirFormatsOrSayWhyNot) {
    const auto all = films();
    for (const node::NodeClass* const outputClass : classesOf("output")) {
        for (const NodeHandle& output : variants(*outputClass)) {
            for (const auto& content : all) {
                const auto raw = result(content, eye(), output);
                ASSERT_FALSE(core::outputFormats(*raw).empty()) << outputClass->type;
                for (const char* const format : core::outputFormats(*raw)) {
                    const lighttest::Messages messages;
                    const auto bytes = core::encodeResult(*raw, format, "test");
                    EXPECT_TRUE(bytes ? !bytes->span().empty() : messages.mention("can't make the "))
                        << outputClass->type << " " << format;
                }
            }
        }
    }
}

}  // namespace
}  // namespace nemra::outputtest
