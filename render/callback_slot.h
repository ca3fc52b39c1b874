/// Slots for Python callables that engine threads call through the module's trampolines.
#pragma once

#include <functional>

namespace Nemra {

/// Puts a copy of `next` into the slot; what stood there is dropped here, on the calling thread. No lock: a slot that is
/// replaced while the engine calls it is the script's race.
template <class Signature>
void replaceCallback(std::function<Signature>& slot, const std::function<Signature>& next) {
    std::function<Signature> former(next);
    former.swap(slot);
}

/// Empties the slot, and then drops what stood there: whoever calls the slot meanwhile finds it empty.
template <class Signature>
void emptyCallback(std::function<Signature>& slot) {
    replaceCallback(slot, std::function<Signature>());
}

}  // namespace Nemra
