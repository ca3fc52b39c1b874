/// The outermost frame of every function of the flat interface: no C++ exception leaves it.
#pragma once

#include <cxxabi.h>

#include <exception>
#include <utility>

#include "engine/common/log.h"

namespace nemra {

template <class Result, class Body>
Result guarded(const char* function, Result fallback, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (const abi::__forced_unwind&) {
        throw;  // the interpreter is ending this thread; never swallow it
    } catch (const std::exception& e) {
        log::error(function, e.what());
    } catch (...) {
        log::error(function, "unknown fault");
    }
    return fallback;
}

template <class Body>
void guarded(const char* function, Body&& body) {
    guarded<bool>(function, false, [&] {
        std::forward<Body>(body)();
        return true;
    });
}

}  // namespace nemra
