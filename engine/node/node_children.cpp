// The children of a node, cloning and copying.
#include <algorithm>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

#include "engine/node/node.h"

namespace nemra::node {

std::size_t Node::slotIndex(std::string_view slot) const noexcept {
    std::size_t i = 0;
    while (i < class_->children.size() && class_->children[i].name != slot) ++i;
    return i;
}

Node::Children& Node::writableChildren() const {
    if (!children_) {
        auto children = std::make_unique<Children>();
        children->slots.resize(class_->children.size());
        children_ = std::move(children);
    }
    return *children_;
}

const std::shared_ptr<Node>& Node::materialise(std::size_t slot) const {
    Slot& place = writableChildren().slots[slot];
    if (!place.node) place.node = class_->defaultChildren.at(slot)->duplicate();
    return place.node;
}

std::shared_ptr<const Node> Node::child(std::string_view slot) const {
    const std::size_t index = slotIndex(slot);
    if (index == class_->children.size()) throw std::logic_error(label() + " has no child '" + std::string(slot) + "'");
    if (children_ && children_->slots[index].node) return children_->slots[index].node;
    return class_->defaultChildren.at(index);
}

std::vector<std::shared_ptr<const Node>> Node::list() const {
    const auto& nodes = mutableList();
    return {nodes.begin(), nodes.end()};
}

const std::vector<std::shared_ptr<Node>>& Node::mutableList() const noexcept {
    static const auto* const none = new std::vector<std::shared_ptr<Node>>;
    return children_ ? children_->list : *none;
}

std::shared_ptr<Node> Node::mutableChild(std::string_view slot) {
    const std::size_t index = slotIndex(slot);
    return index < class_->children.size() ? materialise(index) : nullptr;
}

std::vector<std::shared_ptr<Node>> Node::mutableChildren() {
    std::vector<std::shared_ptr<Node>> result;
    for (std::size_t i = 0; i < class_->children.size(); ++i) result.push_back(materialise(i));
    return result;
}

std::shared_ptr<Node> Node::findChild(std::string_view name) {
    if (auto child = mutableChild(name)) return child;
    if (!children_) return nullptr;
    for (const Slot& slot : children_->slots) {
        if (slot.node && slot.node->name() == name) return slot.node;
    }
    return nullptr;
}

std::shared_ptr<Node> Node::findListChild(std::string_view name) const {
    for (const auto& node : mutableList()) {
        if (node->name() == name) return node;
    }
    return nullptr;
}

bool Node::isDefaultChild(std::string_view slot) const {
    const std::size_t index = slotIndex(slot);
    if (index == class_->children.size()) return false;
    if (!children_ || !children_->slots[index].node) return true;
    return children_->slots[index].isDefault && children_->slots[index].node->isUntouched();
}

bool Node::isUntouched() const noexcept {
    if (touched_) return false;
    if (!children_) return true;
    return children_->list.empty() && std::all_of(children_->slots.begin(), children_->slots.end(), [](const Slot& slot) {
               return slot.isDefault && (!slot.node || slot.node->isUntouched());
           });
}

bool Node::reaches(const Node& other) const {
    std::unordered_set<const Node*> seen;
    std::vector<const Node*> open{this};
    while (!open.empty()) {
        const Node* const node = open.back();
        open.pop_back();
        if (node == &other) return true;
        if (!seen.insert(node).second || !node->children_) continue;
        for (const Slot& slot : node->children_->slots) {
            if (slot.node) open.push_back(slot.node.get());
        }
        for (const auto& child : node->children_->list) open.push_back(child.get());
    }
    return false;
}

bool Node::setChild(std::shared_ptr<Node> child, std::string& why) {
    if (!child) {
        why = "there is no child to set";
        return false;
    }
    std::size_t slot = slotIndex(child->name());
    if (slot == class_->children.size() && children_) {  // a slot whose child was renamed in its place
        for (slot = 0; slot < class_->children.size(); ++slot) {
            const auto& present = children_->slots[slot].node;
            if (present && present->name() == child->name() && present->family() == child->family()) break;
        }
    }
    const bool intoSlot = slot < class_->children.size() && class_->children[slot].family == child->family();
    const bool intoList = !intoSlot && !class_->listClass.empty() && class_->listClass == child->family();
    if (!intoSlot && !intoList) {
        if (slot < class_->children.size()) {
            why = "child '" + child->name() + "' must be of the family " + class_->children[slot].family + ", not " +
                  child->family();
        } else if (!class_->listClass.empty()) {
            why = "takes children of the family " + class_->listClass + ", not " + child->label();
        } else {
            why = "there is no child named '" + child->name() + "'";
        }
        return false;
    }
    if (child->reaches(*this)) {
        why = child->label() + " contains this node and can't become its child";
        return false;
    }
    touched_ = true;
    Children& children = writableChildren();
    std::shared_ptr<Node> replaced;  // dies after the tree is consistent again
    if (intoSlot) {
        replaced = std::exchange(children.slots[slot].node, std::move(child));
        children.slots[slot].isDefault = false;
        return true;
    }
    for (auto& present : children.list) {
        if (present == child) return true;
    }
    for (auto& present : children.list) {
        if (present->name() == child->name()) {
            replaced = std::exchange(present, std::move(child));
            return true;
        }
    }
    children.list.push_back(std::move(child));
    return true;
}

bool Node::addItem(std::shared_ptr<Node> item, std::string& why) {
    if (!item || class_->listClass.empty() || item->family() != class_->listClass) {
        why = "has no list that takes " + (item ? item->label() : "nothing");
        return false;
    }
    if (item->reaches(*this)) {
        why = item->label() + " contains this node and can't become its child";
        return false;
    }
    touched_ = true;
    writableChildren().list.push_back(std::move(item));
    return true;
}

std::shared_ptr<Node> Node::duplicate() const {
    auto twin = std::make_shared<Node>(*class_, name_);
    twin->overrides_ = overrides_;
    if (extra_) twin->extra_ = std::make_unique<Extra>(*extra_);
    twin->touched_ = touched_;
    return twin;
}

std::shared_ptr<Node> Node::clone() const {
    for (std::size_t i = 0; i < class_->children.size(); ++i) materialise(i);  // what isn't there can't be shared
    std::shared_ptr<Node> twin = duplicate();
    if (children_) {
        twin->children_ = std::make_unique<Children>(*children_);
    }
    return twin;
}

struct Node::Copier {
    std::unordered_map<const Node*, std::shared_ptr<Node>> done;

    std::shared_ptr<Node> copy(const Node& source, int depth) {
        if (depth > kMaximumDepth) {
            throw std::length_error(source.label() + ": nodes are nested more than " + std::to_string(kMaximumDepth) + " deep");
        }
        if (const auto known = done.find(&source); known != done.end()) return known->second;
        std::shared_ptr<Node> twin = source.duplicate();
        if (source.children_) {
            auto children = std::make_unique<Children>(*source.children_);
            for (Slot& slot : children->slots) {
                if (slot.node) slot.node = copy(*slot.node, depth + 1);
            }
            for (auto& child : children->list) child = copy(*child, depth + 1);
            twin->children_ = std::move(children);
        }
        done.emplace(&source, twin);
        return twin;
    }
};

std::shared_ptr<Node> Node::copy() const { return Copier{}.copy(*this, 0); }

bool Node::sameAs(const Node& other) const {
    std::unordered_map<const Node*, const Node*> compared;  // what is shared is compared once
    std::vector<std::pair<const Node*, const Node*>> open{{this, &other}};
    while (!open.empty()) {
        const auto [a, b] = open.back();
        open.pop_back();
        if (a == b || (compared.contains(a) && compared[a] == b)) continue;
        compared[a] = b;
        if (a->class_ != b->class_ || a->name_ != b->name_ || a->comments() != b->comments()) return false;
        const auto isSame = [](const Override& x, const Override& y) { return x.spec == y.spec && x.value == y.value; };
        if (!std::equal(a->overrides_.begin(), a->overrides_.end(), b->overrides_.begin(), b->overrides_.end(), isSame))
            return false;
        for (const RawSlotSpec& slot : a->class_->rawSlots) {
            const Value* const x = a->rawSlot(slot.name);
            const Value* const y = b->rawSlot(slot.name);
            if ((x == nullptr) != (y == nullptr) || (x && !(*x == *y))) return false;
        }
        const auto& left = a->mutableList();
        const auto& right = b->mutableList();
        if (left.size() != right.size()) return false;
        for (std::size_t i = 0; i < left.size(); ++i) open.emplace_back(left[i].get(), right[i].get());
        if (!a->children_ && !b->children_) continue;
        for (std::size_t i = 0; i < a->class_->children.size(); ++i) {
            const auto at = [&](const Node& node) {
                const bool isMade = node.children_ && node.children_->slots[i].node;
                return isMade ? node.children_->slots[i].node.get() : node.class_->defaultChildren[i].get();
            };
            open.emplace_back(at(*a), at(*b));
        }
    }
    return true;
}

}  // namespace nemra::node
