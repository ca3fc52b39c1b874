#include <algorithm>

#include "engine/node/svxml/values.h"
#include "engine/node/svxml/write_parts.h"

namespace nemra::node::svxml {

namespace {

/// Writes what tells a node from `base`, the node that a reader starts from.
class NodeWriter {
public:
    NodeWriter(XmlWriter& writer, const Node& node, const Node& base) : writer_(writer), node_(node), base_(base) {}

    void writeContents() const {
        if (!node_.comments().empty()) {
            const Element comments(writer_, "comments");
            writer_.text(node_.comments());
        }
        writeParameters();
        writeRawSlots();
        for (const ChildSpec& slot : node_.nodeClass().children) writeChild(slot);
        for (const auto& item : node_.mutableList()) writeNodeOfFamily(writer_, "item", *item);
    }

    /// False if a reader would get this node without a word being written.
    bool differs() const {
        if (node_.name() != base_.name()) return true;
        if (!node_.comments().empty() || !node_.mutableList().empty()) return true;
        const auto settings = node_.activeParameters();
        if (std::any_of(settings.begin(), settings.end(), [&](const auto& setting) { return differsFromBase(setting); }))
            return true;
        const auto& slots = node_.nodeClass().rawSlots;
        if (std::any_of(slots.begin(), slots.end(), [&](const RawSlotSpec& slot) { return node_.rawSlot(slot.name) != nullptr; }))
            return true;
        const auto& children = node_.nodeClass().children;
        return std::any_of(children.begin(), children.end(), [&](const ChildSpec& slot) { return childDiffers(slot); });
    }

private:
    bool differsFromBase(const Node::Setting& setting) const {
        const Node::Setting start = base_.findParameter(setting.spec->name);
        // What a choice brings starts from its description, once the choice is made.
        const Value& startValue = start.spec == setting.spec ? *start.value : setting.spec->defaultValue;
        return *setting.value != startValue;
    }

    /// Parameters that a choice brings stand inside its element.
    void writeParameters() const {
        const auto settings = node_.activeParameters();
        std::size_t next = 0;
        writeLevel(settings, next, settings.empty() ? 0 : settings.front().depth);
    }

    void writeLevel(const std::vector<Node::Setting>& settings, std::size_t& next, int depth) const {
        while (next < settings.size() && settings[next].depth >= depth) {
            const Node::Setting& setting = settings[next++];
            std::size_t end = next;
            while (end < settings.size() && settings[end].depth > setting.depth) ++end;
            const bool inner = std::any_of(settings.begin() + static_cast<std::ptrdiff_t>(next),
                                           settings.begin() + static_cast<std::ptrdiff_t>(end),
                                           [&](const auto& nested) { return differsFromBase(nested); });
            if (setting.spec->type != NEMRA_PARAMETER_INFO && (inner || differsFromBase(setting))) {
                writeSetting(setting, [&] { writeLevel(settings, next, setting.depth + 1); });
            }
            next = end;
        }
    }

    template <class Nested>
    void writeSetting(const Node::Setting& setting, Nested&& nested) const {
        if (setting.spec->type == NEMRA_PARAMETER_TABLE) return writeTable(*setting.spec, *setting.value);
        const Element element(writer_, "parameter");
        writer_.attribute("name", setting.spec->name);
        if (const auto* color = std::get_if<Color>(&setting.value->data)) writer_.attribute("space", color->space);
        std::string text;
        appendValue(text, *setting.value);
        writer_.attribute("value", text);
        nested();
    }

    void writeTable(const ParameterSpec& spec, const Value& value) const {
        const Element element(writer_, "table");
        writer_.attribute("name", spec.name);
        const auto* table = std::get_if<std::shared_ptr<const Table>>(&value.data);
        if (table == nullptr || !*table) return;
        for (const Table::Column& column : (*table)->columns) {
            const auto described =
                std::find_if(spec.columns.begin(), spec.columns.end(), [&](const auto& c) { return c.name == column.name; });
            if (described == spec.columns.end()) continue;  // no reader would know it
            const Element columnElement(writer_, "column");
            writer_.attribute("name", column.name);
            if (isTextCell(described->type)) {
                writeTextCells(column);
            } else {
                writer_.text(joinCells(column));
            }
        }
    }

    void writeTextCells(const Table::Column& column) const {
        for (const Value& cell : column.cells) {
            const bool unset = std::holds_alternative<std::monostate>(cell.data);
            const Element element(writer_, unset ? kUnset.data() : "cell");
            std::string text;
            appendValue(text, cell);
            if (!text.empty()) writer_.text(text);
        }
    }

    static std::string joinCells(const Table::Column& column) {
        std::string text;
        for (const Value& cell : column.cells) {
            if (!text.empty()) text += ' ';
            if (std::holds_alternative<std::monostate>(cell.data)) {
                text += kUnset;
            } else {
                appendValue(text, cell);
            }
        }
        return text;
    }

    void writeRawSlots() const {
        for (const RawSlotSpec& slot : node_.nodeClass().rawSlots) {
            const Value* const value = node_.rawSlot(slot.name);
            if (value == nullptr) continue;
            const Element element(writer_, "raw");
            writer_.attribute("name", slot.name);
            std::string text;
            appendValue(text, *value);
            if (!text.empty()) writer_.text(text);
        }
    }

    bool childDiffers(const ChildSpec& slot) const {
        const auto child = node_.child(slot.name);
        const auto base = base_.child(slot.name);
        if (child == base) return false;
        if (&base->nodeClass() != &child->nodeClass()) return true;
        return NodeWriter(writer_, *child, *base).differs();
    }

    void writeChild(const ChildSpec& slot) const {
        if (!childDiffers(slot)) return;
        const auto child = node_.child(slot.name);
        const auto base = base_.child(slot.name);
        const Element element(writer_, "child");
        writer_.attribute("slot", slot.name);
        writer_.attribute("type", child->type());
        if (child->name() != slot.name) writer_.attribute("name", child->name());
        if (&base->nodeClass() == &child->nodeClass()) return NodeWriter(writer_, *child, *base).writeContents();
        NodeWriter(writer_, *child, Node(child->nodeClass(), child->name())).writeContents();
    }

    XmlWriter& writer_;
    const Node& node_;
    const Node& base_;
};

}  // namespace

void writeNodeOfFamily(XmlWriter& writer, const char* element, const Node& node) {
    const Element open(writer, element);
    writer.attribute("type", node.type());
    writer.attribute("name", node.name());
    NodeWriter(writer, node, Node(node.nodeClass(), node.name())).writeContents();
}

void writeNode(XmlWriter& writer, const Node& node) {
    const Element open(writer, "node");
    writer.attribute("family", node.family());
    writer.attribute("type", node.type());
    writer.attribute("name", node.name());
    NodeWriter(writer, node, Node(node.nodeClass(), node.name())).writeContents();
}

}  // namespace nemra::node::svxml
