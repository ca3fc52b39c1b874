// Every parameter of every filter and output changes something that is shown or written, with one or other of its values, on one
// or other result. Finds what the catalogue promises and nobody reads.
#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "engine/core/glare/rating.h"
#include "engine/core/output/write_result.h"
#include "tests/engine/light/render_scene.h"
#include "tests/engine/output/picture_maker.h"

namespace nemra::outputtest {
namespace {

constexpr int kWidth = 36;
constexpr int kHeight = 28;

NodeHandle picture(double level) {
    const NodeHandle image = make("image", "inline", {{"width", integer(kWidth)}, {"height", integer(kHeight)}});
    std::vector<float> pixels;
    for (int i = 0; i < 3 * kWidth * kHeight; ++i) pixels.push_back(static_cast<float>(level * (0.2 + 0.1 * (i % 7))));
    std::string why;
    if (!image->setRawSlot("pixels", {pixels}, why)) throw std::runtime_error(why);
    return image;
}

/// Coloured noise over a slope, a spot that glares, another below it, and single pixels that are far too bright.
double scene(int x, int y, int c) {
    const double noise = 1.0 + 0.4 * std::sin(12.9898 * x + 78.233 * y + 3.7 * c);
    double value = (0.02 + 0.002 * x * y) * noise * (1.0 + 0.3 * c);
    if (std::hypot(x - 12, y - 8) < 4.0) value += 40000.0;
    if (std::hypot(x - 25, y - 20) < 2.5) value += 3000.0 + 100.0 * x;
    if (x == 30 && y == 5) value += 500.0;
    return value;
}

struct View {
    std::shared_ptr<core::Film> film;
    NodeHandle camera;
};

const std::vector<View>& views() {
    static const std::vector<View> all = [] {
        const auto variance = [](int x, int y) { return 0.2 * scene(x, y, 1); };
        const auto of = [&](Channels channels, double level) {
            return film(
                kWidth, kHeight, std::move(channels), [=](int x, int y, int c) { return level * scene(x, y, c % 5); }, 4,
                variance);
        };
        const NodeHandle camera =
            make("instrument", "stdcam", {{"width", integer(kWidth)}, {"height", integer(kHeight)}, {"aperture", text("lens")}},
                 "eye");
        const NodeHandle around =
            make("instrument", "spherecam", {{"width", integer(kWidth)}, {"height", integer(kHeight)}}, "ball");
        Channels visible = bands({400, 420, 440, 460, 480, 500, 520, 540, 560, 580, 600, 620, 640, 660, 680, 700}, 20);
        std::vector<View> made{{of(xyzChannels(), 1.0), camera},
                               {of(xyzChannels(), 1.0), around},
                               {of(xyzChannels(), 1.0e-4), camera},
                               {of(visible, 1.0e-3), camera},
                               {of(visible, 1.0e-6), around}};
        // What a goniophotometer with Klems's smallest basis has found.
        made.push_back(
            {film(41, 41, visible, [](int x, int y, int c) { return 0.01 * (1 + x + 2 * y + c); }),
             make("instrument", "bsdfcapture", {{"basis", text("klems")}, {"klems_patches", text("quarter")}}, "sample")});
        return made;
    }();
    return all;
}

/// All that comes out, of each view; failures count as nothing.
std::vector<std::string> shown(const NodeHandle& node) {
    std::vector<std::string> all;
    const lighttest::Messages messages;
    for (const View& view : views()) {
        std::string bytes;
        if (node->family() == "filter") {
            Filtered filtered(view.film, view.camera);
            const auto settings = make("output", "rgbimage");
            filtered.raw->setOutput(settings);
            filtered.run(node);
            const auto& values = filtered.picture.image.values;
            bytes.assign(reinterpret_cast<const char*>(values.data()), sizeof(float) * values.size());
            for (const core::Plane& plane : filtered.picture.planes)
                bytes.append(reinterpret_cast<const char*>(plane.values.data()), sizeof(float) * plane.values.size());
        } else {
            NoScene measured;
            measured.content = view.film;
            measured.camera = view.camera;
            measured.factors = {.sensorIrradiance = 0.1, .sensorPower = 1.0e-9, .exposureTime = 0.02};
            if (view.camera->type() == "bsdfcapture") measured.factors = {.sceneRadiance = 0.0, .bsdf = 1.0};
            const auto raw = std::make_shared<core::Raw>(view.film, measured, core::RenderCounts{1.5, 100, 0});
            raw->setOutput(node);
            bytes += std::to_string(core::unifiedGlareRating(*raw, {0, 0, kWidth, kHeight}));
            for (const char* const format : core::outputFormats(*raw)) {
                const auto file = core::encodeResult(*raw, format, "test");
                bytes += format;
                if (file) bytes.append(file->span().begin(), file->span().end());
            }
        }
        all.push_back(std::move(bytes));
    }
    return all;
}

/// Other values that a parameter can have.
std::vector<node::Value> others(const node::ParameterSpec& spec) {
    switch (spec.type) {
        case NEMRA_PARAMETER_REAL: {
            const double usual = *node::toNumber(spec.defaultValue);
            std::vector<node::Value> values;
            for (const double value : {0.5 * usual, 2.0 * usual, usual + 0.1, usual + 5.0, usual - 30.0, 0.1, 15.0, 60.0, 0.0}) {
                if (value >= spec.minimum && value <= spec.maximum && value != usual) values.push_back(number(value));
            }
            return values;
        }
        case NEMRA_PARAMETER_INTEGER: {
            if (!spec.allowed.empty()) return {integer(spec.allowed.front()), integer(spec.allowed.back())};
            const int usual = std::get<std::int32_t>(spec.defaultValue.data);
            return usual < spec.maximum ? std::vector{integer(usual + 1), integer(usual > 3 ? usual - 3 : usual + 2)}
                                        : std::vector{integer(usual - 1)};
        }
        case NEMRA_PARAMETER_BOOLEAN:
            return {flag(!std::get<bool>(spec.defaultValue.data))};
        case NEMRA_PARAMETER_TEXT:
            return {text("X"), text("440 nm"), text("other")};
        case NEMRA_PARAMETER_VECTOR:
            return {vector(-1.0, 0.5, 2.0)};
        case NEMRA_PARAMETER_COLOR:
            return {{node::Color{"linear_srgb", {0.25F, 0.5F, 0.75F}}}};
        case NEMRA_PARAMETER_MATRIX3:
            return {node::Value{std::vector<float>{0, 1, 0, 0, 0, 1, 1, 0, 0}}};
        case NEMRA_PARAMETER_TABLE: {
            auto table = std::make_shared<node::Table>();
            for (const node::ParameterSpec& column : spec.columns)
                table->columns.push_back({column.name, {number(0.0), number(1.0)}});
            table->rows = 2;
            return {node::Value{std::shared_ptr<const node::Table>(table)}};
        }
        default:
            return {};
    }
}

/// The node with what its class needs to do anything at all.
NodeHandle ready(const node::NodeClass& nodeClass) {
    auto made = std::make_shared<node::Node>(nodeClass, nodeClass.type);
    std::string why;
    for (const node::ChildSpec& slot : nodeClass.children) {
        if (slot.family == "image") lighttest::with(made, slot.name.c_str(), picture(nodeClass.type == "merge" ? 300.0 : 0.3));
        if (slot.family == "text") lighttest::with(made, slot.name.c_str(), make("text", "default", {{"content", text("Lux")}}));
    }
    if (nodeClass.type == "bsdf") lighttest::with(made, "illuminant", lighttest::uniform(1.0));  // there is no library here
    if (nodeClass.listClass == "spectrum") {
        for (const double nm : {450.0, 550.0}) {
            const auto response =
                make("spectrum", "triangle", {{"center", number(nm)}, {"peak", number(2.0)}}, nm < 500 ? "s" : "m");
            EXPECT_TRUE(made->addItem(response, why)) << why;
        }
    }
    return made;
}

using Path = std::vector<std::pair<std::string, node::Value>>;

NodeHandle along(const node::NodeClass& nodeClass, const Path& path) {
    const NodeHandle made = ready(nodeClass);
    for (const auto& [name, value] : path) {
        std::string why;
        EXPECT_TRUE(made->set(name, value, why)) << nodeClass.type << " " << name << ": " << why;
    }
    return made;
}

/// Ways to set the node up in which a parameter may matter that doesn't as the class comes: other options of the choices beside
/// it, and what these cases say.
std::vector<Path> circumstances(const std::vector<node::ParameterSpec>& beside, const std::string& name) {
    if (name == "task_diameter") return {{{"task_position", vector(0.1, 0.1, 1.0)}}};
    std::vector<Path> all{{}};
    for (const node::ParameterSpec& other : beside) {
        if (other.type != NEMRA_PARAMETER_CHOICE || other.name == name) continue;
        for (const node::OptionSpec& option : other.options) all.push_back({{other.name, node::Value{option.name}}});
    }
    return all;
}

/// Checks the parameters that one option brings, or those of the class, with `path` set before.
void check(const node::NodeClass& nodeClass, const std::vector<node::ParameterSpec>& parameters, const Path& path,
           std::set<std::string>& dead) {
    const auto matters = [&](const std::string& name, const std::vector<node::Value>& values) {
        for (const Path& more : circumstances(parameters, name)) {
            Path with = path;
            with.insert(with.end(), more.begin(), more.end());
            const auto usual = shown(along(nodeClass, with));
            for (const node::Value& value : values) {
                Path changed = with;
                changed.emplace_back(name, value);
                if (shown(along(nodeClass, changed)) != usual) return true;
            }
        }
        return false;
    };
    for (const node::ParameterSpec& spec : parameters) {
        const std::string label = nodeClass.family + "/" + nodeClass.type + " " + spec.name;
        if (spec.type != NEMRA_PARAMETER_CHOICE) {
            if (!matters(spec.name, others(spec))) dead.insert(label);
            continue;
        }
        for (const node::OptionSpec& option : spec.options) {
            const node::Value value{option.name};
            if (value != spec.defaultValue && !matters(spec.name, {value})) dead.insert(label + " = " + option.name);
            Path inner = path;
            inner.emplace_back(spec.name, value);
            check(nodeClass, option.parameters, inner, dead);
        }
    }
}

TEST(EveryParameter, OfFiltersAndOutputsMatters) {
    node::registerClasses();
    std::set<std::string> dead;
    for (const node::NodeClass* const known : node::allClasses()) {
        const bool isAsked = known->family == "filter" || known->family == "output";
        if (isAsked && known->type != "linked") check(*known, known->parameters, {}, dead);
    }
    // No instrument of these views measures irradiances; and what the others measure, raw, are the scene's radiances.
    for (const char* const type : {"channelimage", "table"}) {
        for (const char* const quantity : {"scene_radiance", "scene_irradiance"}) {
            dead.erase(std::string("output/") + type + " quantity = " + quantity);
        }
    }
    for (const std::string& name : dead) ADD_FAILURE() << name << " changes nothing";
}

}  // namespace
}  // namespace nemra::outputtest
