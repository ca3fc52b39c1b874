#include "engine/node/catalogue/build.h"

#include <iterator>
#include <stdexcept>

namespace nemra::node {

Parameter::Parameter(std::string name, nemra_parameter_type_t type, Value defaultValue) {
    spec_.name = std::move(name);
    spec_.type = type;
    spec_.defaultValue = std::move(defaultValue);
}

Parameter& Parameter::unit(std::string unit) {
    spec_.unit = std::move(unit);
    hasUnit_ = true;
    return *this;
}

Parameter& Parameter::range(double minimum, double maximum) {
    spec_.minimum = minimum;
    spec_.maximum = maximum;
    return *this;
}

Parameter& Parameter::oneOf(std::vector<std::int32_t> allowed) {
    spec_.allowed = std::move(allowed);
    return *this;
}

Parameter& Parameter::doc(std::string doc) {
    spec_.doc = std::move(doc);
    return *this;
}

Parameter& Parameter::option(std::string name, std::string doc, std::vector<ParameterSpec> parameters) {
    if (spec_.options.empty()) spec_.defaultValue.data = name;
    spec_.options.push_back({std::move(name), std::move(doc), std::move(parameters)});
    return *this;
}

Parameter& Parameter::column(const Parameter& column) {
    spec_.columns.push_back(column);
    auto table = std::make_shared<Table>(*std::get<std::shared_ptr<const Table>>(spec_.defaultValue.data));
    table->columns.push_back({spec_.columns.back().name, {}});
    spec_.defaultValue.data = std::shared_ptr<const Table>(std::move(table));
    return *this;
}

Parameter::operator ParameterSpec() const {
    const auto complain = [&](const char* what) { throw std::logic_error("parameter '" + spec_.name + "' " + what); };
    const bool isNumber = spec_.type == NEMRA_PARAMETER_REAL || spec_.type == NEMRA_PARAMETER_INTEGER ||
                          spec_.type == NEMRA_PARAMETER_VECTOR || spec_.type == NEMRA_PARAMETER_MATRIX2 ||
                          spec_.type == NEMRA_PARAMETER_MATRIX3;
    if (spec_.name.empty()) complain("has no name");
    if (spec_.doc.empty()) complain("has no documentation");
    if (isNumber && !hasUnit_) complain("has no unit and isn't said to be pure");
    if (spec_.type == NEMRA_PARAMETER_CHOICE && spec_.options.empty()) complain("has no options");
    for (const OptionSpec& option : spec_.options) {
        if (option.doc.empty()) complain("has an option without documentation");
        for (const ParameterSpec& nested : option.parameters) {
            if (nested.type == NEMRA_PARAMETER_TABLE) complain("has a table below an option");
        }
    }
    if (spec_.type == NEMRA_PARAMETER_TABLE && spec_.columns.empty()) complain("has no columns");
    ParameterSpec spec = spec_;
    std::string why;
    if (!acceptValue(spec, spec.defaultValue, why)) complain(("has a default that it refuses: " + why).c_str());
    return spec;
}

Parameter real(std::string name, double defaultValue) { return {std::move(name), NEMRA_PARAMETER_REAL, Value{defaultValue}}; }
Parameter integer(std::string name, std::int32_t defaultValue) {
    return {std::move(name), NEMRA_PARAMETER_INTEGER, Value{defaultValue}};
}
Parameter boolean(std::string name, bool defaultValue) { return {std::move(name), NEMRA_PARAMETER_BOOLEAN, Value{defaultValue}}; }
Parameter text(std::string name, std::string defaultValue) {
    return {std::move(name), NEMRA_PARAMETER_TEXT, Value{std::move(defaultValue)}};
}
Parameter file(std::string name) { return {std::move(name), NEMRA_PARAMETER_FILE, Value{std::string()}}; }
Parameter info(std::string name, std::string text) { return {std::move(name), NEMRA_PARAMETER_INFO, Value{std::move(text)}}; }
Parameter link(std::string name) { return {std::move(name), NEMRA_PARAMETER_LINK, Value{std::string()}}; }
Parameter vector(std::string name, double x, double y, double z) {
    return {std::move(name), NEMRA_PARAMETER_VECTOR, Value{std::vector<double>{x, y, z}}};
}
Parameter direction(std::string name, double x, double y, double z) {
    return {std::move(name), NEMRA_PARAMETER_DIRECTION, Value{std::vector<double>{x, y, z}}};
}
Parameter matrix2(std::string name) { return {std::move(name), NEMRA_PARAMETER_MATRIX2, Value{std::vector<float>{1, 0, 0, 1}}}; }
Parameter matrix3(std::string name) {
    return {std::move(name), NEMRA_PARAMETER_MATRIX3, Value{std::vector<float>{1, 0, 0, 0, 1, 0, 0, 0, 1}}};
}
Parameter choice(std::string name) { return {std::move(name), NEMRA_PARAMETER_CHOICE, Value{std::string()}}; }
Parameter color(std::string name, std::string space, float c0, float c1, float c2) {
    return {std::move(name), NEMRA_PARAMETER_COLOR, Value{Color{std::move(space), {c0, c1, c2}}}};
}
Parameter table(std::string name) {
    return {std::move(name), NEMRA_PARAMETER_TABLE, Value{std::shared_ptr<const Table>(std::make_shared<Table>())}};
}

Parameter wavelength(std::string name, double defaultNm) { return real(std::move(name), defaultNm).unit("nm").range(1.0, 1.0e6); }

ChildSpec child(std::string name, std::string family, std::string defaultType, std::string doc,
                std::vector<std::pair<std::string, Value>> defaults) {
    return {std::move(name), std::move(family), std::move(defaultType), std::move(doc), std::move(defaults)};
}

std::vector<ParameterSpec> joined(std::vector<ParameterSpec> first, std::vector<ParameterSpec> second) {
    first.insert(first.end(), std::make_move_iterator(second.begin()), std::make_move_iterator(second.end()));
    return first;
}

void Catalogue::addLinked(const std::string& family) {
    add({.family = family,
         .type = "linked",
         .summary = "Stands for another node of the family " + family + " in the scene",
         .parameters = {link("node").doc("Name of the node that is meant")}});
}

}  // namespace nemra::node
