/// Threads that work for render jobs and workers: detached, counted, and never inside the host.
#pragma once

#include <functional>
#include <memory>

namespace nemra::core {

/// Whose threads are to end with the process.
class Stoppable {
public:
    virtual ~Stoppable() = default;
    /// Ends its threads soon, without waiting for them.
    virtual void stopForGood() = 0;
};

/// Starts up to `count` threads that run `body`, and remembers the job for stopAllJobs. They take no signals: those belong to the
/// host's own threads. Gives the number of threads that could be had; none once stopAllJobs was called.
int startJobThreads(const std::shared_ptr<Stoppable>& job, const char* name, int count, const std::function<void()>& body);

/// Cancels every job of this process for good and waits, at most that long, until none of its threads runs. For the end of the
/// process: what a render thread uses is about to be taken down. True if no thread runs any more.
bool stopAllJobs(int timeoutMs);

}  // namespace nemra::core
