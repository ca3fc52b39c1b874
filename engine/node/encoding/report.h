/// What readers of scenes have to say, whatever the encoding.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace nemra::node {

/// Why and where reading stops. `at` is an offset into the bytes.
struct Fault {
    std::size_t at;
    std::string text;
};

/// What a reader does with classes, parameters, child slots, raw slots and columns that it doesn't know. Skipping them changes
/// the light: a render refuses, a script that looks into a file of a later version keeps the rest.
enum class Unknown { refuse, skip };

/// Warnings of one reading, with their places, and the decision about what is unknown.
class Report {
public:
    /// `placeOf` turns an offset into the words by which a message names a place.
    Report(std::string_view origin, Unknown unknown, std::function<std::string(std::size_t)> placeOf)
        : origin_(origin), unknown_(unknown), placeOf_(std::move(placeOf)) {}

    void warn(std::size_t at, std::string_view text);
    /// Throws a Fault or says that this was skipped, as was asked for.
    void unknown(std::size_t at, std::string text);
    /// Warns of a name that was there before: references by name find the first. `label` is "family/type name" or
    /// "geometry 'name'".
    void named(std::size_t at, std::string label);
    /// Says how many warnings were left out.
    void finish();

private:
    std::string origin_;
    Unknown unknown_;
    std::function<std::string(std::size_t)> placeOf_;
    std::unordered_set<std::string> names_;
    int warnings_ = 0;
};

}  // namespace nemra::node
