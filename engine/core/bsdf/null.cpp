#include "engine/core/bsdf/bsdf.h"

namespace nemra::core {
namespace {

/// Not there for light, but for what it emits.
class NullBsdf final : public Bsdf {
public:
    void sample(const ScatterQuery&, Scattering& result) const override { result.kind = Scattering::Kind::passes; }
};

BsdfModel makeNull(const node::Node&, Translation&, SpectralTables&) {
    return {SurfaceKind::generic, -1, std::make_unique<NullBsdf>(), true};
}

const bool kKnown = bsdfClasses().add("null", makeNull);

}  // namespace
}  // namespace nemra::core
