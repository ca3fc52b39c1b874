#include "engine/core/job/job_threads.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "engine/common/blocked_signals.h"

namespace nemra::core {

namespace {

/// For the whole process and never destroyed: threads may still run while it ends.
struct Running {
    std::mutex mutex;
    std::condition_variable ended;
    std::vector<std::weak_ptr<Stoppable>> jobs;
    int threads = 0;
    bool closed = false;
};

Running& running() {
    static Running* const instance = [] {
        auto* const made = new Running;
        // A child of a fork has none of its parent's threads, and must not find the lock held by one of them.
        pthread_atfork([] { running().mutex.lock(); }, [] { running().mutex.unlock(); },
                       [] {
                           Running& all = running();
                           all.jobs.clear();
                           all.threads = 0;
                           all.mutex.unlock();
                       });
        // Runs before the static destructors of what render threads use: those were registered earlier.
        std::atexit([] { stopAllJobs(1000); });
        return made;
    }();
    return *instance;
}

void countOut() {
    Running& all = running();
    const std::lock_guard lock(all.mutex);
    --all.threads;
    all.ended.notify_all();
}

}  // namespace

int startJobThreads(const std::shared_ptr<Stoppable>& job, const char* name, int count, const std::function<void()>& body) {
    Running& all = running();
    const BlockedSignals blocked;
    const std::lock_guard lock(all.mutex);
    if (all.closed) return 0;
    std::erase_if(all.jobs, [](const std::weak_ptr<Stoppable>& known) { return known.expired(); });
    all.jobs.push_back(job);
    for (int started = 0; started < count; ++started) {
        try {
            std::thread([name, body = std::function<void()>(body)]() mutable {
                pthread_setname_np(pthread_self(), name);
                std::function<void()>(std::exchange(body, nullptr))();
                countOut();  // last: by now nothing that the job kept alive is left to this thread
            }).detach();
        } catch (const std::system_error&) {
            return started;
        } catch (const std::bad_alloc&) {
            return started;
        }
        ++all.threads;
    }
    return count;
}

bool stopAllJobs(int timeoutMs) {
    Running& all = running();
    std::vector<std::weak_ptr<Stoppable>> jobs;
    {
        const std::lock_guard lock(all.mutex);
        all.closed = true;
        jobs.swap(all.jobs);
    }
    for (const auto& known : jobs) {
        if (const auto job = known.lock()) job->stopForGood();
    }
    std::unique_lock lock(all.mutex);
    return all.ended.wait_for(lock, std::chrono::milliseconds(std::max(0, timeoutMs)), [&] { return all.threads == 0; });
}

}  // namespace nemra::core
