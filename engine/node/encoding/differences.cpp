#include "engine/node/encoding/differences.h"

#include <algorithm>
#include <stdexcept>

namespace nemra::node {

namespace {

/// Compares a node with `base`, the node that a reader starts from.
class Walk {
public:
    Walk(const Node& node, const Node& base, int depth) : node_(node), base_(base), depth_(depth) {}

    void run(DifferenceSink& sink) const {
        if (depth_ > kMaximumDepth) throw std::length_error("nodes nest too deep to be written");
        if (!node_.comments().empty()) sink.comments(node_.comments());
        const auto settings = node_.activeParameters();
        std::size_t next = 0;
        giveLevel(sink, settings, next, 0);
        for (const RawSlotSpec& slot : node_.nodeClass().rawSlots)
            if (const Value* const value = node_.rawSlot(slot.name)) sink.rawSlot(slot, *value);
        for (const ChildSpec& slot : node_.nodeClass().children) giveChild(sink, slot);
        for (const auto& item : node_.mutableList()) {
            sink.beginItem(*item);
            Walk(*item, Node(item->nodeClass(), item->name()), depth_ + 1).run(sink);
            sink.endNode();
        }
    }

private:
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

    bool differsFromBase(const Node::Setting& setting) const {
        const Node::Setting start = base_.findParameter(setting.spec->name);
        // What a choice brings starts from its description, once the choice is made.
        const Value& startValue = start.spec == setting.spec ? *start.value : setting.spec->defaultValue;
        return *setting.value != startValue;
    }

    /// Parameters that a choice brings come inside it.
    void giveLevel(DifferenceSink& sink, const std::vector<Node::Setting>& settings, std::size_t& next, int depth) const {
        while (next < settings.size() && settings[next].depth >= depth) {
            const Node::Setting& setting = settings[next++];
            std::size_t end = next;
            while (end < settings.size() && settings[end].depth > setting.depth) ++end;
            const bool inner = std::any_of(settings.begin() + static_cast<std::ptrdiff_t>(next),
                                           settings.begin() + static_cast<std::ptrdiff_t>(end),
                                           [&](const auto& nested) { return differsFromBase(nested); });
            if (setting.spec->type != NEMRA_PARAMETER_INFO && (inner || differsFromBase(setting))) {
                sink.beginParameter(*setting.spec, *setting.value);
                giveLevel(sink, settings, next, setting.depth + 1);
                sink.endParameter();
            }
            next = end;
        }
    }

    bool childDiffers(const ChildSpec& slot) const {
        const auto child = node_.child(slot.name);
        const auto base = base_.child(slot.name);
        if (child == base) return false;
        if (&base->nodeClass() != &child->nodeClass()) return true;
        return Walk(*child, *base, depth_ + 1).differs();
    }

    void giveChild(DifferenceSink& sink, const ChildSpec& slot) const {
        if (!childDiffers(slot)) return;
        const auto child = node_.child(slot.name);
        const auto base = base_.child(slot.name);
        sink.beginChild(slot, *child);
        if (&base->nodeClass() == &child->nodeClass()) {
            Walk(*child, *base, depth_ + 1).run(sink);
        } else {
            Walk(*child, Node(child->nodeClass(), child->name()), depth_ + 1).run(sink);
        }
        sink.endNode();
    }

    const Node& node_;
    const Node& base_;
    int depth_;
};

}  // namespace

void walkDifferences(const Node& node, DifferenceSink& sink) { Walk(node, Node(node.nodeClass(), node.name()), 0).run(sink); }

}  // namespace nemra::node
