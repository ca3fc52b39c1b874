#include "engine/node/encoding/fill_node.h"
#include "engine/node/svbin/read_parts.h"

namespace nemra::node::svbin {

namespace {

/// The tables of a node, as NodeFiller asks for them.
class NodeTables {
public:
    using NodePart = const fb::Node*;
    using SettingPart = const fb::Parameter*;
    using RawPart = const fb::RawSlot*;

    explicit NodeTables(FileView& file) : file_(file) {}

    Report& report() { return file_.report(); }
    std::size_t offsetOf(const void* part) const { return file_.offsetOf(part); }

    std::string comments(NodePart node) { return file_.copy(node->comments()); }

    template <class Visit>
    void forEachSetting(NodePart node, const Visit& visit) {
        visitSettings(node->parameters(), visit);
    }

    template <class Visit>
    void forEachRawSlot(NodePart node, const Visit& visit) {
        if (node->raw_slots() == nullptr) return;
        for (const RawPart raw : *node->raw_slots()) visit(raw, file_.text(raw->name()));
    }

    template <class Visit>
    void forEachChild(NodePart node, const Visit& visit) {
        if (node->children() == nullptr) return;
        for (const NodePart child : *node->children())
            visit({child, file_.text(child->slot()), file_.text(child->type()), nameOf(child)});
    }

    template <class Visit>
    void forEachItem(NodePart node, const Visit& visit) {
        if (node->items() == nullptr) return;
        for (const NodePart item : *node->items()) visit({item, {}, file_.text(item->type()), nameOf(item)});
    }

    Value settingValue(SettingPart part, const ParameterSpec& spec, const std::string& what) {
        const fb::TableData* const table = part->value() == nullptr ? nullptr : part->value()->table();
        if (spec.type == NEMRA_PARAMETER_TABLE && table != nullptr) return {readTable(file_, *table, spec, what)};
        return readValue(file_, part->value());
    }

    Value rawValue(RawPart part, const RawSlotSpec&, const std::string&) { return readValue(file_, part->value()); }

private:
    std::optional<std::string_view> nameOf(NodePart node) {
        if (node->name() == nullptr) return std::nullopt;
        return file_.text(node->name());
    }

    template <class Visit>
    void visitSettings(const flatbuffers::Vector<flatbuffers::Offset<fb::Parameter>>* settings, const Visit& visit) {
        if (settings == nullptr) return;
        for (const SettingPart setting : *settings) {
            visit(setting, file_.text(setting->name()));
            visitSettings(setting->inner(), visit);
        }
    }

    FileView& file_;
};

}  // namespace

std::shared_ptr<Node> readNode(FileView& file, const fb::Node& node, std::string_view family) {
    NodeTables tables(file);
    if (family.empty()) family = file.text(node.family());
    return readNodeOf(tables, &node, family, file.text(node.type()), file.copy(node.name()));
}

}  // namespace nemra::node::svbin
