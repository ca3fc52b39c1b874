#include "engine/common/text.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <mutex>
#include <new>

namespace nemra {

namespace {

/// Words that freeCharArray leaves alone, one behind the other, each with its closing zero. freeCharArray knows them by address.
constinit std::array<char, 1024> words{};
constinit std::size_t wordsEnd = 1;  // the empty word comes first, so that it is there when memory isn't
constinit std::mutex wordsMutex;

bool isPermanent(const char* text) noexcept {
    const std::less<const char*> before;
    return !before(text, words.data()) && before(text, words.data() + words.size());
}

}  // namespace

char* callersBytes(std::span<const char> bytes) {
    auto* const copy = static_cast<char*>(std::malloc(bytes.size() + 1));
    if (!copy) throw std::bad_alloc();
    if (!bytes.empty()) std::memcpy(copy, bytes.data(), bytes.size());
    copy[bytes.size()] = '\0';
    return copy;
}

char* callersText(std::string_view text) { return callersBytes(std::span<const char>(text.data(), text.size())); }

char* permanentText(std::string_view word) {
    const std::lock_guard lock(wordsMutex);
    for (std::size_t at = 0; at < wordsEnd;) {
        char* const known = words.data() + at;
        const std::size_t length = std::strlen(known);
        if (std::string_view(known, length) == word) return known;
        at += length + 1;
    }
    if (word.size() + 1 > words.size() - wordsEnd) return callersText(word);  // full: a leak at worst
    char* const added = words.data() + wordsEnd;
    if (!word.empty()) std::memcpy(added, word.data(), word.size());
    added[word.size()] = '\0';
    wordsEnd += word.size() + 1;
    return added;
}

}  // namespace nemra

extern "C" void freeCharArray(char* text) {
    if (!nemra::isPermanent(text)) std::free(text);
}
