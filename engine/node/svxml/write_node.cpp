#include <algorithm>

#include "engine/node/encoding/differences.h"
#include "engine/node/svxml/values.h"
#include "engine/node/svxml/write_parts.h"

namespace nemra::node::svxml {

namespace {

/// The contents of a node as elements.
class NodeWriter final : public DifferenceSink {
public:
    explicit NodeWriter(XmlWriter& writer) : writer_(writer) {}

    void comments(const std::string& text) override {
        const Element element(writer_, "comments");
        writer_.text(text);
    }

    void beginParameter(const ParameterSpec& spec, const Value& value) override {
        const bool isTable = spec.type == NEMRA_PARAMETER_TABLE;
        writer_.open(isTable ? "table" : "parameter");
        writer_.attribute("name", spec.name);
        if (isTable) return writeColumns(spec, value);
        if (const auto* color = std::get_if<Color>(&value.data)) writer_.attribute("space", color->space);
        writer_.attribute("value", textOf(value));
    }

    void endParameter() override { writer_.close(); }

    void rawSlot(const RawSlotSpec& slot, const Value& value) override {
        const Element element(writer_, "raw");
        writer_.attribute("name", slot.name);
        if (const std::string text = textOf(value); !text.empty()) writer_.text(text);
    }

    void beginChild(const ChildSpec& slot, const Node& child) override {
        writer_.open("child");
        writer_.attribute("slot", slot.name);
        writer_.attribute("type", child.type());
        if (child.name() != slot.name) writer_.attribute("name", child.name());
    }

    void beginItem(const Node& item) override {
        writer_.open("item");
        writer_.attribute("type", item.type());
        writer_.attribute("name", item.name());
    }

    void endNode() override { writer_.close(); }

private:
    static std::string textOf(const Value& value) {
        std::string text;
        appendValue(text, value);
        return text;
    }

    void writeColumns(const ParameterSpec& spec, const Value& value) {
        const auto* table = std::get_if<std::shared_ptr<const Table>>(&value.data);
        if (table == nullptr || !*table) return;
        for (const Table::Column& column : (*table)->columns) {
            const auto described =
                std::find_if(spec.columns.begin(), spec.columns.end(), [&](const auto& c) { return c.name == column.name; });
            if (described == spec.columns.end()) continue;  // no reader would know it
            const Element element(writer_, "column");
            writer_.attribute("name", column.name);
            if (isTextCell(described->type)) {
                writeTextCells(column);
            } else {
                writeNumberCells(column, *described);
            }
        }
    }

    void writeTextCells(const Table::Column& column) {
        for (const Value& cell : column.cells) {
            const Element element(writer_, cell.isEmpty() ? kUnset.data() : "cell");
            if (const std::string text = textOf(cell); !text.empty()) writer_.text(text);
        }
    }

    void writeNumberCells(const Table::Column& column, const ParameterSpec& spec) {
        const CellKind kind(spec, column.cells);
        if (!(kind == CellKind(spec))) writer_.attribute("kind", kind.name());
        std::string text;
        for (const Value& cell : column.cells) {
            if (!text.empty()) text += ' ';
            if (cell.isEmpty()) {
                text += kUnset;
            } else {
                kind.append(text, cell);
            }
        }
        writer_.text(text);
    }

    XmlWriter& writer_;
};

}  // namespace

void writeNodeOfFamily(XmlWriter& writer, const char* element, const Node& node) {
    const Element open(writer, element);
    writer.attribute("type", node.type());
    writer.attribute("name", node.name());
    NodeWriter sink(writer);
    walkDifferences(node, sink);
}

void writeNode(XmlWriter& writer, const Node& node) {
    const Element open(writer, "node");
    writer.attribute("family", node.family());
    writer.attribute("type", node.type());
    writer.attribute("name", node.name());
    NodeWriter sink(writer);
    walkDifferences(node, sink);
}

}  // namespace nemra::node::svxml
