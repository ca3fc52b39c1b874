/// What the classes of a family do to light, found by type: each class registers its maker from its own file.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace nemra::core {

/// Which classes of a family have a light part.
class FamilyTable {
public:
    /// Enters itself into the list of families that hasLightPart asks.
    explicit FamilyTable(std::string_view family);
    FamilyTable(const FamilyTable&) = delete;
    FamilyTable& operator=(const FamilyTable&) = delete;
    virtual bool knows(std::string_view type) const noexcept = 0;

protected:
    ~FamilyTable() = default;
};

/// Whether anything is known of what that class does to light or, for outputs and filters, to results. A `linked` class has one
/// where its family has any.
bool hasLightPart(std::string_view family, std::string_view type) noexcept;

/// `Make` is a function pointer. Filled by static objects before main, read-only afterwards.
template <class Make>
class ClassTable final : public FamilyTable {
public:
    using FamilyTable::FamilyTable;

    bool add(std::string_view type, Make make) { return makers_.emplace(type, make).second; }

    /// Null for a type that nothing is known of.
    Make find(std::string_view type) const noexcept {
        const auto found = makers_.find(type);
        return found == makers_.end() ? nullptr : found->second;
    }

    bool knows(std::string_view type) const noexcept override { return find(type) != nullptr; }

private:
    std::map<std::string, Make, std::less<>> makers_;
};

}  // namespace nemra::core
