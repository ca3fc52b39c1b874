/// Calls from the engine into the host (an interpreter, usually), made safe against what hosts do in them:
/// they throw, they end the calling thread by a forced unwind at their exit, and they close down while we call.
#pragma once

#include <cxxabi.h>

#include <exception>
#include <functional>
#include <new>
#include <string>
#include <utility>

#include "engine/common/log.h"

namespace nemra {

/// Counts a callback in for as long as it lives. Empty if the host has closed the gate: then don't call.
class NEMRA_API GatePass {
public:
    GatePass() noexcept;
    ~GatePass();
    GatePass(const GatePass&) = delete;
    GatePass& operator=(const GatePass&) = delete;
    explicit operator bool() const noexcept { return open_; }

private:
    bool open_;
};

/// Closes the gate for good and waits at most `timeoutMs` for the callbacks in flight. True if none is left.
NEMRA_API bool closeCallbackGate(int timeoutMs);

/// Keeps an exception alive for ever: the destructor of what a host threw may need the host's lock, which this thread can't take.
/// False once `limit` are kept; then the caller should stop calling that callback.
NEMRA_API bool keepForever(std::exception_ptr thrown) noexcept;

/// Empty where memory ends.
inline void tell(std::string& what, const char* text) noexcept {
    try {
        what = text;
    } catch (const std::bad_alloc&) {
        what.clear();
    }
}

/// How a call went: `empty` if the host has taken away what its function calls (std::bad_function_call), as if there were none.
enum class HostCall { done, empty, closed, threw };

/// The host's own lock, if it has told of one: taken before and given back after each callback. Then whether an object of the
/// host is still there can be decided inside the callback, and holds to its end: the host destroys objects under its lock.
struct HostLock {
    int (*acquire)() = nullptr;  ///< gives what `release` wants back; may be called by a thread that holds the lock
    void (*release)(int) = nullptr;
};
/// Before the first callback, and once: a second lock is left alone.
NEMRA_API void setHostLock(HostLock lock);
/// Empty pointers without one.
NEMRA_API HostLock hostLock() noexcept;

/// Calls `callback` through the gate and under the host's lock, if that is known. The caller holds no lock. Never put a noexcept
/// frame around it: the interpreter may end this thread inside the callback by a forced unwind, which is passed on.
/// What it throws is kept, and told in `what`.
template <class Callback>
HostCall callHost(Callback&& callback, std::string& what) {
    const GatePass pass;
    if (!pass) return HostCall::closed;
    const HostLock lock = hostLock();
    int token = 0;
    HostCall outcome = HostCall::done;
    // In an unwind that ends the thread the lock isn't given back: the host took it away.
    try {
        if (lock.acquire) token = lock.acquire();
        std::forward<Callback>(callback)();
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (const std::bad_function_call&) {
        outcome = HostCall::empty;
    } catch (const std::exception& e) {
        outcome = HostCall::threw;
        keepForever(std::current_exception());
        tell(what, e.what());  // here, inside the gate: a host's exception may need the host's lock to say what it is
    } catch (...) {
        outcome = HostCall::threw;
        keepForever(std::current_exception());
        tell(what, "an unknown fault");
    }
    if (lock.release) lock.release(token);
    return outcome;
}

}  // namespace nemra
