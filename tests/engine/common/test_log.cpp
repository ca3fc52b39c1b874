#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/common/guarded.h"
#include "engine/common/log.h"
#include "engine/common/text.h"

namespace nemra {
namespace {

struct Heard {
    std::vector<std::string> lines;
    bool throwing = false;
    bool emptied = false;  ///< as a module's is whose script has taken its function away; the end of each test
    bool answering = false;
};

void listen(void* user, const char* message, LogLevel_t) {
    auto& heard = *static_cast<Heard*>(user);
    if (heard.emptied) throw std::bad_function_call();
    heard.lines.emplace_back(message);
    if (heard.throwing) throw std::runtime_error("from the host");
    if (heard.answering) log::warning("host", "answered");
}

TEST(Log, ReachesTheHostOrTheInnermostCapture) {
    static Heard heard;
    log::addHostSink(listen, &heard, "");
    log::addHostSink(listen, &heard, "");  // replaces itself
    log::error("scene.svxml", "broken");
    EXPECT_EQ(heard.lines, std::vector<std::string>{"scene.svxml: broken"});

    std::vector<std::string> outer;
    std::vector<std::string> inner;
    {
        const log::Capture outside([&](const log::Message& m) { outer.push_back(m.text); });
        {
            const log::Capture inside([&](const log::Message& m) {
                inner.push_back(m.text);
                log::info("", "passed on");
            });
            log::warning("node", "first");
        }
        log::warning("node", "second");
        log::deliverToHost({NEMRA_LOG_INFO, "", "direct"});
    }
    EXPECT_EQ(inner, std::vector<std::string>{"first"});
    EXPECT_EQ(outer, (std::vector<std::string>{"passed on", "second"}));
    EXPECT_EQ(heard.lines.back(), "direct");
    heard.emptied = true;
}

std::string printed(const std::function<void()>& speak) {
    testing::internal::CaptureStderr();
    speak();
    return testing::internal::GetCapturedStderr();
}

TEST(Log, WhatNobodyHearsIsPrinted) {
    EXPECT_EQ(printed([] { log::print({NEMRA_LOG_ERROR, "scene.svxml:3", "broken"}); }), "nemra: error: scene.svxml:3: broken\n");
    EXPECT_EQ(printed([] { log::print({NEMRA_LOG_WARNING, "", "odd"}); }), "nemra: warning: odd\n");
    EXPECT_EQ(printed([] { log::print({NEMRA_LOG_INFO, "", "fine"}); }), "");
    static Heard heard;
    log::addHostSink(listen, &heard, "");
    EXPECT_TRUE(log::hasHostSink());
    EXPECT_EQ(printed([] { log::error("", "heard"); }), "");
    heard.emptied = true;
    EXPECT_EQ(printed([] { log::error("", "unheard"); }), "nemra: error: unheard\n");
    static Heard other;
    log::addHostSink(listen, &other, "");
    EXPECT_EQ(printed([] { log::error("", "heard by one"); }), "");
    other.emptied = true;
}

TEST(Log, BearsHostsThatThrowOrAnswerWithMessages) {
    static Heard heard;
    log::addHostSink(listen, &heard, "");
    heard.throwing = true;
    std::string expected = "nemra: error: the message callback raised: from the host\n";
    for (int i = 0; i < 100; ++i) expected += "nemra: error: x\n";
    const std::string lines = printed([] {
        for (int i = 0; i < 100; ++i) log::error("", "x");
    });
    EXPECT_EQ(lines, expected) << "each message, but only once what the sink throws";
    EXPECT_EQ(heard.lines.size(), 64U) << "called no more after 64 faults";
    heard.throwing = false;
    heard.answering = true;
    log::addHostSink(listen, &heard, "");  // given again: called again
    heard.lines.clear();
    log::error("", "x");
    EXPECT_GT(heard.lines.size(), 1U);
    EXPECT_LT(heard.lines.size(), 20U);
    heard.emptied = true;
}

TEST(Guarded, TurnsFaultsIntoTheAnswerAndAMessage) {
    std::string text;
    const log::Capture capture([&](const log::Message& m) { text = m.source + "|" + m.text; });
    EXPECT_EQ(guarded<int>("someFunction", -1, []() -> int { throw std::runtime_error("no luck"); }), -1);
    EXPECT_EQ(text, "someFunction|no luck");
}

TEST(Text, PermanentWordsBearBeingFreed) {
    char* const first = permanentText("mesh");
    freeCharArray(first);
    EXPECT_EQ(permanentText("mesh"), first);
    EXPECT_STREQ(first, "mesh");
    EXPECT_STREQ(permanentText(""), "");
    char* const copy = callersText("abc");
    EXPECT_STREQ(copy, "abc");
    freeCharArray(copy);
    freeCharArray(nullptr);
    for (int i = 0; i < 500; ++i) freeCharArray(permanentText("word " + std::to_string(i)));  // more than there is room for
}

}  // namespace
}  // namespace nemra
