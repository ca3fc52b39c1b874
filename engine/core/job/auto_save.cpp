#include "engine/core/job/auto_save.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

#include "engine/common/log.h"
#include "engine/core/output/write_result.h"

namespace nemra::core {

namespace {

/// Where processors are short, a tenth of a render thread's share: the render is hardly slowed, and its end needn't wait for
/// long.
constexpr int kNiceness = 10;
constexpr double kLongest = 1.0e9;  // s

}  // namespace

void AutoSave::run(const Snapshot& snapshot) {
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), kNiceness);  // on Linux that is this thread
    const auto interval = std::chrono::duration<double>(std::min(seconds_, kLongest));
    std::unique_lock lock(mutex_);
    while (!changed_.wait_for(lock, interval, [&] { return ended_; })) {
        saving_ = true;
        lock.unlock();
        save(snapshot);
        lock.lock();
        saving_ = false;
        changed_.notify_all();
    }
}

void AutoSave::save(const Snapshot& snapshot) {
    std::string why;
    try {
        const log::Capture capture([&](const log::Message& message) { why = message.text; });
        const auto raw = snapshot();
        if (!raw || writeRaw(*raw, path_, "svraw")) return;
    } catch (const std::exception& e) {
        why = e.what();
    }
    if (!std::exchange(warned_, true)) log::warning(path_, "the render so far isn't saved: " + why);
}

void AutoSave::end() {
    std::unique_lock lock(mutex_);
    ended_ = true;
    changed_.notify_all();
    changed_.wait(lock, [&] { return !saving_; });
}

}  // namespace nemra::core
