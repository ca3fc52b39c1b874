#include "tools/node_reference/pages.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <vector>

#include "engine/core/translate/class_table.h"
#include "engine/node/node_class.h"

namespace nemra::reference {

namespace {

using node::NodeClass;
using node::ParameterSpec;

constexpr const char* kOrigin =
    "<!-- Made from the engine's catalogue by `make docs`. Changes belong into engine/node/catalogue. -->\n\n";

using Families = std::map<std::string, std::vector<const NodeClass*>>;

/// By name, the classes of each by type with `linked` last.
Families byFamily() {
    Families families;
    for (const NodeClass* const nodeClass : node::allClasses()) families[nodeClass->family].push_back(nodeClass);
    for (auto& [family, classes] : families) {
        std::sort(classes.begin(), classes.end(), [](const NodeClass* a, const NodeClass* b) {
            return std::pair(a->type == "linked", a->type) < std::pair(b->type == "linked", b->type);
        });
    }
    return families;
}

std::string code(const std::string& text) { return text.empty() ? "" : '`' + text + '`'; }

/// Text inside a cell of a table.
std::string cell(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '|') escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string row(const std::vector<std::string>& cells) {
    std::string line = "|";
    for (const std::string& text : cells) line += text.empty() ? " |" : ' ' + text + " |";
    return line + '\n';
}

std::string kindOf(nemra_parameter_type_t type) {
    switch (type) {
        case NEMRA_PARAMETER_INFO:
            return "information";
        case NEMRA_PARAMETER_REAL:
            return "real";
        case NEMRA_PARAMETER_INTEGER:
            return "integer";
        case NEMRA_PARAMETER_TEXT:
            return "text";
        case NEMRA_PARAMETER_FILE:
            return "file";
        case NEMRA_PARAMETER_LINK:
            return "link";
        case NEMRA_PARAMETER_BOOLEAN:
            return "boolean";
        case NEMRA_PARAMETER_VECTOR:
            return "vector";
        case NEMRA_PARAMETER_DIRECTION:
            return "direction";
        case NEMRA_PARAMETER_CHOICE:
            return "choice";
        case NEMRA_PARAMETER_TABLE:
            return "table";
        case NEMRA_PARAMETER_COLOR:
            return "colour";
        case NEMRA_PARAMETER_MATRIX2:
            return "2x2 matrix";
        case NEMRA_PARAMETER_MATRIX3:
            return "3x3 matrix";
        case NEMRA_PARAMETER_NONE:
            break;
    }
    return "";
}

std::string kindOf(nemra_raw_data_type_t type) {
    switch (type) {
        case NEMRA_RAW_DATA_TEXT:
            return "text";
        case NEMRA_RAW_DATA_INDEX:
        case NEMRA_RAW_DATA_INT32:
            return "32-bit integers";
        case NEMRA_RAW_DATA_FLOAT:
            return "float32 numbers";
        case NEMRA_RAW_DATA_DOUBLE:
            return "float64 numbers";
        case NEMRA_RAW_DATA_BINARY:
            return "bytes";
        default:
            return "";
    }
}

/// Such as "`0.5`"; nothing for what is empty.
std::string defaultOf(const node::Value& value) {
    if (const auto* const color = std::get_if<node::Color>(&value.data)) {
        std::string text = color->space;
        for (const float coord : color->coords) text += ' ' + node::toText(node::Value{coord});
        return code(text);
    }
    if (std::holds_alternative<std::shared_ptr<const node::Table>>(value.data)) return "";
    return code(node::toText(value));
}

std::string rangeOf(const ParameterSpec& spec) {
    if (!spec.allowed.empty()) {
        std::string text;
        for (const std::int32_t one : spec.allowed) text += (text.empty() ? "" : ", ") + std::to_string(one);
        return text;
    }
    if (!std::isfinite(spec.minimum) || !std::isfinite(spec.maximum)) return "";
    return node::toText(spec.minimum) + " to " + node::toText(spec.maximum);
}

/// A parameter, its options with their parameters, its columns; each level is set off by a dot.
void addRows(std::string& page, const ParameterSpec& spec, int depth, const char* role = nullptr) {
    std::string dots;
    for (int i = 0; i < depth; ++i) dots += "· ";
    page += row({dots + code(spec.name), role ? role : kindOf(spec.type), spec.unit, role ? "" : defaultOf(spec.defaultValue),
                 rangeOf(spec), cell(spec.doc)});
    for (const node::OptionSpec& option : spec.options) {
        page += row({dots + "· " + code(option.name), "option", "", "", "", cell(option.doc)});
        for (const ParameterSpec& nested : option.parameters) addRows(page, nested, depth + 2);
    }
    for (const ParameterSpec& column : spec.columns) addRows(page, column, depth + 1, "column");
}

void addParameters(std::string& page, const NodeClass& nodeClass) {
    if (nodeClass.parameters.empty()) return;
    page += row({"parameter", "kind", "unit", "default", "range", "meaning"}) + "|---|---|---|---|---|---|\n";
    for (const ParameterSpec& spec : nodeClass.parameters) addRows(page, spec, 0);
    page += '\n';
}

void addChildren(std::string& page, const NodeClass& nodeClass) {
    if (nodeClass.children.empty()) return;
    page += row({"child", "family", "default", "meaning"}) + "|---|---|---|---|\n";
    for (const node::ChildSpec& child : nodeClass.children) {
        std::string made = code(child.defaultType);
        for (const auto& [name, value] : child.defaults) made += ", " + code(name) + ' ' + defaultOf(value);
        page += row({code(child.name), '[' + child.family + "](" + child.family + ".md)", made, cell(child.doc)});
    }
    page += '\n';
}

void addRawSlots(std::string& page, const NodeClass& nodeClass) {
    if (nodeClass.rawSlots.empty()) return;
    page += row({"raw data", "kind", "unit", "meaning"}) + "|---|---|---|---|\n";
    for (const node::RawSlotSpec& slot : nodeClass.rawSlots) {
        page += row({code(slot.name), kindOf(slot.type), slot.unit, cell(slot.doc)});
    }
    page += '\n';
}

std::string pythonName(const NodeClass& nodeClass) {
    std::string name = nodeClass.type;
    name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
    std::replace(name.begin(), name.end(), '-', '_');
    return "nemra.nodes." + nodeClass.family + '.' + name;
}

/// What a user meets who takes a class of that family whose light part isn't written yet.
std::string missingNote(const std::string& family) {
    if (family == "instrument" || family == "setup") return "**Not simulated yet**: a render that asks for it is refused.";
    if (family == "output") return "**Not written yet**: an rgbimage takes its place, after a warning.";
    if (family == "filter") return "**Not available yet**: pictures are made without it, after a warning.";
    return "**Not simulated yet**: a render that meets it gives a warning.";
}

std::string familyPage(const std::string& family, const std::vector<const NodeClass*>& classes) {
    std::string page = kOrigin + ("# " + family) + "\n\n";
    if (family == "rtf") page += "The classes of this family have no class in Python; scene files and other nodes name them.\n\n";
    for (const NodeClass* const nodeClass : classes) {
        page += "## " + nodeClass->family + '/' + nodeClass->type + "\n\n" + nodeClass->summary + ".\n\n";
        std::vector<std::string> notes;
        if (family != "rtf") notes.push_back("Python class " + code(pythonName(*nodeClass)) + ".");
        if (!core::hasLightPart(family, nodeClass->type)) notes.push_back(missingNote(family));
        for (const std::string& note : notes) page += note + (&note == &notes.back() ? "\n\n" : " ");
        addParameters(page, *nodeClass);
        addChildren(page, *nodeClass);
        if (!nodeClass->listClass.empty()) {
            page += "Has a list of nodes of the family [" + nodeClass->listClass + "](" + nodeClass->listClass + ".md).\n\n";
        }
        addRawSlots(page, *nodeClass);
    }
    page.pop_back();
    return page;
}

std::string indexPage(const Families& families) {
    std::string page = kOrigin;
    page +=
        "# Node classes\n\n"
        "A scene is made of nodes. Each belongs to a family, which says what it stands for, and has a type within it. The pages "
        "give every class with its parameters, their units, defaults and ranges, its children and its raw data. Options of a "
        "choice, the parameters that they bring and the columns of a table are set off by dots. A parameter below an option "
        "exists only while that option is selected.\n\n";
    page += row({"family", "classes"}) + "|---|---|\n";
    for (const auto& [family, classes] : families) {
        std::string types;
        for (const NodeClass* const nodeClass : classes) types += (types.empty() ? "" : ", ") + nodeClass->type;
        page += row({'[' + family + "](" + family + ".md)", types});
    }
    return page;
}

std::string missingPage(const Families& families) {
    std::string page = kOrigin;
    page +=
        "# Classes that aren't simulated yet\n\n"
        "Nodes of these classes can be made, set, written and read. In a render, or where a result is written, they count for "
        "nothing, or a simple class stands in for them; one warning says so. A setup or an instrument that isn't simulated yet "
        "is refused with an error.\n\n";
    page += row({"family", "classes"}) + "|---|---|\n";
    std::size_t all = 0;
    std::size_t missing = 0;
    for (const auto& [family, classes] : families) {
        std::string types;
        for (const NodeClass* const nodeClass : classes) {
            ++all;
            if (core::hasLightPart(family, nodeClass->type)) continue;
            ++missing;
            types += (types.empty() ? "" : ", ") + nodeClass->type;
        }
        if (!types.empty()) page += row({"[" + family + "](nodes/" + family + ".md)", types});
    }
    return page + '\n' + std::to_string(missing) + " of " + std::to_string(all) + " classes.\n";
}

}  // namespace

Pages makePages() {
    const Families families = byFamily();
    Pages pages{{"nodes/index.md", indexPage(families)}, {"without_light_part.md", missingPage(families)}};
    for (const auto& [family, classes] : families) pages["nodes/" + family + ".md"] = familyPage(family, classes);
    return pages;
}

}  // namespace nemra::reference
