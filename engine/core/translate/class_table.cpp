#include "engine/core/translate/class_table.h"

namespace nemra::core {

namespace {

std::map<std::string, const FamilyTable*, std::less<>>& families() {
    static auto* const all = new std::map<std::string, const FamilyTable*, std::less<>>;  // for the whole process
    return *all;
}

}  // namespace

FamilyTable::FamilyTable(std::string_view family) { families().emplace(family, this); }

bool hasLightPart(std::string_view family, std::string_view type) noexcept {
    const auto found = families().find(family);
    return found != families().end() && (type == "linked" || found->second->knows(type));
}

}  // namespace nemra::core
