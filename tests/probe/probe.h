/// The probe engine: it records each call as text and answers what the test has written down for it.
///
/// A call reads `function(argument, argument)`: texts as they are, handles and numbers in decimals, `&7` for the address of a
/// handle field that holds 7, `[1 2 3]` for elements. Its answer is looked up by the whole call, then by the function alone.
/// An answer to `once call` is given one time, before all others. Without an answer it is 0, false, null or an empty text. An
/// answer is text too: a number, `<null>`, or elements with blanks between. The count that a function gives with its answer is
/// that of the answer's elements, or the answer to `count function`.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#define PROBE_API __attribute__((visibility("default")))

namespace probe {

/// Records the call and finds its answer.
PROBE_API std::optional<std::string> record(const std::string& function, const std::string& call);
/// An answer to a question of the probe's own, which isn't a call.
PROBE_API std::optional<std::string> answerTo(const std::string& question);
/// Keeps a callback and its user data for the firing functions, under the name of the function that installs it.
PROBE_API void keepCallback(const std::string& function, void* callback, void* user);

template <class T>
struct Elements {
    const T* data;
    std::int64_t count;
};
template <class T, class N>
Elements<T> elements(const T* data, N count) {
    return {data, static_cast<std::int64_t>(count)};
}

/// A number that the engine gives back through a pointer: how many elements or bytes the answer has.
template <class T>
struct Count {
    T* result;
};

inline std::string show(const char* text) { return text ? text : "null"; }
inline std::string show(bool value) { return value ? "true" : "false"; }
inline std::string show(const void* handle) { return std::to_string(reinterpret_cast<std::uintptr_t>(handle)); }
template <class T, std::enable_if_t<std::is_arithmetic_v<T> || std::is_enum_v<T>, int> = 0>
std::string show(T value) {
    std::ostringstream text;
    if constexpr (std::is_enum_v<T>) {
        text << static_cast<int>(value);
    } else {
        text.precision(std::is_same_v<T, float> ? 7 : 15);
        text << +value;
    }
    return text.str();
}
template <class T, std::enable_if_t<!std::is_same_v<T, const char>, int> = 0>
std::string show(T** field) {
    return field ? "&" + show(static_cast<const void*>(*field)) : "&null";
}
inline std::string show(const char*** paths) {  // null-terminated list of null-terminated lists
    std::string text = "[";
    for (; paths && *paths; ++paths) {
        text += "[";
        for (const char** name = *paths; *name; ++name) text += (name == *paths ? "" : " ") + show(*name);
        text += "]";
    }
    return text + "]";
}
template <class T>
std::string show(Elements<T> values) {
    if (!values.data) return "null";
    if constexpr (std::is_same_v<T, char>) return std::string(values.data, static_cast<std::size_t>(values.count));
    std::string text = "[";
    for (std::int64_t i = 0; i < values.count; ++i) text += (i ? " " : "") + show(values.data[i]);
    return text + "]";
}
template <class T>
std::string show(Count<T>) {
    return "";
}

template <class T>
std::vector<T> numbers(const std::string& text) {
    std::vector<T> result;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if constexpr (std::is_pointer_v<T>) {
            result.push_back(reinterpret_cast<T>(std::strtoull(word.c_str(), nullptr, 10)));
        } else if constexpr (std::is_floating_point_v<T>) {
            result.push_back(static_cast<T>(std::strtod(word.c_str(), nullptr)));
        } else if constexpr (std::is_same_v<T, std::uint64_t>) {
            result.push_back(std::strtoull(word.c_str(), nullptr, 10));
        } else {
            result.push_back(static_cast<T>(std::strtoll(word.c_str(), nullptr, 10)));
        }
    }
    return result;
}

/// The answer as the function's result. What it points to stays for the life of the process.
template <class R>
R result(const std::optional<std::string>& answer, std::int64_t& count) {
    const std::string text = answer.value_or("");
    count = 0;
    if constexpr (std::is_void_v<R>) {
        return;
    } else if constexpr (std::is_same_v<R, const char*>) {
        count = static_cast<std::int64_t>(text.size());
        return answer && text == "<null>" ? nullptr : (new std::string(text))->c_str();
    } else if constexpr (std::is_same_v<R, char*>) {
        if (answer && text == "<null>") return nullptr;
        count = static_cast<std::int64_t>(text.size());
        auto* block = static_cast<char*>(std::malloc(text.size() + 1));
        std::memcpy(block, text.c_str(), text.size() + 1);
        return block;
    } else if constexpr (std::is_same_v<R, bool>) {
        return text == "true";
    } else if constexpr (std::is_pointer_v<R> &&
                         (std::is_arithmetic_v<std::remove_pointer_t<R>> || std::is_pointer_v<std::remove_pointer_t<R>>)) {
        if (!answer || text == "<null>") return nullptr;
        using Element = std::remove_const_t<std::remove_pointer_t<R>>;
        auto* block = new std::vector<Element>(numbers<Element>(text));
        count = static_cast<std::int64_t>(block->size());
        return block->data();
    } else {
        const auto values = [&] {
            if constexpr (std::is_enum_v<R>) {
                return numbers<int>(text);
            } else {
                return numbers<R>(text);
            }
        }();
        return values.empty() ? R() : static_cast<R>(values.front());
    }
}

template <class T>
void giveCount(T&, std::int64_t) {}
template <class T>
void giveCount(Count<T>& out, std::int64_t count) {
    if (out.result) *out.result = static_cast<T>(count);
}

/// One call from beginning to end.
template <class R, class... Args>
R call(const char* function, Args... args) {
    std::string text = std::string(function) + "(";
    bool first = true;
    const auto append = [&](const std::string& argument, bool shown) {
        if (!shown) return;
        text += (first ? "" : ", ") + argument;
        first = false;
    };
    (append(
         show(args), !requires { args.result; }),
     ...);
    const std::optional<std::string> answer = record(function, text + ")");
    std::int64_t count = 0;
    if constexpr (std::is_void_v<R>) {
        return;
    } else {
        R answered = result<R>(answer, count);
        if (const auto told = answerTo("count " + std::string(function))) count = std::atoll(told->c_str());
        (giveCount(args, count), ...);
        return answered;
    }
}

/// An object that the engine takes over leaves an empty field behind, unless the script says "keeps handles".
template <class T>
void takeAway(T** field, bool keepOriginal) {
    if (!keepOriginal && !answerTo("keeps handles")) *field = nullptr;
}

/// A function that hands bytes of its answer to the caller's sink.
template <class Sink>
int pour(const char* function, const void* handle, void* user, Sink sink) {
    const std::optional<std::string> answer = record(function, std::string(function) + "(" + show(handle) + ")");
    if (!answer || answer->starts_with("fail ")) return answer ? std::atoi(answer->c_str() + 5) : 0;
    for (const char byte : *answer) {
        if (!sink(user, byte)) return 1;
    }
    return 0;
}

}  // namespace probe
