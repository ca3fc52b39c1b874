#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/filter_parts.h"

namespace nemra::node {

// Filters work one after the other, in the order of the output's list.
void addFilterClasses(Catalogue& catalogue) {
    addResponseFilters(catalogue);
    addToneFilters(catalogue);
    addPictureFilters(catalogue);
    catalogue.addLinked("filter");
}

}  // namespace nemra::node
