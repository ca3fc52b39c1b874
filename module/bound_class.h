/// py::class_ with one difference: a member function gets `self` by reference. The library passes it by pointer, and hands None
/// over as a null pointer, so that `Node.name(None)` would read through it; by reference, None is refused as a wrong argument.
#pragma once

#include <type_traits>
#include <utility>

#include "module/binding.h"

namespace Nemra {

template <class Self, class Return, class Class, class... Args>
auto byReference(Return (Class::*member)(Args...) const) {
    return [member](const Self& self, Args... args) -> Return { return (self.*member)(std::forward<Args>(args)...); };
}

template <class Self, class Return, class Class, class... Args>
auto byReference(Return (Class::*member)(Args...)) {
    return [member](Self& self, Args... args) -> Return { return (self.*member)(std::forward<Args>(args)...); };
}

template <class T, class... Options>
class BoundClass : public py::class_<T, Options...> {
    using Base = py::class_<T, Options...>;

public:
    using Base::Base;

    template <class... Extra>
    BoundClass& def(const char* name, Extra&&... extra) {
        return defNamed(name, std::forward<Extra>(extra)...);
    }
    /// Constructors.
    template <class Init, class... Extra, class = std::enable_if_t<!std::is_convertible_v<Init, const char*>>>
    BoundClass& def(Init&& init, const Extra&... extra) {
        Base::def(std::forward<Init>(init), extra...);
        return *this;
    }

private:
    template <class Function, class... Extra>
    BoundClass& defNamed(const char* name, Function&& function, const Extra&... extra) {
        if constexpr (std::is_member_function_pointer_v<std::decay_t<Function>>) {
            Base::def(name, byReference<T>(function), extra...);
        } else {
            Base::def(name, std::forward<Function>(function), extra...);
        }
        return *this;
    }
};

}  // namespace Nemra
