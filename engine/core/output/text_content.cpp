#include "engine/core/output/text_content.h"

#include <cmath>
#include <map>

#include "engine/core/api/version.h"

namespace nemra::core {

namespace {

std::string number(double value, double steps) { return node::toText(std::round(value * steps) / steps); }

std::map<std::string, std::string, std::less<>> facts(const Raw* raw) {
    std::map<std::string, std::string, std::less<>> known{
        {"version", kVersionText}, {"instrument", ""}, {"output", ""}, {"width", ""}, {"height", ""}, {"spp", ""}, {"time", ""}};
    if (!raw) return known;
    if (const auto instrument = raw->instrument()) known["instrument"] = instrument->name();
    if (const auto output = raw->output()) known["output"] = output->name();
    known["width"] = std::to_string(raw->width());
    known["height"] = std::to_string(raw->height());
    known["spp"] = number(raw->spp(), 10.0);
    known["time"] = number(raw->counts().time, 10.0);
    return known;
}

}  // namespace

std::string textOf(const node::Node& text, const Raw* raw) {
    if (!text.findParameter("content").spec) return "";  // a link that leads nowhere
    const std::string& content = text.text("content");
    if (!text.boolean("substitute")) return content;
    const auto known = facts(raw);
    std::string result;
    for (std::size_t i = 0; i < content.size();) {
        const std::size_t end = content[i] == '{' ? content.find('}', i) : std::string::npos;
        const auto fact = end == std::string::npos ? known.end() : known.find(content.substr(i + 1, end - i - 1));
        if (fact == known.end()) {
            result += content[i++];
        } else {
            result += fact->second;
            i = end + 1;
        }
    }
    return result;
}

}  // namespace nemra::core
