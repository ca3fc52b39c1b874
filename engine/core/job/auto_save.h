/// Saving the result of a long render from time to time.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "engine/core/result/raw.h"

namespace nemra::core {

/// One thread runs it, and gives way to the render's own threads.
class AutoSave {
public:
    /// `path` as writeRaw takes it; `seconds` between two files.
    AutoSave(std::string path, double seconds) : path_(std::move(path)), seconds_(seconds) {}

    /// The result so far; null if there is nothing new. May throw std::bad_alloc.
    using Snapshot = std::function<std::shared_ptr<Raw>()>;
    /// Returns after end(). Whatever goes wrong is one warning.
    void run(const Snapshot& snapshot);
    /// Afterwards neither is a snapshot taken nor a file written; waits for one that is on its way.
    void end();

private:
    void save(const Snapshot& snapshot);

    const std::string path_;
    const double seconds_;
    bool warned_ = false;  ///< the thread's own

    std::mutex mutex_;  ///< for all that follows
    std::condition_variable changed_;
    bool ended_ = false;
    bool saving_ = false;
};

}  // namespace nemra::core
