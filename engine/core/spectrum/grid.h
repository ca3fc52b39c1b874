/// Spectra baked for rendering: on a uniform grid of cells, a straight line in each.
///
/// A cell's line has the same integral and the same first moment as the curve in that cell. So integrals against anything linear
/// in the cell, as the colour-matching functions are, come out exactly; edges that fall on cell borders stay sharp; and curves
/// that are linear between cell borders are kept unchanged. A line would be negative at one end of a cell that holds something
/// much narrower than itself, off its middle; it is then as steep as it can be, and the tables say that they would need finer
/// cells.
#pragma once

#include <vector>

#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {

struct SpectralGrid {
    double first = 360.0;  ///< nm, lower border of the first cell
    double step = 1.0;     ///< nm
    int cells = 470;

    /// The same range in cells `parts` times as many.
    SpectralGrid refined(int parts) const noexcept { return {first, step / parts, cells * parts}; }
    double last() const noexcept { return first + step * cells; }
    double border(int cell) const noexcept { return first + step * cell; }
};

/// Value at the lower border of a cell, and rise over the cell.
struct SpectralCell {
    float value;
    float rise;
};

/// Tables of all spectra of a scene, one after the other.
class SpectralTables {
public:
    explicit SpectralTables(const SpectralGrid& grid) : grid_(grid) {}

    const SpectralGrid& grid() const noexcept { return grid_; }
    /// Bakes a curve; returns its index. Equal curves may share one.
    int add(const SpectralCurve& curve);
    const SpectralCell* data() const noexcept { return cells_.data(); }
    const SpectralCell* table(int index) const noexcept { return cells_.data() + static_cast<std::size_t>(index) * grid_.cells; }
    int count() const noexcept { return static_cast<int>(cells_.size() / grid_.cells); }
    std::size_t memory() const noexcept { return cells_.size() * sizeof(SpectralCell); }
    /// Mean of a table over one cell.
    double mean(int index, int cell) const noexcept;
    double maximum(int index) const noexcept;
    /// True once a curve was added that has features too narrow for these cells.
    bool tooCoarse() const noexcept { return tooCoarse_; }

private:
    SpectralGrid grid_;
    std::vector<SpectralCell> cells_;
    bool tooCoarse_ = false;
};

}  // namespace nemra::core
