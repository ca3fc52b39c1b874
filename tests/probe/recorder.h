/// The recording engine of the tests: every call of the flat interface is written down, and what it answers comes from the test.
///
/// Calls are kept as JSON arrays, ["nemraRawWidth", 1234]; a handle is its number, bytes are text with one character per byte.
/// A test scripts an answer per function; without one a function answers 0, false, null or an empty text.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#define PROBE_API __attribute__((visibility("default")))

namespace probe {

struct Answer {
    std::int64_t integer = 0;
    double real = 0.0;
    bool isNull = false;
    std::string bytes;  // text, or the elements of an array
};

PROBE_API void recordCall(const std::string& json);
/// The scripted answer, good until the next one for that function, or null.
PROBE_API const Answer* findAnswer(std::string_view function);
PROBE_API std::uintptr_t freshNumber();

/// A handle never given before. Above 31 bits, so that a truncated one shows.
template <class T>
T* freshHandle() {
    return reinterpret_cast<T*>(freshNumber());
}

PROBE_API std::string jsonText(const char* data, std::size_t size);

inline std::string json(const char* text) { return text ? jsonText(text, std::strlen(text)) : "null"; }
inline std::string json(char* text) { return json(static_cast<const char*>(text)); }
inline std::string json(bool value) { return value ? "true" : "false"; }
PROBE_API std::string json(double value);
inline std::string json(float value) { return json(static_cast<double>(value)); }

template <class T>
    requires(std::is_integral_v<T> || std::is_enum_v<T>)
std::string json(T value) {
    return std::to_string(static_cast<long long>(value));
}

/// Opaque handles: their number. The address of a handle field: the handle in it.
template <class T>
std::string json(T* handle) {
    if constexpr (std::is_pointer_v<T>) {
        return handle ? json(*handle) : "null";
    } else {
        return std::to_string(reinterpret_cast<std::uintptr_t>(handle));
    }
}

template <class T>
std::string jsonArray(const T* data, std::size_t count) {
    if (!data) return "null";
    std::string text = "[";
    for (std::size_t i = 0; i < count; ++i) text += (i ? "," : "") + json(data[i]);
    return text + "]";
}

/// An argument whose JSON is ready.
struct Ready {
    std::string text;
};
inline std::string json(const Ready& ready) { return ready.text; }

template <class... Arguments>
void record(const char* function, const Arguments&... arguments) {
    recordCall("[\"" + std::string(function) + "\"" + (std::string() + ... + ("," + json(arguments))) + "]");
}

/// Text that the caller has to free.
inline char* callersText(const std::string& bytes) {
    auto* text = static_cast<char*>(std::malloc(bytes.size() + 1));
    std::memcpy(text, bytes.c_str(), bytes.size() + 1);
    return text;
}

/// The scripted answer as the function's result; without one, `fallback`.
template <class Result>
Result answerOr(const char* function, Result fallback) {
    const Answer* answer = findAnswer(function);
    if (!answer) return fallback;
    if constexpr (std::is_same_v<Result, char*>) {
        return answer->isNull ? nullptr : callersText(answer->bytes);
    } else if constexpr (std::is_same_v<Result, const char*>) {
        return answer->isNull ? nullptr : answer->bytes.c_str();
    } else if constexpr (std::is_pointer_v<Result>) {
        if (answer->isNull) return nullptr;
        if (!answer->bytes.empty()) return reinterpret_cast<Result>(const_cast<char*>(answer->bytes.data()));
        return reinterpret_cast<Result>(answer->integer);
    } else if constexpr (std::is_floating_point_v<Result>) {
        return static_cast<Result>(answer->real);
    } else {
        return static_cast<Result>(answer->integer);
    }
}

/// What a function answers that nothing was scripted for.
template <class Result>
Result emptyAnswer() {
    if constexpr (std::is_same_v<Result, char*>) return callersText("");
    else if constexpr (std::is_same_v<Result, const char*>) return "";
    else return Result{};
}

/// The whole of most functions: write the call down, answer.
template <class Result, class... Arguments>
Result call(const char* function, const Arguments&... arguments) {
    record(function, arguments...);
    if constexpr (std::is_same_v<Result, char*>) {
        return findAnswer(function) ? answerOr<Result>(function, nullptr) : emptyAnswer<Result>();
    } else if constexpr (!std::is_void_v<Result>) {
        return answerOr<Result>(function, emptyAnswer<Result>());
    }
}

/// Scripted bytes of a function, for sizes and arrays; empty without.
inline std::string scriptedBytes(const char* function) {
    const Answer* answer = findAnswer(function);
    return answer ? answer->bytes : std::string();
}

/// An array of scripted elements; *count takes their number.
template <class Element, class Count, class... Arguments>
Element* callArray(const char* function, Count* count, const Arguments&... arguments) {
    *count = static_cast<Count>(scriptedBytes(function).size() / sizeof(Element));
    return call<Element*>(function, arguments...);
}

}  // namespace probe
