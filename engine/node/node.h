/// A node of a scene as the engine keeps it, and how the renderer reads it.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/node/node_class.h"
#include "engine/node/value.h"

namespace nemra::node {

/// What another part keeps with a node; dies with it.
class NodeAttachment {
public:
    virtual ~NodeAttachment() = default;
};

/// Nesting of nodes that copying and reading bear.
inline constexpr int kMaximumDepth = 256;

/// Copy-on-write over the defaults of its class: an untouched node stores its class, its name and nothing else. Default children
/// are made when they are first asked for. Reading from several threads is fine while nobody writes; clone counts as writing.
class NEMRA_API Node {
public:
    /// `nodeClass` must outlive the node.
    Node(const NodeClass& nodeClass, std::string name);
    ~Node();
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    const NodeClass& nodeClass() const noexcept { return *class_; }
    const std::string& name() const noexcept { return name_; }
    const std::string& family() const noexcept { return class_->family; }
    const std::string& type() const noexcept { return class_->type; }

    // Reading parameters by raw name. The parameter must exist in the class (top-level or under the selected options) and have
    // that kind; else std::logic_error, since it is a fault of the caller, not of a scene.
    double real(std::string_view name) const;
    std::int32_t integer(std::string_view name) const;
    bool boolean(std::string_view name) const;
    const std::string& text(std::string_view name) const;    ///< text, file or link
    const std::string& choice(std::string_view name) const;  ///< name of the selected option
    std::array<double, 3> vector(std::string_view name) const;
    std::array<float, 9> matrix3(std::string_view name) const;
    Color color(std::string_view name) const;
    std::shared_ptr<const Table> table(std::string_view name) const;  ///< never null

    /// The child in that slot; never null for a slot of the class.
    std::shared_ptr<const Node> child(std::string_view slot) const;
    /// Varying children, in order.
    std::vector<std::shared_ptr<const Node>> list() const;
    /// "family/type name", as messages name a node.
    std::string label() const;

    const std::string& comments() const noexcept;
    void setName(std::string name);
    void setComments(std::string comments);

    /// Sets the parameter of that raw name wherever it is active. On refusal (no such active parameter, wrong kind, out of
    /// range) nothing changes and `why` says the reason with parameter, limit and unit. Numbers convert between kinds where
    /// nothing is lost.
    bool set(std::string_view name, Value value, std::string& why);

    /// A parameter as it stands on this node: its description, its value, and whether that is still the default.
    struct Setting {
        const ParameterSpec* spec;
        const Value* value;
        bool isDefault;
        int depth;  ///< 0 top-level, 1 brought by a selected option, and so on
    };
    /// All active parameters in the order of the class, nested ones right behind their choice.
    std::vector<Setting> activeParameters() const;
    /// The active parameter of that raw name (the first in order if there are several), or one with a null spec.
    Setting findParameter(std::string_view name) const;
    /// The active parameter of that raw name among those that the selected option of the choice `top` brings, at any depth; a
    /// null spec if there is none or `top` isn't active.
    Setting findParameterBelow(const ParameterSpec& top, std::string_view name) const;
    /// How that parameter stands on this node, active or not. It must belong to the node's class.
    Setting setting(const ParameterSpec& spec) const noexcept;

    /// A child slot for writing: the default child is made if it wasn't yet. Null for an unknown slot.
    std::shared_ptr<Node> mutableChild(std::string_view slot);
    /// Fixed children in slot order, made if they weren't yet.
    std::vector<std::shared_ptr<Node>> mutableChildren();
    /// True if the slot still holds an untouched default child.
    bool isDefaultChild(std::string_view slot) const;
    /// Makes what was set so far count as the state in which a default child comes.
    void forgetTouches() noexcept { touched_ = false; }
    /// The child in that slot, or else the fixed child of that own name, made if it wasn't yet; null without either. A child
    /// that was renamed in its place is found by both names.
    std::shared_ptr<Node> findChild(std::string_view name);
    /// The varying child of that name, or null.
    std::shared_ptr<Node> findListChild(std::string_view name) const;
    const std::vector<std::shared_ptr<Node>>& mutableList() const noexcept;
    /// Into the slot of its name, or the slot whose child has that name (same family), or into the list (family = listClass),
    /// where one of the same name is replaced. Refused with `why` if none fits or a cycle would arise.
    bool setChild(std::shared_ptr<Node> child, std::string& why);
    /// At the end of the list, whatever the names of the others are: how a list comes back that was written with equal names.
    bool addItem(std::shared_ptr<Node> item, std::string& why);

    /// Raw slots by name; null for an unknown or empty slot.
    const Value* rawSlot(std::string_view name) const;
    bool setRawSlot(std::string_view name, Value value, std::string& why);

    /// A new node that shares its children with this one.
    std::shared_ptr<Node> clone() const;
    /// A deep copy. What is shared inside the original is shared inside the copy. Throws std::length_error if the nodes are
    /// nested deeper than kMaximumDepth.
    std::shared_ptr<Node> copy() const;
    /// Whether the other is as a copy of this one: class, name, settings and all that lies below. May miss that two settings come
    /// to the same.
    bool sameAs(const Node& other) const;

    /// The node's id in the slot table of nodes; 0 if it has none. See node_handle.h.
    std::uint64_t handleId() const noexcept { return handleId_.load(std::memory_order_acquire); }
    /// Stores the id if the node has none yet, and gives the one that it has afterwards. The node retires it when it dies.
    std::uint64_t adoptHandleId(std::uint64_t id) noexcept;
    /// Whether a caller's hold ends when the node gets a parent.
    bool isPassing() const noexcept { return passing_; }
    void setPassing(bool passing) noexcept { passing_ = passing; }
    NodeAttachment* attachment() const noexcept { return attachment_.get(); }
    void attach(std::unique_ptr<NodeAttachment> attachment) { attachment_ = std::move(attachment); }

private:
    struct Override {
        const ParameterSpec* spec;
        Value value;
    };
    struct Slot {
        std::shared_ptr<Node> node;  ///< null while the slot holds the class's default child
        bool isDefault = true;       ///< was not put in by setChild
    };
    struct Children {
        std::vector<Slot> slots;  ///< one per child of the class
        std::vector<std::shared_ptr<Node>> list;
    };
    struct Extra {
        std::string comments;
        std::vector<Value> rawSlots;
    };
    struct Copier;

    const Value& valueOf(const ParameterSpec& spec) const noexcept;
    const Value& read(std::string_view name, nemra_parameter_type_t type) const;
    std::size_t slotIndex(std::string_view slot) const noexcept;  ///< count of slots if there is none of that name
    std::shared_ptr<Node> defaultChild(std::size_t slot) const;
    Children& writableChildren() const;
    Extra& writableExtra();
    const std::shared_ptr<Node>& materialise(std::size_t slot) const;
    bool isUntouched() const noexcept;
    bool reaches(const Node& other) const;
    std::shared_ptr<Node> duplicate() const;

    const NodeClass* class_;
    std::string name_;
    std::vector<Override> overrides_;
    mutable std::unique_ptr<Children> children_;
    std::unique_ptr<Extra> extra_;
    std::unique_ptr<NodeAttachment> attachment_;
    std::atomic<std::uint64_t> handleId_{0};
    bool passing_ = false;
    bool touched_ = false;  ///< changed since it was made
};

}  // namespace nemra::node
