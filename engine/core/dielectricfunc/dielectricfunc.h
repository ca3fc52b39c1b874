/// Complex refractive indices.
#pragma once

#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {

/// n + ik by vacuum wavelength in nm; k is positive where light is absorbed, by exp(-4 pi k z / wavelength).
struct ComplexIndex {
    SpectralCurve n = constantCurve(1.0);
    SpectralCurve k = constantCurve(0.0);
};

using MakeDielectric = ComplexIndex (*)(const node::Node& node, Translation& translation);
ClassTable<MakeDielectric>& dielectricClasses();

/// The index of a node of family dielectricfunc. A link that leads nowhere, or a class without a light part, gives one warning
/// and that of vacuum.
ComplexIndex makeDielectric(const NodePointer& node, Translation& translation);

}  // namespace nemra::core
