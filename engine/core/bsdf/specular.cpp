#include "engine/core/bsdf/bsdf.h"

namespace nemra::core {
namespace {

/// Ideal mirror on both sides.
class SpecularBsdf final : public Bsdf {
public:
    explicit SpecularBsdf(std::int32_t firstCell) : firstCell_(firstCell) {}

    void sample(const ScatterQuery& q, Scattering& result) const override {
        const float* n = q.normal;
        const float cosine = q.wo[0] * n[0] + q.wo[1] * n[1] + q.wo[2] * n[2];
        float side = 0.0F;
        for (int i = 0; i < 3; ++i) {
            result.wi[i] = 2.0F * cosine * n[i] - q.wo[i];
            side += result.wi[i] * q.geometric[i];
        }
        // An interpolated normal can send the reflection below the surface: nothing comes from there.
        if (!(side > 0.0F)) return;
        result.kind = Scattering::Kind::delta;
        for (int k = 0; k < q.wavelengths; ++k) {
            const SpectralCell& cell = q.spectra[firstCell_ + q.cells[k]];
            result.weight[k] = cell.value + cell.rise * q.inCell[k];
        }
    }

private:
    std::int32_t firstCell_;
};

BsdfModel makeSpecular(const node::Node& node, Translation& translation, SpectralTables& tables) {
    const int table = bakeReflectance(node.child("reflectance"), node, translation, tables);
    return {SurfaceKind::generic, -1, std::make_unique<SpecularBsdf>(table * tables.grid().cells), false};
}

const bool kKnown = bsdfClasses().add("specular", makeSpecular);

}  // namespace
}  // namespace nemra::core
