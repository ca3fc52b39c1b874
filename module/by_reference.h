/// Member functions for binding. The library takes `self` of a member function by pointer, and None for a null pointer.
#pragma once

#include <utility>

namespace Nemra {

/// The member function with `self` by reference: None is then refused like any other wrong argument.
template <class Self, class Return, class Class, class... Args>
auto byReference(Return (Class::*member)(Args...) const) {
    return [member](const Self& self, Args... args) -> Return { return (self.*member)(std::forward<Args>(args)...); };
}

template <class Self, class Return, class Class, class... Args>
auto byReference(Return (Class::*member)(Args...)) {
    return [member](Self& self, Args... args) -> Return { return (self.*member)(std::forward<Args>(args)...); };
}

}  // namespace Nemra
