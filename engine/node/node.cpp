#include "engine/node/node.h"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "engine/common/slot_table.h"

namespace nemra::node {

namespace {

/// Calls visit(spec, depth) for each active parameter in order until it answers true. `selected` gives the name of the selected
/// option of a choice.
template <class Selected, class Visit>
bool visitActive(const std::vector<ParameterSpec>& parameters, const Selected& selected, int depth, const Visit& visit) {
    for (const ParameterSpec& spec : parameters) {
        if (visit(spec, depth)) return true;
        if (spec.type != NEMRA_PARAMETER_CHOICE) continue;
        const OptionSpec* const option = findOption(spec, selected(spec));
        if (option && visitActive(option->parameters, selected, depth + 1, visit)) return true;
    }
    return false;
}

/// "condition = open" for each way in which a parameter of that name would become active.
void collectConditions(const std::vector<ParameterSpec>& parameters, std::string_view name,
                       std::vector<std::string>& conditions) {
    for (const ParameterSpec& spec : parameters) {
        for (const OptionSpec& option : spec.options) {
            if (std::any_of(option.parameters.begin(), option.parameters.end(), [&](const auto& p) { return p.name == name; })) {
                conditions.push_back(spec.name + " = " + option.name);
            }
            collectConditions(option.parameters, name, conditions);
        }
    }
}

}  // namespace

Node::Node(const NodeClass& nodeClass, std::string name) : class_(&nodeClass), name_(std::move(name)) {}

Node::~Node() {
    if (const std::uint64_t id = handleId()) SlotTable::of(Kind::node).retire(id);
    if (!children_) return;
    // Nodes nested thousands deep must not cost as many stack frames: the outermost destructor takes them one by one.
    thread_local std::vector<std::shared_ptr<Node>>* pending = nullptr;
    const auto move = [](std::shared_ptr<Node>& child, std::vector<std::shared_ptr<Node>>& to) {
        if (!child) return;
        try {
            to.push_back(std::move(child));
        } catch (const std::bad_alloc&) {
            child.reset();  // without memory it goes from within this frame after all
        }
    };
    const auto moveChildren = [&](std::vector<std::shared_ptr<Node>>& to) {
        for (Slot& slot : children_->slots) move(slot.node, to);
        for (std::shared_ptr<Node>& child : children_->list) move(child, to);
    };
    if (pending) {
        moveChildren(*pending);
        return;
    }
    std::vector<std::shared_ptr<Node>> mine;
    moveChildren(mine);
    pending = &mine;
    while (!mine.empty()) {
        const std::shared_ptr<Node> last = std::move(mine.back());
        mine.pop_back();
    }
    pending = nullptr;
}

const Value& Node::valueOf(const ParameterSpec& spec) const noexcept {
    for (const Override& entry : overrides_) {
        if (entry.spec == &spec) return entry.value;
    }
    return spec.defaultValue;
}

Node::Setting Node::setting(const ParameterSpec& spec) const noexcept {
    const Value& value = valueOf(spec);
    return {&spec, &value, &value == &spec.defaultValue, 0};
}

namespace {

/// Finds the active parameter for which `wanted(spec)` holds, starting from a list of parameters.
template <class Selected, class Wanted>
std::pair<const ParameterSpec*, int> findActive(const std::vector<ParameterSpec>& parameters, const Selected& selected,
                                                const Wanted& wanted) {
    std::pair<const ParameterSpec*, int> found{nullptr, 0};
    visitActive(parameters, selected, 0, [&](const ParameterSpec& spec, int depth) {
        if (!wanted(spec)) return false;
        found = {&spec, depth};
        return true;
    });
    return found;
}

}  // namespace

Node::Setting Node::findParameter(std::string_view name) const {
    const auto selected = [this](const ParameterSpec& choice) -> std::string_view {
        return std::get<std::string>(valueOf(choice).data);
    };
    const auto [spec, depth] = findActive(class_->parameters, selected, [&](const ParameterSpec& s) { return s.name == name; });
    if (!spec) return {nullptr, nullptr, true, 0};
    Setting result = setting(*spec);
    result.depth = depth;
    return result;
}

Node::Setting Node::findParameterBelow(const ParameterSpec& top, std::string_view name) const {
    const auto selected = [this](const ParameterSpec& choice) -> std::string_view {
        return std::get<std::string>(valueOf(choice).data);
    };
    const Setting none{nullptr, nullptr, true, 0};
    if (!findActive(class_->parameters, selected, [&](const ParameterSpec& s) { return &s == &top; }).first) return none;
    const OptionSpec* const option = top.type == NEMRA_PARAMETER_CHOICE ? findOption(top, selected(top)) : nullptr;
    if (!option) return none;
    const auto [spec, depth] = findActive(option->parameters, selected, [&](const ParameterSpec& s) { return s.name == name; });
    if (!spec) return none;
    Setting result = setting(*spec);
    result.depth = depth + 1;
    return result;
}

std::vector<Node::Setting> Node::activeParameters() const {
    const auto selected = [this](const ParameterSpec& choice) -> std::string_view {
        return std::get<std::string>(valueOf(choice).data);
    };
    std::vector<Setting> result;
    visitActive(class_->parameters, selected, 0, [&](const ParameterSpec& spec, int depth) {
        result.push_back(setting(spec));
        result.back().depth = depth;
        return false;
    });
    return result;
}

const Value& Node::read(std::string_view name, nemra_parameter_type_t type) const {
    const Setting found = findParameter(name);
    if (!found.spec) throw std::logic_error(label() + " has no active parameter '" + std::string(name) + "'");
    const bool isText = found.spec->type == NEMRA_PARAMETER_FILE || found.spec->type == NEMRA_PARAMETER_LINK ||
                        found.spec->type == NEMRA_PARAMETER_INFO;
    const nemra_parameter_type_t stored = isText                                          ? NEMRA_PARAMETER_TEXT
                                          : found.spec->type == NEMRA_PARAMETER_DIRECTION ? NEMRA_PARAMETER_VECTOR
                                                                                          : found.spec->type;
    if (stored != type) throw std::logic_error(label() + ": parameter '" + std::string(name) + "' is of another kind");
    return *found.value;
}

double Node::real(std::string_view name) const { return std::get<double>(read(name, NEMRA_PARAMETER_REAL).data); }
std::int32_t Node::integer(std::string_view name) const {
    return std::get<std::int32_t>(read(name, NEMRA_PARAMETER_INTEGER).data);
}
bool Node::boolean(std::string_view name) const { return std::get<bool>(read(name, NEMRA_PARAMETER_BOOLEAN).data); }
const std::string& Node::text(std::string_view name) const {
    return std::get<std::string>(read(name, NEMRA_PARAMETER_TEXT).data);
}
const std::string& Node::choice(std::string_view name) const {
    return std::get<std::string>(read(name, NEMRA_PARAMETER_CHOICE).data);
}
Color Node::color(std::string_view name) const { return std::get<Color>(read(name, NEMRA_PARAMETER_COLOR).data); }
std::shared_ptr<const Table> Node::table(std::string_view name) const {
    return std::get<std::shared_ptr<const Table>>(read(name, NEMRA_PARAMETER_TABLE).data);
}
std::array<double, 3> Node::vector(std::string_view name) const {
    const auto& numbers = std::get<std::vector<double>>(read(name, NEMRA_PARAMETER_VECTOR).data);
    return {numbers[0], numbers[1], numbers[2]};
}
std::array<float, 9> Node::matrix3(std::string_view name) const {
    const auto& numbers = std::get<std::vector<float>>(read(name, NEMRA_PARAMETER_MATRIX3).data);
    std::array<float, 9> result{};
    std::copy_n(numbers.begin(), result.size(), result.begin());
    return result;
}

bool Node::set(std::string_view name, Value value, std::string& why) {
    const Setting found = findParameter(name);
    const std::string quoted = "parameter '" + std::string(name) + "'";
    if (!found.spec) {
        std::vector<std::string> conditions;
        collectConditions(class_->parameters, name, conditions);
        if (conditions.empty()) {
            why = "there is no " + quoted;
        } else {
            why = quoted + " exists only with ";
            for (std::size_t i = 0; i < conditions.size(); ++i) why += (i ? " or " : "") + conditions[i];
        }
        return false;
    }
    if (found.spec->type == NEMRA_PARAMETER_INFO) {
        why = quoted + " can only be read";
        return false;
    }
    std::string reason;
    if (!acceptValue(*found.spec, value, reason)) {
        why = quoted + ": " + reason;
        return false;
    }
    const auto entry =
        std::find_if(overrides_.begin(), overrides_.end(), [&](const Override& o) { return o.spec == found.spec; });
    if (value == found.spec->defaultValue) {
        if (entry != overrides_.end()) overrides_.erase(entry);
    } else if (entry != overrides_.end()) {
        entry->value = std::move(value);
    } else {
        overrides_.push_back({found.spec, std::move(value)});
    }
    touched_ = true;
    return true;
}

std::string Node::label() const {
    std::string text = class_->family + '/' + class_->type;
    if (!name_.empty()) text += ' ' + name_;
    return text;
}

const std::string& Node::comments() const noexcept {
    static const auto* const none = new std::string;
    return extra_ ? extra_->comments : *none;
}

Node::Extra& Node::writableExtra() {
    if (!extra_) extra_ = std::make_unique<Extra>();
    return *extra_;
}

void Node::setName(std::string name) {
    touched_ = touched_ || name != name_;
    name_ = std::move(name);
}

void Node::setComments(std::string comments) {
    if (comments == this->comments()) return;
    writableExtra().comments = std::move(comments);
    touched_ = true;
}

const Value* Node::rawSlot(std::string_view name) const {
    if (!extra_) return nullptr;
    for (std::size_t i = 0; i < extra_->rawSlots.size(); ++i) {
        const Value& value = extra_->rawSlots[i];
        if (class_->rawSlots[i].name == name) return value.isEmpty() ? nullptr : &value;
    }
    return nullptr;
}

bool Node::setRawSlot(std::string_view name, Value value, std::string& why) {
    const auto& slots = class_->rawSlots;
    const auto slot = std::find_if(slots.begin(), slots.end(), [&](const RawSlotSpec& s) { return s.name == name; });
    const std::string quoted = "raw data '" + std::string(name) + "'";
    if (slot == slots.end()) {
        why = "there is no " + quoted;
        return false;
    }
    const bool fits = [&] {
        switch (slot->type) {
            case NEMRA_RAW_DATA_TEXT:
                return std::holds_alternative<std::string>(value.data);
            case NEMRA_RAW_DATA_INDEX:
            case NEMRA_RAW_DATA_INT32:
                return std::holds_alternative<std::vector<std::int32_t>>(value.data);
            case NEMRA_RAW_DATA_FLOAT:
                return std::holds_alternative<std::vector<float>>(value.data);
            case NEMRA_RAW_DATA_DOUBLE:
                return std::holds_alternative<std::vector<double>>(value.data);
            case NEMRA_RAW_DATA_BINARY:
                return std::holds_alternative<std::vector<char>>(value.data);
            case NEMRA_RAW_DATA_NONE:
            case NEMRA_RAW_DATA_RESERVED:
                break;
        }
        return false;
    }();
    if (!fits) {
        why = quoted + " takes another kind of value";
        return false;
    }
    const auto* const indices = std::get_if<std::vector<std::int32_t>>(&value.data);
    if (slot->type == NEMRA_RAW_DATA_INDEX &&
        std::any_of(indices->begin(), indices->end(), [](std::int32_t i) { return i < 0; })) {
        why = quoted + ": an index must not be negative";
        return false;
    }
    Extra& extra = writableExtra();
    extra.rawSlots.resize(slots.size());
    extra.rawSlots[static_cast<std::size_t>(slot - slots.begin())] = std::move(value);
    touched_ = true;
    return true;
}

std::uint64_t Node::adoptHandleId(std::uint64_t id) noexcept {
    std::uint64_t expected = 0;
    return handleId_.compare_exchange_strong(expected, id, std::memory_order_acq_rel) ? id : expected;
}

}  // namespace nemra::node
