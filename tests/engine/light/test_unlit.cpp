// Nodes of classes that nothing is known of in the render: the user is told once, by name, and the render goes on.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "engine/core/translate/class_table.h"
#include "tests/engine/light/render_scene.h"

namespace nemra::lighttest {
namespace {

/// A class of that family that no table knows, whatever light parts there will be.
const node::NodeClass& unheardOf(const std::string& family) {
    static auto* const made = new std::map<std::string, node::NodeClass>;  // classes live for ever
    node::NodeClass& known = (*made)[family];
    if (known.type.empty()) known = {.family = family, .type = "unheard_of", .summary = "Made up"};
    return known;
}

NodeHandle stranger(const std::string& family) { return std::make_shared<Node>(unheardOf(family), "stranger"); }

/// Outputs and filters tell when they are run.
bool isTranslated(const std::string& family) { return family != "output" && family != "filter"; }

/// The classes that a translation knows.
std::vector<const node::NodeClass*> litClasses() {
    node::registerClasses();
    std::vector<const node::NodeClass*> lit;
    for (const node::NodeClass* const nodeClass : node::allClasses()) {
        const bool isLit = core::hasLightPart(nodeClass->family, nodeClass->type) && nodeClass->type != "linked";
        if (isLit && isTranslated(nodeClass->family)) lit.push_back(nodeClass);
    }
    return lit;
}

void addToList(Node& parent, const NodeHandle& child) {
    std::string why;
    if (!parent.setChild(child, why)) throw std::runtime_error(why);
}

/// Puts a node into the scene where the translation comes by: as setup, as a surface's material, or below one of the classes
/// that it knows. False if none of these leads to the node's family.
bool place(SceneMaker& maker, const NodeHandle& node) {
    if (node->family() == "setup") {
        maker.setup = node;
        return true;
    }
    if (node->family() == "material") {
        maker.add(polygon({{0, 0, 1}, {1, 0, 1}, {0, 1, 1}}), node);
        return true;
    }
    for (const node::NodeClass* const parent : litClasses()) {
        if (parent->family == node->family()) continue;
        for (const node::ChildSpec& slot : parent->children) {
            if (slot.family != node->family()) continue;
            const NodeHandle holder = make(parent->family.c_str(), parent->type.c_str());
            if (place(maker, with(holder, slot.name.c_str(), node))) return true;
        }
    }
    return false;
}

/// What the user hears while the scene is prepared: warnings, and the fault if it is refused.
std::vector<std::string> messagesOf(SceneMaker& maker) {
    Messages messages;
    try {
        prepare(maker.finish());
    } catch (const core::SceneFault& fault) {
        messages.all.push_back(fault.source() + ": " + fault.what());
    }
    return messages.all;
}

/// How many messages come from that node: by its label, or by its path with its class behind.
std::ptrdiff_t about(const std::vector<std::string>& messages, const Node& node) {
    const std::string asClass = " (" + node.family() + '/' + node.type() + "): ";
    const auto isFrom = [&](const std::string& text, const std::string& path) {
        return text.find('/' + path + asClass) != std::string::npos;
    };
    return std::count_if(messages.begin(), messages.end(), [&](const std::string& text) {
        return text.starts_with(node.label() + ": ") || isFrom(text, node.name()) || isFrom(text, "material");
    });
}

std::string joined(const std::vector<std::string>& messages) {
    std::string all;
    for (const std::string& message : messages) all += message + '\n';
    return all;
}

TEST(Unlit, ANodeInAnySlotOfAKnownClassIsNamedOnce) {
    std::set<std::string> families;
    for (const node::NodeClass* const owner : litClasses()) {
        std::vector<std::pair<std::string, std::string>> places;  // slot, "" for the list; family
        for (const node::ChildSpec& slot : owner->children) places.emplace_back(slot.name, slot.family);
        if (!owner->listClass.empty() && isTranslated(owner->listClass)) places.emplace_back("", owner->listClass);
        for (const auto& [slot, family] : places) {
            SCOPED_TRACE(owner->family + '/' + owner->type + ' ' + slot);
            const NodeHandle odd = stranger(family);
            const NodeHandle node = make(owner->family.c_str(), owner->type.c_str());
            slot.empty() ? addToList(*node, odd) : void(with(node, slot.c_str(), odd));
            SceneMaker maker;
            if (!place(maker, node)) continue;
            const auto messages = messagesOf(maker);
            EXPECT_EQ(about(messages, *odd), 1) << joined(messages);
            const auto isComplaint = [](const std::string& text) { return text.find("simulated yet") != std::string::npos; };
            EXPECT_EQ(std::count_if(messages.begin(), messages.end(), isComplaint), 1) << joined(messages);
            families.insert(family);
        }
    }
    for (const char* family : {"bsdf", "emitter", "environment", "instrument", "layer", "medium", "sensor", "spectrum"}) {
        EXPECT_TRUE(families.contains(family)) << family;
    }
}

TEST(Unlit, AMaterialIsNamedOnceForAllItsSurfacesAndASetupIsRefused) {
    node::registerClasses();
    SceneMaker maker;
    const NodeHandle odd = stranger("material");
    place(maker, odd);
    place(maker, odd);
    EXPECT_EQ(about(messagesOf(maker), *odd), 1);
    SceneMaker other;
    other.setup = stranger("setup");
    EXPECT_EQ(messagesOf(other),
              std::vector<std::string>{"setup/unheard_of stranger: setups of this class aren't simulated yet"});
}

TEST(Unlit, NothingIsSaidOfDefaultsNorOfWhatLiesBelowAnUnknownNode) {
    SceneMaker plain;
    place(plain, make("material", "generic"));
    EXPECT_EQ(joined(messagesOf(plain)).find("simulated"), std::string::npos) << joined(messagesOf(plain));

    SceneMaker maker;
    node::NodeClass holder = unheardOf("bsdf");
    holder.listClass = "bsdf";
    const NodeHandle outer = std::make_shared<Node>(holder, "outer");
    const NodeHandle inner = stranger("bsdf");
    addToList(*outer, inner);
    place(maker, with(make("material", "generic"), "bsdf", outer));
    const auto messages = messagesOf(maker);
    EXPECT_EQ(about(messages, *outer), 1) << joined(messages);
    EXPECT_EQ(about(messages, *inner), 0) << joined(messages);
    maker = SceneMaker();  // the node goes before its class
}

TEST(Unlit, LinksAreFollowedToTheNodeThatIsNamed) {
    SceneMaker maker;
    const NodeHandle odd = stranger("environment");
    maker.scene.nodes = {maker.setup, odd};
    with(maker.setup, "environment", make("environment", "linked", {{"node", text("stranger")}}));
    EXPECT_EQ(about(messagesOf(maker), *odd), 1);
}

// A result outlives its scene, so its outputs must not need the scene any more.
TEST(Unlit, OutputsOfAResultHoldNoLinksThatLeadSomewhere) {
    SceneMaker maker;
    const NodeHandle shared = make("output", "rgbimage", {{"color_space", text("rec2020")}}, "shared");
    addToList(*shared, make("filter", "linked", {{"node", text("bright")}}, "first"));
    maker.scene.nodes = {maker.setup, shared, make("filter", "gain", {{"gain", number(7.0)}}, "bright")};
    const NodeHandle instrument = make("instrument", "stdcam");
    addToList(*instrument, make("output", "linked", {{"node", text("shared")}}, "picture"));
    const NodeHandle lost = make("output", "linked", {{"node", text("nowhere")}}, "lost");
    addToList(*instrument, lost);
    with(maker.setup, "instrument", instrument);
    Messages messages;
    const auto outputs = prepare(maker.finish())->instrument()->list();
    ASSERT_EQ(outputs.size(), 2U);
    EXPECT_EQ(outputs[0]->label(), "output/rgbimage picture");
    EXPECT_EQ(outputs[0]->choice("color_space"), "rec2020");
    ASSERT_EQ(outputs[0]->list().size(), 1U);
    EXPECT_EQ(outputs[0]->list()[0]->label(), "filter/gain first");
    EXPECT_EQ(outputs[0]->list()[0]->real("gain"), 7.0);
    EXPECT_EQ(about(messages.all, *lost), 1) << joined(messages.all);
    EXPECT_EQ(shared->name(), "shared") << "the scene's own node stays what it is";
}

}  // namespace
}  // namespace nemra::lighttest
