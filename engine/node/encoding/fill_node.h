/// From what a file says of a node to the node, with the rules that all encodings share.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/node/encoding/report.h"
#include "engine/node/node.h"

namespace nemra::node {

/// What a file says of a child or of an item of a list.
template <class NodePart>
struct GivenChild {
    NodePart part;
    std::string_view slot;                 ///< of a child
    std::optional<std::string_view> type;  ///< a child without it has its slot's default type
    std::optional<std::string_view> name;  ///< a child without it has its slot's name
};

/// True if some parameter of that name exists, active or not.
bool describes(const std::vector<ParameterSpec>& parameters, std::string_view name);

/// Fills one node. `File` reads one encoding; it has the types NodePart, SettingPart and RawPart, cheap to copy, and
///   Report& report()
///   std::size_t offsetOf(part)
///   std::string_view comments(NodePart)
///   void forEachSetting(NodePart, f(SettingPart, name))   parameters with those nested in them, outermost first
///   Value settingValue(SettingPart, const ParameterSpec&, what)
///   void forEachRawSlot(NodePart, f(RawPart, name))
///   Value rawValue(RawPart, const RawSlotSpec&, what)
///   void forEachChild(NodePart, f(GivenChild<NodePart>)), void forEachItem(NodePart, f(GivenChild<NodePart>))
/// all of which throw a Fault for what is broken. Views stay good while the file does.
template <class File>
class NodeFiller {
public:
    NodeFiller(File& file, Node& node) : file_(file), node_(node) {}

    void fill(typename File::NodePart part) {
        node_.setComments(std::string(file_.comments(part)));
        file_.forEachSetting(part, [&](auto setting, std::string_view name) { settings_.push_back({setting, name}); });
        applySettings();
        file_.forEachRawSlot(part, [&](auto raw, std::string_view name) { setRawSlot(raw, name); });
        file_.forEachChild(part, [&](const Given& given) { readChild(given); });
        file_.forEachItem(part, [&](const Given& given) { readItem(given); });
    }

private:
    using Given = GivenChild<typename File::NodePart>;
    struct Setting {
        typename File::SettingPart part;
        std::string_view name;
        bool done = false;
    };

    std::string said(const std::string& text) const { return node_.label() + ": " + text; }
    template <class Part>
    [[noreturn]] void fail(const Part& part, const std::string& text) const {
        throw Fault{file_.offsetOf(part), said(text)};
    }
    template <class Part>
    void unknown(const Part& part, const std::string& text) {
        file_.report().unknown(file_.offsetOf(part), said(text));
    }
    static std::string quoted(std::string_view name) { return std::string("'").append(name.substr(0, 200)).append("'"); }

    /// Choices come first, since they bring the parameters that others set, until none of them finds its place any more.
    void applySettings() {
        for (bool progress = true; progress;) {
            progress = false;
            for (Setting& setting : settings_) progress |= apply(setting, true);
        }
        for (Setting& setting : settings_) apply(setting, false);
        for (const Setting& setting : settings_) {
            if (setting.done) continue;
            if (!describes(node_.nodeClass().parameters, setting.name)) {
                unknown(setting.part, "unknown parameter " + quoted(setting.name));
            } else {
                file_.report().warn(file_.offsetOf(setting.part),
                                    said("parameter " + quoted(setting.name) + " has no effect under the choices made, skipped"));
            }
        }
    }

    bool apply(Setting& setting, bool choicesOnly) {
        if (setting.done) return false;
        const ParameterSpec* const spec = node_.findParameter(setting.name).spec;
        if (spec == nullptr || (choicesOnly && spec->type != NEMRA_PARAMETER_CHOICE)) return false;
        setting.done = true;
        Value value = file_.settingValue(setting.part, *spec, said("parameter '" + spec->name + "'"));
        std::string why;
        if (!node_.set(spec->name, std::move(value), why)) fail(setting.part, why);
        return true;
    }

    void setRawSlot(typename File::RawPart part, std::string_view name) {
        const auto& slots = node_.nodeClass().rawSlots;
        const auto slot = std::find_if(slots.begin(), slots.end(), [&](const RawSlotSpec& s) { return s.name == name; });
        if (slot == slots.end()) return unknown(part, "unknown raw slot " + quoted(name));
        std::string why;
        if (!node_.setRawSlot(name, file_.rawValue(part, *slot, said("raw slot '" + slot->name + "'")), why)) fail(part, why);
    }

    void readChild(const Given& given) {
        const auto& slots = node_.nodeClass().children;
        const auto slot = std::find_if(slots.begin(), slots.end(), [&](const ChildSpec& c) { return c.name == given.slot; });
        if (slot == slots.end()) return unknown(given.part, "no child slot " + quoted(given.slot));
        const std::string_view type = given.type.value_or(slot->defaultType);
        if (type == slot->defaultType && node_.isDefaultChild(slot->name)) {
            // The slot's own default may differ from its class's.
            NodeFiller(file_, *node_.mutableChild(slot->name)).fill(given.part);
        } else {
            auto child = makeNode(given.part, slot->family, type, slot->name);
            if (!child) return;
            std::string why;
            if (!node_.setChild(std::move(child), why)) fail(given.part, why);
        }
        // Last, since the name is what leads a child into its slot.
        if (given.name) node_.mutableChild(slot->name)->setName(std::string(*given.name));
    }

    void readItem(const Given& given) {
        const std::string& family = node_.nodeClass().listClass;
        if (family.empty()) return unknown(given.part, "nodes of this class have no list of items");
        auto item = makeNode(given.part, family, given.type.value_or(""), std::string(given.name.value_or("")));
        std::string why;
        if (item && !node_.addItem(std::move(item), why)) fail(given.part, why);
    }

    /// Null for an unknown class that was skipped.
    std::shared_ptr<Node> makeNode(typename File::NodePart part, const std::string& family, std::string_view type,
                                   std::string name) {
        const NodeClass* const nodeClass = findClass(family, type);
        if (nodeClass == nullptr) {
            unknown(part, "unknown class " + quoted(family + "/" + std::string(type)));
            return nullptr;
        }
        auto node = std::make_shared<Node>(*nodeClass, std::move(name));
        NodeFiller(file_, *node).fill(part);
        return node;
    }

    File& file_;
    Node& node_;
    std::vector<Setting> settings_;
};

/// A node that no other holds: of the scene, of a geometry or an instance. Null for an unknown class that was skipped.
template <class File>
std::shared_ptr<Node> readNodeOf(File& file, typename File::NodePart part, std::string_view family, std::string_view type,
                                 std::string_view name) {
    const NodeClass* const nodeClass = findClass(family, type);
    if (nodeClass == nullptr) {
        std::string text = "unknown class '";
        text.append(family.substr(0, 100)).append("/").append(type.substr(0, 100)).append("'");
        file.report().unknown(file.offsetOf(part), std::move(text));
        return nullptr;
    }
    auto node = std::make_shared<Node>(*nodeClass, std::string(name));
    NodeFiller<File>(file, *node).fill(part);
    return node;
}

}  // namespace nemra::node
