#include "engine/core/output/csv.h"

#include "engine/core/output/false_color.h"

namespace nemra::core {

CsvText& CsvText::cell(std::string_view value) {
    if (value.find_first_of("\"\r\n,") == std::string_view::npos) return put(value);
    std::string quoted = "\"";
    for (const char letter : value) {
        if (letter == '"') quoted += '"';
        quoted += letter;
    }
    return put(quoted + '"');
}

CsvText& CsvText::cell(double value) { return put(significant(value, 6)); }

void CsvText::endLine() {
    all_ += '\n';
    isFirst_ = true;
}

CsvText& CsvText::put(std::string_view text) {
    if (!isFirst_) all_ += ',';
    isFirst_ = false;
    all_ += text;
    return *this;
}

}  // namespace nemra::core
