#include "engine/core/output/csv.h"

#include <algorithm>

#include "engine/core/output/false_color.h"

namespace nemra::core {

CsvStyle CsvStyle::named(std::string_view separator, int digits) {
    if (separator == "semicolon") return {';', ',', digits};
    if (separator == "tab") return {'\t', '.', digits};
    return {',', '.', digits};
}

std::string CsvStyle::number(double value) const {
    std::string text = significant(value, digits);
    std::replace(text.begin(), text.end(), '.', decimal);
    return text;
}

std::string CsvStyle::text(std::string_view value) const {
    const bool isPlain = value.find_first_of(std::string("\"\r\n") + separator) == std::string_view::npos;
    if (isPlain) return std::string(value);
    std::string quoted = "\"";
    for (const char letter : value) {
        if (letter == '"') quoted += '"';
        quoted += letter;
    }
    return quoted + '"';
}

}  // namespace nemra::core
