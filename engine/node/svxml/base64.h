/// Bytes as text (RFC 4648, section 4).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nemra::node::svxml {

std::string toBase64(std::string_view bytes);
/// Blanks and line ends are skipped. False if `text` is damaged.
bool fromBase64(std::string_view text, std::vector<char>& bytes);

}  // namespace nemra::node::svxml
