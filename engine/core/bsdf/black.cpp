#include "engine/core/bsdf/bsdf.h"

namespace nemra::core {
namespace {

BsdfModel makeBlack(const node::Node&, Translation&, SpectralTables&) { return {}; }

const bool kKnown = bsdfClasses().add("black", makeBlack);

}  // namespace
}  // namespace nemra::core
