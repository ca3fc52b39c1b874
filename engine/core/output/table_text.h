/// Results as tables of text: CSV (RFC 4180), UTF-8, lines ended by a line feed, the same in every locale.
#pragma once

#include <string>
#include <vector>

#include "engine/common/buffer.h"
#include "engine/core/result/raw.h"

namespace nemra::core {

struct TableLayout {
    enum class Rows {
        pixels,  ///< tidy: a header, then one row for each pixel (x, y counted from the top left), one column for each channel
        grid,    ///< for each channel a block: its name, a header of columns' names, then the rows of the picture, by the names
                 ///< that TableTitles gives; empty line between
        summary  ///< one row for each channel: mean, smallest, largest value, uniformity (smallest over mean)
    };
    Rows rows = Rows::pixels;
    nemra_quantity_t quantity = NEMRA_QUANTITY_RAW;
    std::vector<std::string> channels{};  ///< names; empty takes all
    int digits = 0;                       ///< significant; 0: as many as it takes to read back the same 32-bit number
    char separator = ',';
    char decimal = '.';
    bool withSampling = false;  ///< pixels: also the number of samples, and the standard error of what stands for a pixel
};

/// Throws std::runtime_error for a channel or a quantity that the result doesn't have.
Buffer writeTable(const Raw& raw, const TableLayout& layout);

/// What an output of type table asks for.
TableLayout tableLayoutOf(const node::Node& output);

}  // namespace nemra::core
