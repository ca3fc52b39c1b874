#include <atomic>
#include <deque>
#include <map>
#include <mutex>
#include <stdexcept>

#include "engine/node/catalogue/families.h"
#include "engine/node/node.h"

namespace nemra::node {

namespace {

using Key = std::pair<std::string_view, std::string_view>;

class Registry final : public Catalogue {
public:
    Registry() {
        addAvspectrumClasses(*this);
        addBsdfClasses(*this);
        addColloidClasses(*this);
        addDielectricfuncClasses(*this);
        addEmitterClasses(*this);
        addEnvironmentClasses(*this);
        addFilterClasses(*this);
        addFiltershaderClasses(*this);
        addImageClasses(*this);
        addInstrumentClasses(*this);
        addIntlawClasses(*this);
        addLayerClasses(*this);
        addMaterialClasses(*this);
        addMediumClasses(*this);
        addNormalshaderClasses(*this);
        addOutputClasses(*this);
        addRoughnessClasses(*this);
        addRtfClasses(*this);
        addScalarshaderClasses(*this);
        addScatteringClasses(*this);
        addSensorClasses(*this);
        addSetupClasses(*this);
        addSpectrumClasses(*this);
        addTextClasses(*this);
    }

    void add(NodeClass nodeClass) override {
        if (nodeClass.summary.empty()) throw std::logic_error(nodeClass.family + '/' + nodeClass.type + " has no documentation");
        NodeClass& kept = classes_.emplace_back(std::move(nodeClass));
        if (!byName_.emplace(Key{kept.family, kept.type}, &kept).second) {
            throw std::logic_error(kept.family + '/' + kept.type + " is there twice");
        }
        order_.push_back(&kept);
    }

    const NodeClass* find(std::string_view family, std::string_view type) const noexcept {
        const auto found = byName_.find(Key{family, type});
        return found == byName_.end() ? nullptr : found->second;
    }

    std::span<const NodeClass* const> all() const noexcept { return order_; }
    std::deque<NodeClass>& classes() noexcept { return classes_; }

private:
    std::deque<NodeClass> classes_;  // addresses stay
    std::map<Key, const NodeClass*> byName_;
    std::vector<const NodeClass*> order_;
};

std::atomic<const Registry*> registry{nullptr};

}  // namespace

void registerClasses() {
    static auto* const mutex = new std::mutex;
    const std::lock_guard lock(*mutex);
    if (registry.load()) return;
    auto* const built = new Registry;  // for the whole process
    registry.store(built);
    try {
        for (NodeClass& nodeClass : built->classes()) completeClass(nodeClass);
    } catch (...) {
        registry.store(nullptr);
        throw;
    }
}

const NodeClass* findClass(std::string_view family, std::string_view type) noexcept {
    const Registry* const built = registry.load(std::memory_order_acquire);
    return built ? built->find(family, type) : nullptr;
}

std::span<const NodeClass* const> allClasses() noexcept {
    const Registry* const built = registry.load(std::memory_order_acquire);
    return built ? built->all() : std::span<const NodeClass* const>();
}

void completeClass(NodeClass& nodeClass) {
    const std::string label = nodeClass.family + '/' + nodeClass.type;
    nodeClass.defaultChildren.clear();
    for (const ChildSpec& child : nodeClass.children) {
        const NodeClass* const childClass = findClass(child.family, child.defaultType);
        if (!childClass) throw std::logic_error(label + ": child '" + child.name + "' has an unknown class");
        if (child.doc.empty()) throw std::logic_error(label + ": child '" + child.name + "' has no documentation");
        auto node = std::make_shared<Node>(*childClass, child.name);
        std::string why;
        for (const auto& [name, value] : child.defaults) {
            if (!node->set(name, value, why)) throw std::logic_error(label + ": child '" + child.name + "': " + why);
        }
        node->forgetTouches();
        nodeClass.defaultChildren.push_back(std::move(node));
    }
}

const OptionSpec* findOption(const ParameterSpec& choice, std::string_view name) noexcept {
    for (const OptionSpec& option : choice.options) {
        if (option.name == name) return &option;
    }
    return nullptr;
}

}  // namespace nemra::node
