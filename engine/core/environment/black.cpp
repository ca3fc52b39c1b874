#include "engine/core/environment/environment.h"

namespace nemra::core {
namespace {

EnvironmentModel makeBlack(const node::Node&, Translation&, SpectralTables&) { return {}; }

const bool kKnown = environmentClasses().add("black", makeBlack);

}  // namespace
}  // namespace nemra::core
