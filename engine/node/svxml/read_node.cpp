#include <algorithm>
#include <iterator>

#include "engine/node/encoding/fill_node.h"
#include "engine/node/svxml/read_parts.h"
#include "engine/node/svxml/values.h"

namespace nemra::node::svxml {

namespace {

using std::string_view;

/// The elements of a node, as NodeFiller asks for them.
class NodeElements {
public:
    using NodePart = pugi::xml_node;
    using SettingPart = pugi::xml_node;
    using RawPart = pugi::xml_node;

    explicit NodeElements(Source& source) : source_(source) {}

    Report& report() { return source_.report(); }
    std::size_t offsetOf(pugi::xml_node element) const { return source_.offsetOf(element); }

    /// Also warns of elements that a node doesn't have.
    string_view comments(pugi::xml_node node) {
        string_view found;
        for (const pugi::xml_node part : node.children()) {
            const string_view name = part.name();
            if (name == "comments") {
                comments_ = ElementText(source_, part);
                found = comments_.view();
            } else if (name != "parameter" && name != "table" && name != "raw" && name != "child" && name != "item") {
                source_.warnUnknown(part);
            }
        }
        return found;
    }

    template <class Visit>
    void forEachSetting(pugi::xml_node node, const Visit& visit) {
        for (const pugi::xml_node part : node.children())
            if (isSetting(part)) visitSetting(part, visit);
    }

    template <class Visit>
    void forEachRawSlot(pugi::xml_node node, const Visit& visit) {
        for (const pugi::xml_node part : node.children("raw")) {
            source_.checkAttributes(part, {"name"});
            visit(part, source_.required(part, "name"));
        }
    }

    template <class Visit>
    void forEachChild(pugi::xml_node node, const Visit& visit) {
        for (const pugi::xml_node part : node.children("child")) {
            source_.checkAttributes(part, {"slot", "type", "name"});
            visit({part, source_.required(part, "slot"), textOf(part.attribute("type")), textOf(part.attribute("name"))});
        }
    }

    template <class Visit>
    void forEachItem(pugi::xml_node node, const Visit& visit) {
        for (const pugi::xml_node part : node.children("item")) {
            source_.checkAttributes(part, {"type", "name"});
            visit({part, "", source_.required(part, "type"), textOf(part.attribute("name"))});
        }
    }

    Value settingValue(pugi::xml_node element, const ParameterSpec& spec, const std::string& what) {
        const bool isTable = string_view(element.name()) == "table";
        if (isTable != (spec.type == NEMRA_PARAMETER_TABLE))
            source_.fail(element, what + (isTable ? " isn't a table" : " is a table"));
        if (isTable) return {readTable(element, spec, what)};
        const string_view text = source_.required(element, "value");
        const std::size_t at = source_.offsetOf(element.attribute("value"));
        if (spec.type == NEMRA_PARAMETER_COLOR) return {readColor(element, text, at, what)};
        return readValue(source_, spec, text, at, what);
    }

    Value rawValue(pugi::xml_node element, const RawSlotSpec& slot, const std::string& what) const {
        return readRawData(source_, slot.type, ElementText(source_, element).view(), source_.offsetOf(element), what);
    }

private:
    static std::optional<string_view> textOf(pugi::xml_attribute attribute) {
        return attribute ? std::optional<string_view>(attribute.value()) : std::nullopt;
    }

    static bool isSetting(pugi::xml_node element) {
        const string_view name = element.name();
        return name == "parameter" || name == "table";
    }

    template <class Visit>
    void visitSetting(pugi::xml_node element, const Visit& visit) {
        const bool isTable = string_view(element.name()) == "table";
        source_.checkAttributes(element, isTable ? std::initializer_list<string_view>{"name"}
                                                 : std::initializer_list<string_view>{"name", "value", "space"});
        visit(element, source_.required(element, "name"));
        if (isTable) return;
        for (const pugi::xml_node part : element.children()) {
            if (isSetting(part)) {
                visitSetting(part, visit);
            } else {
                source_.warnUnknown(part);
            }
        }
    }

    Color readColor(pugi::xml_node element, string_view text, std::size_t at, const std::string& what) const {
        const auto coords = readNumbers<float>(source_, text, at, what);
        if (coords.size() != 3) throw Fault{at, what + ": three numbers expected, " + std::to_string(coords.size()) + " found"};
        Color color;
        color.space = source_.required(element, "space");
        std::copy(coords.begin(), coords.end(), color.coords.begin());
        return color;
    }

    std::shared_ptr<const Table> readTable(pugi::xml_node element, const ParameterSpec& spec, const std::string& what) {
        auto table = std::make_shared<Table>();
        bool first = true;
        for (const pugi::xml_node part : element.children()) {
            if (string_view(part.name()) != "column") {
                source_.warnUnknown(part);
                continue;
            }
            source_.checkAttributes(part, {"name", "kind"});
            const std::string name(source_.required(part, "name"));
            const auto column =
                std::find_if(spec.columns.begin(), spec.columns.end(), [&](const auto& c) { return c.name == name; });
            if (column == spec.columns.end()) {
                report().unknown(source_.offsetOf(part), what + " has no column '" + name + "'");
                continue;
            }
            if (table->find(name) != nullptr) source_.fail(part, what + ": a second column '" + name + "'");
            std::vector<Value> cells = readCells(part, *column, what + ", column '" + name + "'");
            if (!first && cells.size() != table->rows)
                source_.fail(part, what + ": column '" + name + "' has " + std::to_string(cells.size()) +
                                       " cells, the one before it " + std::to_string(table->rows));
            first = false;
            table->rows = cells.size();
            table->columns.push_back({name, std::move(cells)});
        }
        return table;
    }

    std::vector<Value> readCells(pugi::xml_node element, const ParameterSpec& column, const std::string& what) {
        if (isTextCell(column.type)) return readTextCells(element);
        const CellKind kind = kindOfCells(element, column, what);
        const bool isDouble = kind.name() == "double";
        const ElementText text(source_, element);
        string_view rest = text.view();
        const std::size_t at = source_.offsetOf(element);
        std::vector<Value> cells;
        cells.reserve(countWords(rest));  // growing would take three times the memory
        for (string_view word = takeWord(rest); !word.empty(); word = takeWord(rest)) {
            if (double number = 0.0; isDouble && parseNumber(word, number) == NumberFault::none) {
                cells.push_back({number});  // what a cell is most often
            } else if (word == kUnset) {
                cells.emplace_back();
            } else {
                cells.push_back(
                    kind.read(source_, word, source_.offsetOf(word.data(), at), what + ", row " + std::to_string(cells.size())));
            }
        }
        return cells;
    }

    std::vector<Value> readTextCells(pugi::xml_node element) {
        std::vector<Value> cells;
        for (const pugi::xml_node cell : element.children()) {
            const string_view name = cell.name();
            if (name == "cell") {
                cells.push_back({std::string(ElementText(source_, cell).view())});
            } else if (name == kUnset) {
                cells.emplace_back();
            } else {
                source_.warnUnknown(cell);
            }
        }
        return cells;
    }

    CellKind kindOfCells(pugi::xml_node element, const ParameterSpec& column, const std::string& what) const {
        const pugi::xml_attribute attribute = element.attribute("kind");
        if (!attribute) return CellKind(column);
        const auto kind = CellKind::named(attribute.value());
        if (!kind) throw Fault{source_.offsetOf(attribute), what + ": unknown kind '" + attribute.value() + "'"};
        return *kind;
    }

    Source& source_;
    ElementText comments_;
};

}  // namespace

std::shared_ptr<Node> readNodeOfFamily(Source& source, pugi::xml_node element, std::string_view family) {
    source.checkAttributes(element, {"family", "type", "name"});
    NodeElements elements(source);
    return readNodeOf(elements, element, family, source.required(element, "type"), element.attribute("name").value());
}

std::shared_ptr<Node> readNode(Source& source, pugi::xml_node element) {
    return readNodeOfFamily(source, element, source.required(element, "family"));
}

}  // namespace nemra::node::svxml
