/// What a mistyped name may have been meant to be.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nemra::core {

/// Up to three of the candidates that resemble the name, the nearest first: those that hold it or lie in it whatever the case,
/// and those that a few changed, missing, added or swapped letters (at most a third of them) tell apart from it.
std::vector<std::string> nearestNames(std::string_view wanted, std::vector<std::string> candidates);

}  // namespace nemra::core
