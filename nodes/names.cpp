#include "nodes/names.h"

#include <cctype>
#include <string_view>

namespace NemraNode::nodes {

namespace {

char upper(char letter) { return static_cast<char>(std::toupper(static_cast<unsigned char>(letter))); }

}  // namespace

std::string sanitizeName(std::string name) {
    constexpr std::string_view forbidden = "\\/:?\"<>|-%^{}[]&* ";
    for (char& letter : name) {
        if (forbidden.find(letter) != std::string_view::npos) letter = '_';
    }
    return name;
}

std::string capitalName(const std::string& rawName) {
    std::string name = sanitizeName(rawName);
    if (!name.empty()) name[0] = upper(name[0]);
    return name;
}

ParameterNames::ParameterNames(const std::string& rawName) : raw(rawName), argument(sanitizeName(rawName)) {
    // The capital comes from the raw name: a forbidden first character stays in the method names.
    std::string capital = argument;
    if (!capital.empty()) capital[0] = upper(raw[0]);
    getter = "get" + capital;
    setter = "set" + capital;
    choices = "get" + capital + "Choices";
    getterDoc = "Get the " + raw + " parameter";
    setterDoc = "Set the " + raw + " parameter";
}

}  // namespace NemraNode::nodes
