#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addTextClasses(Catalogue& catalogue) {
    catalogue.add(
        {.family = "text",
         .type = "default",
         .summary = "Piece of text that watermarks and reports show",
         .parameters = {text("content").doc("The text; a line break begins a new line"),
                        boolean("substitute", true)
                            .doc("Replace {instrument}, {output}, {width}, {height}, {spp}, {time} and {version} by what "
                                 "the result says")}});
    catalogue.addLinked("text");
}

}  // namespace nemra::node
