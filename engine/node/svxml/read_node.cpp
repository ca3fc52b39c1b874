#include <algorithm>

#include "engine/node/svxml/read_parts.h"
#include "engine/node/svxml/values.h"

namespace nemra::node::svxml {

namespace {

bool describes(const std::vector<ParameterSpec>& parameters, std::string_view name) {
    return std::any_of(parameters.begin(), parameters.end(), [&](const ParameterSpec& parameter) {
        return parameter.name == name ||
               std::any_of(parameter.options.begin(), parameter.options.end(),
                           [&](const OptionSpec& option) { return describes(option.parameters, name); });
    });
}

/// Fills one node from the contents of its element.
class NodeReader {
public:
    NodeReader(Source& source, pugi::xml_node element, Node& node) : source_(source), element_(element), node_(node) {}

    void read() {
        for (const pugi::xml_node part : element_.children()) {
            const std::string_view name = part.name();
            if (name == "parameter" || name == "table") {
                collect(part);
            } else if (name == "comments") {
                node_.setComments(std::string(ElementText(part).view()));
            } else if (name != "raw" && name != "child" && name != "item") {
                source_.warnUnknown(part);
            }
        }
        applySettings();
        for (const pugi::xml_node part : element_.children()) {
            const std::string_view name = part.name();
            if (name == "raw") readRawSlot(part);
            if (name == "child") readChild(part);
            if (name == "item") readItem(part);
        }
    }

private:
    struct Setting {
        pugi::xml_node element;
        std::string name;
        bool done = false;
    };

    [[noreturn]] void fail(std::size_t at, const std::string& text) const { throw Fault{at, node_.label() + ": " + text}; }
    [[noreturn]] void fail(pugi::xml_node element, const std::string& text) const { fail(source_.offsetOf(element), text); }

    /// An element and what it nests, outermost first.
    void collect(pugi::xml_node element) {
        const std::string_view kind = element.name();
        source_.checkAttributes(element, kind == "table" ? std::initializer_list<std::string_view>{"name"}
                                                         : std::initializer_list<std::string_view>{"name", "value", "space"});
        settings_.push_back({element, std::string(source_.required(element, "name"))});
        if (kind == "table") return;
        for (const pugi::xml_node part : element.children()) {
            const std::string_view name = part.name();
            if (name == "parameter" || name == "table") {
                collect(part);
            } else {
                source_.warnUnknown(part);
            }
        }
    }

    /// Choices come first, since they bring the parameters that others set, until none of them finds its place any more.
    void applySettings() {
        for (bool progress = true; progress;) {
            progress = false;
            for (Setting& setting : settings_) progress |= apply(setting, true);
        }
        for (Setting& setting : settings_) apply(setting, false);
        for (const Setting& setting : settings_) {
            if (setting.done) continue;
            if (!describes(node_.nodeClass().parameters, setting.name))
                fail(setting.element, "unknown parameter '" + setting.name + "'");
            source_.warn(source_.offsetOf(setting.element),
                         node_.label() + ": parameter '" + setting.name + "' has no effect under the choices made, skipped");
        }
    }

    bool apply(Setting& setting, bool choicesOnly) {
        if (setting.done) return false;
        const ParameterSpec* const spec = node_.findParameter(setting.name).spec;
        if (spec == nullptr || (choicesOnly && spec->type != NEMRA_PARAMETER_CHOICE)) return false;
        setting.done = true;
        set(setting.element, *spec);
        return true;
    }

    void set(pugi::xml_node element, const ParameterSpec& spec) {
        const std::string what = node_.label() + ": parameter '" + spec.name + "'";
        const bool isTable = std::string_view(element.name()) == "table";
        if (isTable != (spec.type == NEMRA_PARAMETER_TABLE))
            fail(element, "parameter '" + spec.name + (isTable ? "' isn't a table" : "' is a table"));
        std::size_t at = source_.offsetOf(element);
        Value value;
        if (isTable) {
            value.data = readTable(element, spec, what);
        } else {
            const std::string_view text = source_.required(element, "value");
            at = source_.offsetOf(element.attribute("value"));
            if (spec.type == NEMRA_PARAMETER_COLOR) {
                value.data = readColor(element, text, at, what);
            } else {
                value = readValue(source_, spec, text, at, what);
            }
        }
        std::string why;
        if (!node_.set(spec.name, std::move(value), why)) fail(at, why);
    }

    Color readColor(pugi::xml_node element, std::string_view text, std::size_t at, const std::string& what) const {
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
            if (std::string_view(part.name()) != "column") {
                source_.warnUnknown(part);
                continue;
            }
            source_.checkAttributes(part, {"name"});
            const std::string name(source_.required(part, "name"));
            const auto column =
                std::find_if(spec.columns.begin(), spec.columns.end(), [&](const auto& c) { return c.name == name; });
            if (column == spec.columns.end()) throw Fault{source_.offsetOf(part), what + " has no column '" + name + "'"};
            if (table->find(name) != nullptr) throw Fault{source_.offsetOf(part), what + ": a second column '" + name + "'"};
            std::vector<Value> cells = readCells(part, *column, what + ", column '" + name + "'");
            if (!first && cells.size() != table->rows)
                throw Fault{source_.offsetOf(part), what + ": column '" + name + "' has " + std::to_string(cells.size()) +
                                                        " cells, the one before it " + std::to_string(table->rows)};
            first = false;
            table->rows = cells.size();
            table->columns.push_back({name, std::move(cells)});
        }
        return table;
    }

    std::vector<Value> readCells(pugi::xml_node element, const ParameterSpec& column, const std::string& what) {
        std::vector<Value> cells;
        if (isTextCell(column.type)) {
            for (const pugi::xml_node cell : element.children()) {
                const std::string_view name = cell.name();
                if (name == "cell") {
                    cells.push_back({std::string(ElementText(cell).view())});
                } else if (name == kUnset) {
                    cells.emplace_back();
                } else {
                    source_.warnUnknown(cell);
                }
            }
            return cells;
        }
        const ElementText text(element);
        std::string_view rest = text.view();
        const std::size_t at = source_.offsetOf(element);
        for (std::string_view word = takeWord(rest); !word.empty(); word = takeWord(rest)) {
            if (word == kUnset) {
                cells.emplace_back();
            } else {
                cells.push_back(readCell(column, word, at, what, cells.size()));
            }
        }
        return cells;
    }

    /// One cell of a column of numbers, most often a plain real.
    Value readCell(const ParameterSpec& column, std::string_view word, std::size_t at, const std::string& what,
                   std::size_t row) const {
        const bool isDouble = column.type == NEMRA_PARAMETER_REAL && !std::holds_alternative<float>(column.defaultValue.data);
        if (double number = 0.0; isDouble && parseNumber(word, number) == NumberFault::none) return {number};
        return readValue(source_, column, word, source_.offsetOf(word.data(), at), what + ", row " + std::to_string(row));
    }

    void readRawSlot(pugi::xml_node part) {
        source_.checkAttributes(part, {"name"});
        const std::string name(source_.required(part, "name"));
        const auto& slots = node_.nodeClass().rawSlots;
        const auto slot = std::find_if(slots.begin(), slots.end(), [&](const RawSlotSpec& s) { return s.name == name; });
        if (slot == slots.end()) fail(part, "no raw slot '" + name + "'");
        const ElementText text(part);
        std::string why;
        if (!node_.setRawSlot(name,
                              readRawData(source_, slot->type, text.view(), source_.offsetOf(part),
                                          node_.label() + ": raw slot '" + name + "'"),
                              why))
            fail(part, why);
    }

    void readChild(pugi::xml_node part) {
        source_.checkAttributes(part, {"slot", "type", "name"});
        const std::string slotName(source_.required(part, "slot"));
        const auto& slots = node_.nodeClass().children;
        const auto slot =
            std::find_if(slots.begin(), slots.end(), [&](const ChildSpec& child) { return child.name == slotName; });
        if (slot == slots.end()) fail(part, "no child slot '" + slotName + "'");
        const std::string type = part.attribute("type") ? part.attribute("type").value() : slot->defaultType;
        if (type == slot->defaultType && node_.isDefaultChild(slotName)) {
            // The slot's own default may differ from its class's.
            NodeReader(source_, part, *node_.mutableChild(slotName)).read();
        } else {
            place(part, makeNode(part, slot->family, type, slotName));
        }
        // Last, since the name is what leads a child into its slot.
        if (const auto name = part.attribute("name")) node_.mutableChild(slotName)->setName(name.value());
    }

    void readItem(pugi::xml_node part) {
        source_.checkAttributes(part, {"type", "name"});
        const std::string& family = node_.nodeClass().listClass;
        if (family.empty()) fail(part, "nodes of this class have no list of items");
        place(part, makeNode(part, family, std::string(source_.required(part, "type")), part.attribute("name").value()));
    }

    std::shared_ptr<Node> makeNode(pugi::xml_node part, const std::string& family, const std::string& type,
                                   std::string name) const {
        const NodeClass* const nodeClass = findClass(family, type);
        if (nodeClass == nullptr) fail(part, "unknown class '" + family + "/" + type + "'");
        return std::make_shared<Node>(*nodeClass, std::move(name));
    }

    void place(pugi::xml_node part, std::shared_ptr<Node> child) {
        NodeReader(source_, part, *child).read();
        std::string why;
        if (!node_.setChild(std::move(child), why)) fail(part, why);
    }

    Source& source_;
    pugi::xml_node element_;
    Node& node_;
    std::vector<Setting> settings_;
};

}  // namespace

std::shared_ptr<Node> readNodeOfFamily(Source& source, pugi::xml_node element, std::string_view family) {
    source.checkAttributes(element, {"family", "type", "name"});
    const std::string_view type = source.required(element, "type");
    const NodeClass* const nodeClass = findClass(family, type);
    if (nodeClass == nullptr) source.fail(element, "unknown class '" + std::string(family) + "/" + std::string(type) + "'");
    auto node = std::make_shared<Node>(*nodeClass, element.attribute("name").value());
    NodeReader(source, element, *node).read();
    return node;
}

std::shared_ptr<Node> readNode(Source& source, pugi::xml_node element) {
    return readNodeOfFamily(source, element, source.required(element, "family"));
}

}  // namespace nemra::node::svxml
