/// Callbacks from a thread that the interpreter doesn't know.
#pragma once

#include <cxxabi.h>

#include <exception>
#include <string>
#include <thread>

namespace probe {

/// Runs the body on a thread of its own and waits. "" or what it threw; the text is good until the next time.
template <class Body>
const char* onForeignThread(Body&& body) {
    static thread_local std::string outcome;
    std::string thrown;
    std::thread([&] {
        try {
            body();
        } catch (const abi::__forced_unwind&) {
            throw;  // the interpreter is ending this thread
        } catch (const std::exception& e) {
            thrown = e.what();
        } catch (...) {
            thrown = "something else";
        }
    }).join();
    outcome = thrown;
    return outcome.c_str();
}

}  // namespace probe
