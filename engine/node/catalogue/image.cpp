#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addImageClasses(Catalogue& catalogue) {
    catalogue.add({.family = "image", .type = "file", .summary = "Picture read from a file"});
    catalogue.addLinked("image");
}

}  // namespace nemra::node
