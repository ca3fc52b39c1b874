/// No signals for new threads: those belong to the host's own.
#pragma once

#include <pthread.h>
#include <signal.h>

namespace nemra {

/// While it lives, this thread takes no signals but those of its own faults; threads that it starts meanwhile never will.
class BlockedSignals {
public:
    BlockedSignals() noexcept {
        sigset_t all;
        sigfillset(&all);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGPROF}) sigdelset(&all, fault);
        pthread_sigmask(SIG_BLOCK, &all, &before_);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t before_{};
};

}  // namespace nemra
