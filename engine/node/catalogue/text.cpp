#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addTextClasses(Catalogue& catalogue) {
    catalogue.add({.family = "text", .type = "default", .summary = "Piece of text"});
    catalogue.addLinked("text");
}

}  // namespace nemra::node
