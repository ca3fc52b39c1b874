#include "engine/node/encoding/report.h"

#include "engine/common/log.h"
#include "engine/node/encoding/limits.h"

namespace nemra::node {

void Report::warn(std::size_t at, std::string_view text) {
    if (++warnings_ <= kMaxWarnings) log::warning(placeOf_(at), text);
}

void Report::unknown(std::size_t at, std::string text) {
    if (unknown_ == Unknown::refuse) throw Fault{at, std::move(text)};
    warn(at, text + ", skipped");
}

void Report::named(std::size_t at, std::string label) {
    const auto [name, isFirst] = names_.insert(std::move(label));
    if (!isFirst) warn(at, "a second " + *name + "; references find the first");
}

void Report::finish() {
    if (warnings_ > kMaxWarnings) log::warning(origin_, std::to_string(warnings_ - kMaxWarnings) + " further warnings left out");
}

}  // namespace nemra::node
