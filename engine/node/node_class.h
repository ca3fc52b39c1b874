/// What a node class consists of: the declarative catalogue. From this one table come reflection, default nodes, checks, the
/// encodings and the reference pages.
#pragma once

#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/node/value.h"

namespace nemra::node {

class Node;
struct ParameterSpec;

/// One option of a choice, with the parameters that exist only while it is selected.
struct OptionSpec {
    std::string name;
    std::string doc;
    std::vector<ParameterSpec> parameters;
};

struct ParameterSpec {
    std::string name;
    nemra_parameter_type_t type = NEMRA_PARAMETER_NONE;
    std::string unit;  ///< "" for a pure number
    std::string doc;
    Value defaultValue;
    double minimum = -std::numeric_limits<double>::infinity();  ///< of a real, an integer or each component of a vector
    double maximum = std::numeric_limits<double>::infinity();
    std::vector<std::int32_t> allowed;   ///< of an integer: the only values it takes; empty takes all of the range
    std::vector<OptionSpec> options;     ///< of a choice; the default value is the name of one of them
    std::vector<ParameterSpec> columns;  ///< of a table: name, cell type as parameter type, unit, range
};

/// A fixed child: a slot with a default node. `defaults` are parameters of that node that differ from its class's defaults.
struct ChildSpec {
    std::string name;
    std::string family;
    std::string defaultType;
    std::string doc;
    std::vector<std::pair<std::string, Value>> defaults;
};

struct RawSlotSpec {
    std::string name;
    nemra_raw_data_type_t type = NEMRA_RAW_DATA_NONE;
    std::string unit;
    std::string doc;
};

struct NodeClass {
    std::string family;
    std::string type;
    std::string summary;
    std::vector<ParameterSpec> parameters = {};
    std::vector<ChildSpec> children = {};
    std::string listClass = {};  ///< family of the varying children; "" for none
    std::vector<RawSlotSpec> rawSlots = {};
    /// One node per child slot, as an untouched node has it; filled in by completeClass.
    std::vector<std::shared_ptr<const Node>> defaultChildren = {};
};

/// The class of that family and type, or null. Classes live for ever.
NEMRA_API const NodeClass* findClass(std::string_view family, std::string_view type) noexcept;
/// All classes, in a fixed order.
NEMRA_API std::span<const NodeClass* const> allClasses() noexcept;
/// Builds the catalogue; a second call does nothing.
NEMRA_API void registerClasses();

/// Makes the default children of a class whose description stands at its final address. Throws std::logic_error if one of its
/// slots names a class that isn't there, or a default that the class refuses.
NEMRA_API void completeClass(NodeClass& nodeClass);
/// The option of that name of a choice, or null.
NEMRA_API const OptionSpec* findOption(const ParameterSpec& choice, std::string_view name) noexcept;

/// Turns a value into the form in which the parameter keeps it: a real as double, an integer as int32, a vector or direction as
/// three doubles, a matrix as floats, a table with the columns of the schema in their order. Numbers convert between kinds where
/// nothing is lost. False, with the reason, limit and unit in `why`, for a wrong kind, a value out of range or one that isn't a
/// number; then `value` is undefined.
NEMRA_API bool acceptValue(const ParameterSpec& parameter, Value& value, std::string& why);

}  // namespace nemra::node
