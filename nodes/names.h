/// Method names from the engine's raw names.
#pragma once

#include <string>

namespace NemraNode::nodes {

/// Replaces each of 18 characters that a name can't have by '_'. The length doesn't change.
std::string sanitizeName(std::string name);

/// sanitizeName with its first character in upper case: the names of children and raw data.
std::string capitalName(const std::string& rawName);

/// Names and docstrings of one parameter's methods.
struct ParameterNames {
    explicit ParameterNames(const std::string& rawName);

    std::string raw;
    std::string argument;
    std::string getter;
    std::string setter;
    std::string choices;
    std::string getterDoc;
    std::string setterDoc;
};

}  // namespace NemraNode::nodes
