/// Text inside HTML and XML.
#pragma once

#include <string>
#include <string_view>

namespace nemra::core {

/// UTF-8 for the text of an element or an attribute in double quotes. Characters that XML 1.0 can't hold become U+FFFD.
std::string escapedMarkup(std::string_view text);

}  // namespace nemra::core
