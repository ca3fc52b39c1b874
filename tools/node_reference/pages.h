/// The reference pages of the node classes, made from the catalogue.
#pragma once

#include <map>
#include <string>

namespace nemra::reference {

/// File name below docs/reference, and the page in Markdown.
using Pages = std::map<std::string, std::string>;

/// A page for each family, their index, and the list of classes whose light part isn't written yet. Classes must be registered.
Pages makePages();

}  // namespace nemra::reference
