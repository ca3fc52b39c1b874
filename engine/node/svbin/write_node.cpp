#include <stdexcept>
#include <utility>

#include "engine/node/encoding/differences.h"
#include "engine/node/encoding/limits.h"
#include "engine/node/svbin/write_parts.h"

namespace nemra::node::svbin {

namespace {

/// Collects the pieces of a node while its differences come in, and makes its table when the last of them is there.
class NodeWriter final : public DifferenceSink {
public:
    explicit NodeWriter(FileBuilder& file) : file_(file) {}

    Offset<fb::Node> write(const Node& node, std::string_view family) {
        Frame& frame = open(node);
        frame.family = family.empty() ? Text() : file_.word(family);
        frame.name = file_.textOrNone(node.name());
        walkDifferences(node, *this);
        return close();
    }

    void comments(const std::string& text) override { nodes_.back().comments = file_.text(text); }

    void beginParameter(const ParameterSpec& spec, const Value& value) override {
        checkDepth();
        const Text name = file_.word(spec.name);
        parameters_.push_back({name, writeValue(file_, value), {}});
    }

    void endParameter() override {
        const OpenParameter done = std::move(parameters_.back());
        parameters_.pop_back();
        auto& siblings = parameters_.empty() ? nodes_.back().parameters : parameters_.back().inner;
        const auto inner = file_.list(done.inner);
        siblings.push_back(fb::CreateParameter(file_.tables(), done.name, done.value, inner));
    }

    void rawSlot(const RawSlotSpec& slot, const Value& value) override {
        const Text name = file_.word(slot.name);
        const auto contents = writeValue(file_, value);
        nodes_.back().rawSlots.push_back(fb::CreateRawSlot(file_.tables(), name, contents));
    }

    void beginChild(const ChildSpec& slot, const Node& child) override {
        Frame& frame = open(child);
        frame.slot = file_.word(slot.name);
        if (child.name() != slot.name) frame.name = file_.text(child.name());
    }

    void beginItem(const Node& item) override { open(item).name = file_.textOrNone(item.name()); }

    void endNode() override {
        const bool isChild = !nodes_.back().slot.IsNull();
        const auto node = close();
        (isChild ? nodes_.back().children : nodes_.back().items).push_back(node);
    }

private:
    struct Frame {
        Text family, type, name, slot, comments;
        std::vector<Offset<fb::Parameter>> parameters;
        std::vector<Offset<fb::RawSlot>> rawSlots;
        std::vector<Offset<fb::Node>> children, items;
    };
    struct OpenParameter {
        Text name;
        Offset<fb::Value> value;
        std::vector<Offset<fb::Parameter>> inner;
    };

    void checkDepth() const {
        if (nodes_.size() + parameters_.size() >= kMaxFileDepth) throw std::length_error("nodes nest too deep to be written");
    }

    Frame& open(const Node& node) {
        checkDepth();
        const Text type = file_.word(node.type());
        Frame& frame = nodes_.emplace_back();
        frame.type = type;
        return frame;
    }

    Offset<fb::Node> close() {
        const Frame frame = std::move(nodes_.back());
        nodes_.pop_back();
        const auto parameters = file_.list(frame.parameters);
        const auto rawSlots = file_.list(frame.rawSlots);
        const auto children = file_.list(frame.children);
        const auto items = file_.list(frame.items);
        return fb::CreateNode(file_.tables(), frame.family, frame.type, frame.name, frame.slot, frame.comments, parameters,
                              rawSlots, children, items);
    }

    FileBuilder& file_;
    std::vector<Frame> nodes_;
    std::vector<OpenParameter> parameters_;  // of the innermost node
};

}  // namespace

Offset<fb::Node> writeNode(FileBuilder& file, const Node& node, std::string_view family) {
    return NodeWriter(file).write(node, family);
}

}  // namespace nemra::node::svbin
