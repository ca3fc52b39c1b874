#include "tests/engine/scene/changed_node.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "engine/node/color.h"

namespace nemra::test {

using namespace nemra::node;

namespace {

constexpr int kMaxVariants = 400;

struct Choices {
    int mostOptions = 1;
    int depth = 0;
};

void count(const std::vector<ParameterSpec>& parameters, int depth, Choices& choices) {
    for (const ParameterSpec& spec : parameters) {
        if (spec.options.empty()) continue;
        choices.depth = std::max(choices.depth, depth + 1);
        choices.mostOptions = std::max(choices.mostOptions, static_cast<int>(spec.options.size()));
        for (const OptionSpec& option : spec.options) count(option.parameters, depth + 1, choices);
    }
}

Choices choicesOf(const NodeClass& nodeClass) {
    Choices choices;
    count(nodeClass.parameters, 0, choices);
    return choices;
}

class Changer {
public:
    Changer(Node& node, int variant) : node_(node), variant_(variant), random_(static_cast<unsigned>(variant) * 7919U + 1U) {}

    void change(int levels) {
        node_.setComments("  of " + node_.type() + "\n");
        changeParameters();
        for (const RawSlotSpec& slot : node_.nodeClass().rawSlots)
            expectDone(node_.setRawSlot(slot.name, rawValue(slot), why_), slot.name);
        if (levels == 0) return;
        for (const ChildSpec& slot : node_.nodeClass().children) changeChild(slot, levels);
        if (!node_.nodeClass().listClass.empty()) addItems(levels);
    }

private:
    void expectDone(bool done, const std::string& what) {
        EXPECT_TRUE(done) << node_.label() << ", variant " << variant_ << ", " << what << ": " << why_;
    }

    void changeParameters() {
        const int mostOptions = choicesOf(node_.nodeClass()).mostOptions;
        // A choice brings further parameters right behind it, so ask again after each change.
        for (std::size_t i = 0; i < node_.activeParameters().size(); ++i) {
            const auto setting = node_.activeParameters()[i];
            const ParameterSpec& spec = *setting.spec;
            if (spec.type == NEMRA_PARAMETER_INFO) continue;
            if (node_.findParameter(spec.name).spec != &spec) continue;  // another of that name stands before it
            int digit = variant_;
            for (int depth = 0; depth < setting.depth; ++depth) digit /= mostOptions;
            expectDone(node_.set(spec.name, otherValue(spec, *setting.value, static_cast<std::size_t>(digit)), why_), spec.name);
        }
    }

    /// In the range, and not what it was.
    double otherNumber(const ParameterSpec& spec, double current) {
        const double low = std::max(spec.minimum, -1.0e6);
        const double high = std::min(spec.maximum, 1.0e6);
        const double number = std::uniform_real_distribution<double>(low, high)(random_);
        return number == current ? low : number;
    }

    std::int32_t otherInteger(const ParameterSpec& spec, std::int32_t current) {
        for (const std::int32_t allowed : spec.allowed)
            if (allowed != current) return allowed;
        if (!spec.allowed.empty()) return current;
        const auto low = static_cast<std::int32_t>(std::max(spec.minimum, -1.0e9));
        const auto high = static_cast<std::int32_t>(std::min(spec.maximum, 1.0e9));
        const auto number = std::uniform_int_distribution<std::int32_t>(low, high)(random_);
        return number != current ? number : number == low ? high : low;
    }

    template <class Number>
    std::vector<Number> otherNumbers(const ParameterSpec& spec, std::size_t count) {
        std::vector<Number> numbers(count);
        for (Number& number : numbers) number = static_cast<Number>(otherNumber(spec, 0.5));
        return numbers;
    }

    std::string otherText() { return "a <text> & \"more\"\n\tnext line " + std::to_string(random_() % 1000) + " \u00e4\u00f6 "; }

    Value otherValue(const ParameterSpec& spec, const Value& current, std::size_t digit) {
        switch (spec.type) {
            case NEMRA_PARAMETER_REAL:
                return {otherNumber(spec, *toNumber(current))};
            case NEMRA_PARAMETER_INTEGER:
                return {otherInteger(spec, std::get<std::int32_t>(current.data))};
            case NEMRA_PARAMETER_BOOLEAN:
                return {!std::get<bool>(current.data)};
            case NEMRA_PARAMETER_CHOICE:
                return {spec.options[(digit + 1) % spec.options.size()].name};
            case NEMRA_PARAMETER_VECTOR:
            case NEMRA_PARAMETER_DIRECTION:
                return {otherNumbers<double>(spec, 3)};
            case NEMRA_PARAMETER_MATRIX2:
                return {otherNumbers<float>(spec, 4)};
            case NEMRA_PARAMETER_MATRIX3:
                return {otherNumbers<float>(spec, 9)};
            case NEMRA_PARAMETER_COLOR: {
                const auto coords = otherNumbers<float>(spec, 3);
                return {
                    Color{std::string(colorSpaces()[random_() % colorSpaces().size()].name), {coords[0], coords[1], coords[2]}}};
            }
            case NEMRA_PARAMETER_TABLE:
                return {otherTable(spec)};
            default:
                return {otherText()};
        }
    }

    /// A few rows, not all of them set, in the kinds in which a caller may fill a table.
    std::shared_ptr<const Table> otherTable(const ParameterSpec& spec) {
        auto table = std::make_shared<Table>();
        table->rows = 2 + random_() % 3;
        for (const ParameterSpec& column : spec.columns) {
            Table::Column& filled = table->columns.emplace_back(Table::Column{column.name, {}});
            const unsigned kind = random_() % 4;
            for (std::size_t row = 0; row < table->rows; ++row) {
                filled.cells.push_back(random_() % 5 == 0 ? Value{} : otherCell(column, kind));
            }
        }
        return table;
    }

    Value otherCell(const ParameterSpec& column, unsigned kind) {
        Value cell = otherValue(column, column.defaultValue, random_() % 8);
        const auto number = toNumber(cell);
        if (!number || kind < 2) return cell;
        // What fits the range as a double may not once it is rounded.
        const Value rounded = kind == 2 ? Value{static_cast<float>(*number)} : Value{static_cast<std::int32_t>(*number)};
        Value tried = rounded;
        std::string why;
        return acceptValue(column, tried, why) ? rounded : cell;
    }

    Value rawValue(const RawSlotSpec& slot) {
        ParameterSpec any;
        switch (slot.type) {
            case NEMRA_RAW_DATA_INDEX:
                return {std::vector<std::int32_t>{0, 7, 2147483647}};
            case NEMRA_RAW_DATA_INT32:
                return {std::vector<std::int32_t>{-2147483647 - 1, 0, 9}};
            case NEMRA_RAW_DATA_FLOAT:
                return {otherNumbers<float>(any, 5)};
            case NEMRA_RAW_DATA_DOUBLE:
                return {otherNumbers<double>(any, 5)};
            case NEMRA_RAW_DATA_BINARY:
                return {std::vector<char>{'\0', '<', '\xff', '\n', static_cast<char>(random_())}};
            default:
                return {otherText()};
        }
    }

    const NodeClass& otherClass(const std::string& family, const std::string& than) {
        std::vector<const NodeClass*> fitting;
        for (const NodeClass* const one : allClasses())
            if (one->family == family && one->type != than) fitting.push_back(one);
        return fitting.empty() ? *findClass(family, than) : *fitting[static_cast<std::size_t>(variant_ / 2) % fitting.size()];
    }

    void changeChild(const ChildSpec& slot, int levels) {
        if (variant_ % 2 == 0) {
            Changer(*node_.mutableChild(slot.name), variant_).change(levels - 1);
        } else {
            const NodeClass& nodeClass = otherClass(slot.family, slot.defaultType);
            expectDone(node_.setChild(changedNode(nodeClass, slot.name, variant_, levels - 1), why_), slot.name);
        }
        if (variant_ % 3 == 1) node_.mutableChild(slot.name)->setName("own name");
    }

    /// The last two get one name, which renaming in place can bring about.
    void addItems(int levels) {
        for (const char* name : {"first", "second", "third"}) {
            const NodeClass& nodeClass = otherClass(node_.nodeClass().listClass, "linked");
            expectDone(node_.setChild(changedNode(nodeClass, name, variant_, levels - 1), why_), name);
        }
        node_.mutableList().back()->setName("second");
    }

    Node& node_;
    int variant_;
    std::mt19937 random_;
    std::string why_;
};

}  // namespace

int variantsOf(const NodeClass& nodeClass) {
    const Choices choices = choicesOf(nodeClass);
    int variants = 1;
    for (int depth = 0; depth < choices.depth && variants < kMaxVariants; ++depth) variants *= choices.mostOptions;
    return std::min(std::max(variants, 4), kMaxVariants);
}

std::shared_ptr<Node> changedNode(const NodeClass& nodeClass, const std::string& name, int variant, int levels) {
    auto node = std::make_shared<Node>(nodeClass, name);
    Changer(*node, variant).change(levels);
    return node;
}

}  // namespace nemra::test
