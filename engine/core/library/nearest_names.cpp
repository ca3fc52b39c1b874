#include "engine/core/library/nearest_names.h"

#include <algorithm>
#include <utility>

namespace nemra::core {

namespace {

constexpr std::size_t kMost = 3;
constexpr std::size_t kLongest = 128;  ///< letters compared; the work grows with their square

std::string folded(std::string_view name) {
    std::string lower(name.substr(0, kLongest));
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

/// Letters to change, add, drop or swap with their neighbour: Damerau (1964), in the form that edits no letter twice.
std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> before(b.size() + 1), above(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) above[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (a[i - 1] != b[j - 1])});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) row[j] = std::min(row[j], before[j - 2] + 1);
        }
        std::swap(before, above);
        std::swap(above, row);
    }
    return above[b.size()];
}

}  // namespace

std::vector<std::string> nearestNames(std::string_view wanted, std::vector<std::string> candidates) {
    const std::string name = folded(wanted);
    std::vector<std::pair<std::size_t, std::string>> ranked;
    if (name.empty()) return {};
    for (std::string& candidate : candidates) {
        const std::string other = folded(candidate);
        if (other.empty()) continue;
        const std::size_t edits = distance(name, other);
        const bool isPart = std::min(name.size(), other.size()) > 1 &&
                            (name.find(other) != std::string::npos || other.find(name) != std::string::npos);
        if (edits <= std::max<std::size_t>(1, name.size() / 3)) {
            ranked.emplace_back(edits, std::move(candidate));
        } else if (isPart) {
            ranked.emplace_back(name.size() + edits, std::move(candidate));  // behind all slips of the keyboard
        }
    }
    std::sort(ranked.begin(), ranked.end());
    std::vector<std::string> nearest;
    for (auto& [edits, candidate] : ranked) {
        if (nearest.size() == kMost) break;
        if (nearest.empty() || nearest.back() != candidate) nearest.push_back(std::move(candidate));
    }
    return nearest;
}

}  // namespace nemra::core
