// Reports of glare as text, CSV and HTML. All three say the same.
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "engine/core/glare/view.h"
#include "engine/core/output/csv.h"
#include "engine/core/output/markup.h"

namespace nemra::core {

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

struct Fact {
    std::string name;
    std::string value;
    std::string unit;
};

std::string fixed(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    std::string result = text;
    std::replace(result.begin(), result.end(), ',', '.');  // whatever the locale of the process
    return result;
}

std::string ugrText(double ugr) {
    if (std::isnan(ugr)) return "not defined: the background is black";
    return std::isinf(ugr) ? "no source of glare" : fixed(ugr, 1);
}

/// Limits of the four classes (Wienold 2009, "Dynamic daylight glare evaluation").
std::string dgpClass(double dgp) {
    if (dgp < 0.35) return "imperceptible";
    if (dgp < 0.40) return "perceptible";
    return dgp < 0.45 ? "disturbing" : "intolerable";
}

std::vector<Fact> factsOf(const GlareView& view, const node::Node& report) {
    std::vector<Fact> facts;
    if (report.boolean("ugr")) facts.push_back({"Unified glare rating", ugrText(view.rating.ugr), ""});
    if (report.boolean("dgp")) {
        facts.push_back({"Daylight glare probability", fixed(view.rating.dgp, 3), ""});
        facts.push_back({"Daylight glare", dgpClass(view.rating.dgp), ""});
    }
    const auto counted = std::count_if(view.found.sources.begin(), view.found.sources.end(),
                                       [](const GlareSource& source) { return source.index.value.has_value(); });
    facts.push_back({"Background luminance", significant(view.rating.background, 5), "cd/m2"});
    facts.push_back({"Vertical illuminance at the eye", significant(view.rating.verticalIlluminance, 5), "lx"});
    facts.push_back({"Least luminance of a source", significant(view.found.threshold, 5), "cd/m2"});
    facts.push_back({"Visual field that the picture shows", fixed(100.0 * view.rating.covered, 1), "%"});
    facts.push_back({"Sources", std::to_string(view.found.sources.size()), ""});
    facts.push_back({"Sources that count", std::to_string(counted), ""});
    facts.push_back({"Position index", view.search.byTable ? "table of CIE 117:1995" : "closed forms", ""});
    return facts;
}

/// What a reader of the numbers must know.
std::vector<std::string> notesOf(const GlareView& view, const node::Node& report) {
    std::vector<std::string> notes;
    const auto any = [&](auto&& is) { return std::any_of(view.found.sources.begin(), view.found.sources.end(), is); };
    if (any([](const GlareSource& source) { return source.tooSmall || source.tooLarge; })) {
        notes.push_back("Sources outside of " + significant(view.search.minimumSolidAngle, 3) + " to " +
                        significant(view.search.maximumSolidAngle, 3) +
                        " sr lie outside of what the unified glare rating is meant for. They are rated all the same.");
    }
    if (any([](const GlareSource& source) { return !source.isResolved; })) {
        notes.push_back("Sources less than three pixels across mix with what is behind them: a finer picture rates them better.");
    }
    if (any([](const GlareSource& source) { return !source.index.value; })) {
        notes.push_back("Excluded sources don't count in the unified glare rating, nor do they belong to the background.");
    }
    if (view.rating.covered < 0.99) {
        notes.push_back(
            "What the picture doesn't show of the hemisphere before the eye counts with the background's mean luminance.");
    }
    if (report.boolean("dgp") && (view.rating.dgp < 0.2 || view.rating.dgp > 0.8 || view.rating.verticalIlluminance < 380.0)) {
        notes.push_back("The daylight glare probability is meant for 0.2 to 0.8 and at least 380 lx at the eye.");
    }
    return notes;
}

constexpr std::array<const char*, 12> kColumns{"source",      "x",           "y",     "luminance", "largest luminance",
                                               "solid angle", "illuminance", "right", "up",        "position index",
                                               "share",       "remark"};
constexpr std::array<const char*, 12> kUnits{"", "pixels", "pixels", "cd/m2", "cd/m2", "sr", "lx", "deg", "deg", "", "%", ""};

std::string remarkOf(const GlareSource& source) {
    std::string remark = source.index.value ? "" : "excluded: " + source.index.excluded;
    const auto add = [&](bool applies, const char* text) {
        if (applies) remark += (remark.empty() ? "" : "; ") + std::string(text);
    };
    add(source.tooSmall, "small");
    add(source.tooLarge, "large");
    add(!source.isResolved, "not resolved");
    return remark;
}

std::vector<std::array<std::string, kColumns.size()>> rowsOf(const GlareView& view) {
    const auto weight = [](const GlareSource& source) {
        return source.index.value ? source.luminance * source.luminance * source.solidAngle / std::pow(*source.index.value, 2)
                                  : 0.0;
    };
    double sum = 0.0;
    for (const GlareSource& source : view.found.sources) sum += weight(source);
    std::vector<std::array<std::string, kColumns.size()>> rows;
    for (std::size_t i = 0; i < view.found.sources.size(); ++i) {
        const GlareSource& source = view.found.sources[i];
        const Vec3& d = source.direction;
        rows.push_back({std::to_string(i + 1), fixed(source.x, 1), fixed(source.y, 1), significant(source.luminance, 5),
                        significant(source.largestLuminance, 5), significant(source.solidAngle, 5),
                        significant(source.illuminance, 5), fixed(std::atan2(d[0], d[2]) / kDegree, 2),
                        fixed(std::asin(std::clamp(d[1], -1.0, 1.0)) / kDegree, 2),
                        source.index.value ? fixed(*source.index.value, 3) : "-",
                        sum > 0.0 ? fixed(100.0 * weight(source) / sum, 1) : "-", remarkOf(source)});
    }
    return rows;
}

std::string withUnit(std::size_t column) {
    return kUnits[column][0] ? std::string(kColumns[column]) + " [" + kUnits[column] + "]" : kColumns[column];
}

/// RFC 4648.
std::string base64(const std::vector<char>& bytes) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        unsigned group = 0;
        for (std::size_t j = 0; j < 3; ++j) {
            group = group << 8 | (j < count ? static_cast<unsigned char>(bytes[i + j]) : 0U);
        }
        for (std::size_t j = 0; j < 4; ++j) text += j <= count ? kDigits[group >> (18 - 6 * j) & 63U] : '=';
    }
    return text;
}

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, text.size()), ' ');
}

}  // namespace

std::string glareText(const GlareView& view, const node::Node& report, const std::string& title) {
    std::string text = title + "\n" + std::string(title.size(), '=') + "\n\n";
    for (const Fact& fact : factsOf(view, report)) {
        text += padded(fact.name, 38) + fact.value + (fact.unit.empty() ? "" : " " + fact.unit) + "\n";
    }
    const auto rows = rowsOf(view);
    if (report.boolean("list_sources") && !rows.empty()) {
        std::array<std::size_t, kColumns.size()> widths{};
        for (std::size_t c = 0; c < kColumns.size(); ++c) {
            widths[c] = withUnit(c).size();
            for (const auto& row : rows) widths[c] = std::max(widths[c], row[c].size());
        }
        const auto line = [&](auto&& cell) {
            std::string whole;
            for (std::size_t c = 0; c < kColumns.size(); ++c) whole += padded(cell(c), widths[c] + 2);
            whole.erase(whole.find_last_not_of(' ') + 1);
            return whole + "\n";
        };
        text += "\n" + line(withUnit);
        for (const auto& row : rows) text += line([&](std::size_t c) { return row[c]; });
    }
    const auto notes = notesOf(view, report);
    if (!notes.empty()) text += "\n";
    for (const std::string& note : notes) text += note + "\n";
    return text;
}

std::string glareCsv(const GlareView& view, const node::Node& report, const std::string& title) {
    CsvText csv;
    csv.cell("title").cell(title).endLine();
    for (const Fact& fact : factsOf(view, report)) {
        csv.cell(fact.unit.empty() ? fact.name : fact.name + " [" + fact.unit + "]").cell(fact.value).endLine();
    }
    for (const std::string& note : notesOf(view, report)) csv.cell("note").cell(note).endLine();
    if (!report.boolean("list_sources")) return csv.take();
    csv.endLine();
    for (std::size_t c = 0; c < kColumns.size(); ++c) csv.cell(withUnit(c));
    csv.endLine();
    for (const auto& row : rowsOf(view)) {
        for (const std::string& cell : row) csv.cell(cell);
        csv.endLine();
    }
    return csv.take();
}

std::string glareHtml(const GlareView& view, const node::Node& report, const std::string& title,
                      const std::vector<char>& picture) {
    std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>" + escapedMarkup(title) +
                       "</title>\n<style>\nbody { font-family: sans-serif; margin: 2em; }\nimg { max-width: 100%; }\n"
                       "table { border-collapse: collapse; margin: 1em 0; }\nth, td { border: 1px solid #999; padding: 0.2em "
                       "0.6em; text-align: left; }\n"
                       "</style>\n</head>\n<body>\n<h1>" +
                       escapedMarkup(title) + "</h1>\n<table>\n";
    for (const Fact& fact : factsOf(view, report)) {
        page += "<tr><th>" + escapedMarkup(fact.name) + "</th><td>" + escapedMarkup(fact.value) +
                (fact.unit.empty() ? "" : " " + escapedMarkup(fact.unit)) + "</td></tr>\n";
    }
    page += "</table>\n<p><img alt=\"Luminances with the sources of glare\" src=\"data:image/png;base64," + base64(picture) +
            "\"></p>\n";
    if (report.boolean("list_sources")) {
        page += "<table>\n<tr>";
        for (std::size_t c = 0; c < kColumns.size(); ++c) page += "<th>" + escapedMarkup(withUnit(c)) + "</th>";
        page += "</tr>\n";
        for (const auto& row : rowsOf(view)) {
            page += "<tr>";
            for (const std::string& cell : row) page += "<td>" + escapedMarkup(cell) + "</td>";
            page += "</tr>\n";
        }
        page += "</table>\n";
    }
    for (const std::string& note : notesOf(view, report)) page += "<p>" + escapedMarkup(note) + "</p>\n";
    return page + "</body>\n</html>\n";
}

}  // namespace nemra::core
