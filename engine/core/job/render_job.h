/// One render from its start to its last result.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "engine/core/job/dispatcher.h"
#include "engine/core/job/halt_condition.h"
#include "engine/core/job/tile_schedule.h"
#include "engine/core/render.h"

namespace nemra::core {

struct JobPlan {
    std::shared_ptr<const PreparedScene> scene;
    int threads = 1;
    HaltCondition halt;
    std::string outputFile;  ///< absolute; "" for none
    bool outputRaw = false;  ///< the file takes the sensor's channels instead of the output node's picture
};

/// States go by these arrows only: running to paused and back, both to stopping, stopping to idle. Render threads take tiles, one
/// conductor thread watches conditions and makes results. All threads are detached and keep the job alive; nobody waits for them
/// except, with a limit, the end of the process (job_threads.h).
class RenderJob : public std::enable_shared_from_this<RenderJob> {
public:
    /// Starts the threads. The state is running, and posted, when it returns. Throws std::system_error if no thread can be had.
    static std::shared_ptr<RenderJob> start(JobPlan plan, std::shared_ptr<Dispatcher> dispatcher);

    RenderJob(JobPlan plan, std::shared_ptr<Dispatcher> dispatcher);

    NemraRendererState_t state() const;
    /// Asks for the end; the last result comes through the dispatcher. Nothing happens if the job is stopping or idle.
    void stop();
    /// The end without a result.
    void cancel();
    /// True pauses, false resumes. True if the job is in the wanted state afterwards. A halt condition that has paused the render
    /// doesn't count again after it is resumed, until a new one is set.
    bool setPaused(bool paused);
    void setHalt(const HaltCondition& halt);
    /// Asks for an update as soon as possible.
    void requestUpdate();
    double statistic(nemra_renderer_stat_t type) const;

private:
    using Clock = std::chrono::steady_clock;

    void begin();
    void work();
    void guardThread(void (RenderJob::*body)());
    void renderTask(const TileSchedule::Task& task);
    bool waitWhilePaused();
    void conduct();
    void whileRunning(std::unique_lock<std::mutex>& lock);
    bool haltReached() const;
    void halt(std::unique_lock<std::mutex>& lock);
    void finish(std::unique_lock<std::mutex>& lock);
    void endWithoutResult();
    void postUpdate(std::unique_lock<std::mutex>& lock);
    void setState(NemraRendererState_t state, Dispatcher::From from);
    void beginStopping(Dispatcher::From from);
    void tickStatistics(Clock::time_point now);
    std::shared_ptr<Raw> makeRaw(std::shared_ptr<const Film> film) const;
    std::shared_ptr<Raw> snapshot() const;
    std::shared_ptr<Film> copyFilm() const;
    std::uint32_t sampleLimit() const;
    double elapsed(Clock::time_point now) const;
    RenderCounts counts(Clock::time_point now) const;

    std::shared_ptr<const PreparedScene> scene_;  ///< given back at the end
    const std::shared_ptr<Dispatcher> dispatcher_;
    const double pixels_;
    const int threads_;
    const std::string outputFile_;
    const bool outputRaw_;

    std::shared_ptr<Film> film_;
    mutable std::vector<std::mutex> tileMutexes_;  ///< held while a tile of the film is written or read
    std::atomic<bool> cancel_{false};              ///< render threads leave off what they do
    std::atomic<bool> paused_{false};
    std::atomic<std::uint64_t> samples_{0};
    std::atomic<std::uint64_t> wrong_{0};

    mutable std::mutex mutex_;           ///< for all that follows
    std::condition_variable workers_;    ///< there may be work, or an end
    std::condition_variable conductor_;  ///< something for the conductor
    NemraRendererState_t state_ = NEMRA_RENDERER_IDLE;
    TileSchedule schedule_;
    int outstanding_ = 0;  ///< tasks handed out and not finished
    int resting_ = 0;      ///< of these, the ones that wait for the end of a pause
    HaltCondition halt_;
    bool haltDone_ = false;             ///< the condition has had its effect
    std::uint64_t haltGeneration_ = 0;  ///< conditions set so far
    bool silent_ = false;               ///< cancelled: no result is wanted
    bool updateRequested_ = false;
    bool saidNoUpdates_ = false;  ///< the conductor's own
    bool finishPosted_ = false;
    std::uint64_t samplesAtFinish_ = 0;  ///< that the last posted finish showed
    double elapsedBefore_ = 0.0;         ///< s, of running spans that are over
    Clock::time_point runningSince_;
    Clock::time_point nextStatistics_;
    Clock::time_point nextUpdate_;
    double updateInterval_ = 1.0;  ///< s
    Clock::time_point rateSince_;  ///< begin of the interval that the current rate is about
    std::uint64_t rateSamples_ = 0;
    double currentRate_ = 0.0;  ///< 1/s
};

}  // namespace nemra::core
