/// What the columns and rows of a result are called in tables.
#pragma once

#include <optional>
#include <string>

#include "engine/core/instrument/scatter_layout.h"
#include "engine/core/result/raw.h"

namespace nemra::core {

/// For a result of a goniophotometer (bsdfcapture) of the size that its basis asks for, the directions: "incident theta=10 phi=45
/// deg", "reflected theta=30 phi=0 deg", "transmitted theta=30 phi=0 deg", angles as in direction_basis.h, of where the light
/// comes from and goes to. Else the number, counted from 0.
class TableTitles {
public:
    /// `width` and `height` are those of the table.
    TableTitles(const node::Node* instrument, int width, int height);
    explicit TableTitles(const Raw& raw) : TableTitles(raw.instrument().get(), raw.width(), raw.height()) {}

    std::string column(int x) const;
    std::string row(int y) const;
    /// Are they directions?
    bool areDirections() const noexcept { return layout_.has_value(); }

private:
    std::optional<ScatterLayout> layout_;
};

}  // namespace nemra::core
