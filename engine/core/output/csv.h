/// Reports as CSV (RFC 4180), lines ended by a line feed. Tables of pixels have a faster writer of their own (table_text.h).
#pragma once

#include <string>
#include <string_view>

namespace nemra::core {

class CsvText {
public:
    /// In quotes if it holds a comma, a quote or a line break.
    CsvText& cell(std::string_view value);
    /// Six significant digits.
    CsvText& cell(double value);
    void endLine();
    std::string take() { return std::move(all_); }

private:
    CsvText& put(std::string_view text);

    std::string all_;
    bool isFirst_ = true;
};

}  // namespace nemra::core
