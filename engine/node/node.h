/// A node of a scene as the engine keeps it, and how the renderer reads it.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/node/node_class.h"
#include "engine/node/value.h"

namespace nemra::node {

/// Copy-on-write over the defaults of its class: an untouched node stores its class, its name and nothing else. Default children
/// are made when they are first asked for. Not thread-safe for writing.
class NEMRA_API Node {
public:
    Node(const NodeClass& nodeClass, std::string name);

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
    /// The active parameter of that raw name, or one with a null spec.
    Setting findParameter(std::string_view name) const;

    /// A child slot for writing: the default child is made if it wasn't yet. Null for an unknown slot.
    std::shared_ptr<Node> mutableChild(std::string_view slot);
    /// Fixed children in slot order, made if they weren't yet.
    std::vector<std::shared_ptr<Node>> mutableChildren();
    /// True if the slot still holds an untouched default child.
    bool isDefaultChild(std::string_view slot) const;
    const std::vector<std::shared_ptr<Node>>& mutableList() const noexcept;
    /// Into the slot of its name (same family), or into the list (family = listClass), where one of the same name is replaced.
    /// Refused with `why` if neither fits or a cycle would arise.
    bool setChild(std::shared_ptr<Node> child, std::string& why);

    /// Raw slots by name; null for an unknown or empty slot.
    const Value* rawSlot(std::string_view name) const;
    bool setRawSlot(std::string_view name, Value value, std::string& why);

    std::shared_ptr<Node> clone() const;  ///< shares its children
    std::shared_ptr<Node> copy() const;   ///< deep

private:
    const NodeClass* class_;
    std::string name_;
};

}  // namespace nemra::node
