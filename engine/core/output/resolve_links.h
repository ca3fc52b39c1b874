/// Outputs and filters that stand for others.
#pragma once

#include "engine/core/translate/translation.h"

namespace nemra::core {

/// The instrument with the links among its outputs, their filters and the children of both replaced by copies of what they stand
/// for, under the links' own names: a result outlives the scene in which they could be followed. The same node if it has no such
/// links. A link that leads nowhere stays, after the translation's warning.
NodePointer withoutLinks(const NodePointer& instrument, Translation& translation);

}  // namespace nemra::core
