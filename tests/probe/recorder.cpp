// libnemraCommon of the recording engine, and what a test drives it by.
#include "tests/probe/recorder.h"

#include <cstdio>
#include <map>
#include <mutex>
#include <vector>

#include "module/flat/nemra_common.h"

namespace probe {

namespace {

struct State {
    std::mutex mutex;
    std::vector<std::string> calls;
    std::map<std::string, Answer, std::less<>> answers;
    std::string taken;
    std::uintptr_t lastNumber = 0x1'8000'0000;
};

// Never destroyed: engine functions are called until the process ends.
State& state() {
    static auto* instance = new State;
    return *instance;
}

}  // namespace

void recordCall(const std::string& json) {
    const std::lock_guard lock(state().mutex);
    state().calls.push_back(json);
}

const Answer* findAnswer(std::string_view function) {
    const std::lock_guard lock(state().mutex);
    const auto found = state().answers.find(function);
    return found == state().answers.end() ? nullptr : &found->second;
}

std::uintptr_t freshNumber() {
    const std::lock_guard lock(state().mutex);
    return ++state().lastNumber;
}

std::string jsonText(const char* data, std::size_t size) {
    std::string text = "\"";
    for (std::size_t i = 0; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(data[i]);
        if (byte >= 0x20 && byte < 0x7f && byte != '"' && byte != '\\') {
            text += static_cast<char>(byte);
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
            text += escaped;
        }
    }
    return text + "\"";
}

std::string json(double value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

}  // namespace probe

extern "C" {

/// All calls since the last time, as one JSON array.
PROBE_API const char* probeTakeCalls() {
    auto& state = probe::state();
    const std::lock_guard lock(state.mutex);
    state.taken = "[";
    for (const auto& call : state.calls) state.taken += (state.taken.size() > 1 ? "," : "") + call;
    state.taken += "]";
    state.calls.clear();
    return state.taken.c_str();
}

/// Forgets all calls and answers.
PROBE_API void probeReset() {
    auto& state = probe::state();
    const std::lock_guard lock(state.mutex);
    state.calls.clear();
    state.answers.clear();
}

PROBE_API void probeAnswerNumber(const char* function, int64_t integer, double real) {
    auto& state = probe::state();
    const std::lock_guard lock(state.mutex);
    state.answers[function] = {.integer = integer, .real = real, .isNull = false, .bytes = {}};
}

/// Null data is the answer null.
PROBE_API void probeAnswerBytes(const char* function, const char* data, int64_t size) {
    auto& state = probe::state();
    const std::lock_guard lock(state.mutex);
    state.answers[function] = {
        .integer = 0, .real = 0.0, .isNull = !data, .bytes = data ? std::string(data, static_cast<std::size_t>(size)) : std::string()};
}

PROBE_API void freeCharArray(char* text) {
    probe::record("freeCharArray", text);
    std::free(text);
}

}  // extern "C"
