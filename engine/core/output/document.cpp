#include "engine/core/output/document.h"

#include <map>

namespace nemra::core {

namespace {

std::map<std::string, MakeDocument, std::less<>>& classes() {
    static std::map<std::string, MakeDocument, std::less<>> known;
    return known;
}

}  // namespace

bool addDocumentClass(std::string_view type, MakeDocument make) { return classes().emplace(type, make).second; }

std::optional<std::vector<char>> encodeDocument(const Raw& raw, std::string_view format) {
    const auto output = raw.output();
    const auto found = output ? classes().find(output->type()) : classes().end();
    if (found == classes().end()) return std::nullopt;
    const auto text = found->second(raw, *output, format);
    if (!text) return std::nullopt;
    return std::vector<char>(text->begin(), text->end());
}

}  // namespace nemra::core
