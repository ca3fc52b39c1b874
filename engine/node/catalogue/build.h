/// Words in which the catalogue is written: real("temperature", 6504.0).unit("K").range(1.0, 1.0e5).doc("Absolute temperature").
///
/// Each number must say its unit or that it is pure, each item has a line of documentation; what is missing is a std::logic_error
/// at start-up, which every test meets.
#pragma once

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "engine/node/node_class.h"

namespace nemra::node {

class NEMRA_API Parameter {
public:
    Parameter(std::string name, nemra_parameter_type_t type, Value defaultValue);

    Parameter& unit(std::string unit);
    Parameter& pure() { return unit(""); }
    Parameter& range(double minimum, double maximum);
    Parameter& oneOf(std::vector<std::int32_t> allowed);
    Parameter& doc(std::string doc);
    /// The first option is the default.
    Parameter& option(std::string name, std::string doc, std::vector<ParameterSpec> parameters = {});
    Parameter& column(const Parameter& column);

    operator ParameterSpec() const;  // NOLINT(google-explicit-constructor): entries of a list of parameters

private:
    ParameterSpec spec_;
    bool hasUnit_ = false;
};

NEMRA_API Parameter real(std::string name, double defaultValue = 0.0);
NEMRA_API Parameter integer(std::string name, std::int32_t defaultValue);
NEMRA_API Parameter boolean(std::string name, bool defaultValue);
NEMRA_API Parameter text(std::string name, std::string defaultValue = "");
/// Text that names a node or a geometry of the scene.
NEMRA_API Parameter link(std::string name);
/// Path of a file: absolute, or relative to the scene file or one of the scene's search paths.
NEMRA_API Parameter file(std::string name);
/// Text that can only be read: what a user of the class must know besides its values, such as the frame of its angles.
NEMRA_API Parameter info(std::string name, std::string text);
NEMRA_API Parameter vector(std::string name, double x, double y, double z);
/// A pure direction, not necessarily of length 1.
NEMRA_API Parameter direction(std::string name, double x, double y, double z);
/// Square matrices that act on column vectors; the unit by default. Numbers are kept row by row, in single precision.
NEMRA_API Parameter matrix2(std::string name);
NEMRA_API Parameter matrix3(std::string name);
NEMRA_API Parameter choice(std::string name);
NEMRA_API Parameter color(std::string name, std::string space, float c0, float c1, float c2);
/// Empty by default. A table stands at the top of its class, never below an option: a binding finds the columns of such a table
/// only there.
NEMRA_API Parameter table(std::string name);

/// A wavelength in nm within what the engine simulates.
NEMRA_API Parameter wavelength(std::string name, double defaultNm);
/// A child with its family, the type of its default node and the parameters of that node which differ from its class's.
NEMRA_API ChildSpec child(std::string name, std::string family, std::string defaultType, std::string doc,
                          std::vector<std::pair<std::string, Value>> defaults = {});
/// Number of a default of a child.
inline Value number(double value) { return Value{value}; }
/// Text of a default of a child, or the name of an option.
inline Value word(std::string value) { return Value{std::move(value)}; }
/// The parameters of both lists, in this order.
NEMRA_API std::vector<ParameterSpec> joined(std::vector<ParameterSpec> first, std::vector<ParameterSpec> second);

/// Where the families put their classes.
class NEMRA_API Catalogue {
public:
    virtual void add(NodeClass nodeClass) = 0;
    /// The class "linked" of a family, which stands for another node of it.
    void addLinked(const std::string& family);

protected:
    ~Catalogue() = default;
};

}  // namespace nemra::node
