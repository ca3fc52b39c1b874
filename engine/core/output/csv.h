/// Cells of a table as text.
#pragma once

#include <string>
#include <string_view>

namespace nemra::core {

/// What stands between cells and in numbers, by the name of the outputs' option: comma, semicolon (with a decimal comma), tab.
struct CsvStyle {
    char separator = ',';
    char decimal = '.';
    int digits = 6;  ///< significant ones

    static CsvStyle named(std::string_view separator, int digits);
    std::string number(double value) const;
    /// In quotes if it holds the separator, a quote or a line break (RFC 4180).
    std::string text(std::string_view value) const;
};

/// Lines of cells, each ended by a line feed.
class CsvText {
public:
    explicit CsvText(CsvStyle style) : style_(style) {}
    CsvText& cell(std::string_view value) { return put(style_.text(value)); }
    CsvText& cell(double value) { return put(style_.number(value)); }
    void endLine() {
        all_ += '\n';
        isFirst_ = true;
    }
    std::string take() { return std::move(all_); }

private:
    CsvText& put(const std::string& cell) {
        if (!isFirst_) all_ += style_.separator;
        isFirst_ = false;
        all_ += cell;
        return *this;
    }

    CsvStyle style_;
    std::string all_;
    bool isFirst_ = true;
};

}  // namespace nemra::core
