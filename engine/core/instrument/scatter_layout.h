/// How the result of a goniophotometer (instrument/bsdfcapture) lies in the image.
#pragma once

#include <memory>

#include "engine/core/instrument/direction_basis.h"
#include "engine/node/node.h"

namespace nemra::core {

/// Column i holds the beam that comes from patch i of `incident`. Rows hold the patches of `outgoing` on the lit side if
/// `reflection`, and behind them those on the other side if `transmission`.
struct ScatterLayout {
    std::unique_ptr<DirectionBasis> incident;
    std::unique_ptr<DirectionBasis> outgoing;
    bool reflection;
    bool transmission;
    bool isFrontLit;

    int width() const noexcept { return incident->count(); }
    int height() const noexcept { return outgoing->count() * (int(reflection) + int(transmission)); }
    /// Row of the first patch of light that comes back or goes through.
    int firstRow(bool transmitted) const noexcept { return transmitted && reflection ? outgoing->count() : 0; }
    bool isTransmitted(int row) const noexcept { return !reflection || row >= outgoing->count(); }
};

/// `instrument` is of the type bsdfcapture.
ScatterLayout scatterLayoutOf(const node::Node& instrument);

}  // namespace nemra::core
