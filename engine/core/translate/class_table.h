/// What the classes of a family do to light, found by type: each class registers its maker from its own file.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace nemra::core {

/// `Make` is a function pointer. Filled by static objects before main, read-only afterwards.
template <class Make>
class ClassTable {
public:
    bool add(std::string_view type, Make make) { return makers_.emplace(type, make).second; }

    /// Null for a type that nothing is known of.
    Make find(std::string_view type) const noexcept {
        const auto found = makers_.find(type);
        return found == makers_.end() ? nullptr : found->second;
    }

private:
    std::map<std::string, Make, std::less<>> makers_;
};

}  // namespace nemra::core
