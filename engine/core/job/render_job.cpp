#include "engine/core/job/render_job.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

#include "engine/common/log.h"
#include "engine/core/job/job_threads.h"
#include "engine/core/output/write_result.h"

namespace nemra::core {

namespace {

using Seconds = std::chrono::duration<double>;

/// What one call of the renderer should take: long against its own cost, short against the 100 ms in which a pause must work.
constexpr double kChunkSeconds = 0.010;
constexpr auto kStatisticsInterval = std::chrono::milliseconds(250);
constexpr double kFirstUpdateSeconds = 1.0;
constexpr double kUpdateGrowth = 1.25;
constexpr double kLongestUpdateSeconds = 10.0;

template <class Duration>
auto ticks(double seconds) {
    return std::chrono::duration_cast<Duration>(Seconds(seconds));
}

}  // namespace

RenderJob::RenderJob(JobPlan plan, std::shared_ptr<Dispatcher> dispatcher)
    : scene_(std::move(plan.scene)),
      dispatcher_(std::move(dispatcher)),
      pixels_(static_cast<double>(scene_->width()) * scene_->height()),
      threads_(std::max(1, plan.threads)),
      outputFile_(std::move(plan.outputFile)),
      outputRaw_(plan.outputRaw),
      film_(scene_->makeFilm()),
      schedule_(scene_->width(), scene_->height(), threads_),
      halt_(plan.halt) {
    tileMutexes_ = std::vector<std::mutex>(schedule_.tileCount());
}

std::shared_ptr<RenderJob> RenderJob::start(JobPlan plan, std::shared_ptr<Dispatcher> dispatcher) {
    auto job = std::make_shared<RenderJob>(std::move(plan), std::move(dispatcher));
    job->begin();
    return job;
}

void RenderJob::begin() {
    const auto self = shared_from_this();
    int started = 0;
    {
        const std::lock_guard lock(mutex_);  // the new threads wait for it, so nothing is heard of them before "running"
        started = startJobThreads(self, "nemra-render", threads_, [self] { self->guardThread(&RenderJob::work); });
        if (started == 0 || startJobThreads(self, "nemra-conduct", 1, [self] { self->guardThread(&RenderJob::conduct); }) == 0) {
            throw std::system_error(EAGAIN, std::generic_category(),
                                    "no thread for the render");  // the others find the state idle
        }
        updateInterval_ = kFirstUpdateSeconds;
        nextUpdate_ = Clock::now() + ticks<Clock::duration>(kFirstUpdateSeconds);
        try {
            setState(NEMRA_RENDERER_RUNNING, Dispatcher::From::host);
        } catch (...) {
            state_ = NEMRA_RENDERER_IDLE;  // nobody would know of a render that goes on
            throw;
        }
    }
    if (started < threads_) {
        log::warning("renderer", "the system gave " + std::to_string(started) + " of " + std::to_string(threads_) + " threads");
    }
}

void RenderJob::guardThread(void (RenderJob::*body)()) {
    const log::Capture capture(
        [this](const log::Message& message) { dispatcher_->postMessage(message, Dispatcher::From::engine); });
    try {
        (this->*body)();
    } catch (const std::exception& e) {
        // Out of memory, most likely. The render ends with what there is.
        log::error("renderer", std::string("the render ends early: ") + e.what());
        if (body == &RenderJob::conduct) {
            endWithoutResult();
        } else {
            const std::lock_guard lock(mutex_);
            --outstanding_;
            if (state_ == NEMRA_RENDERER_RUNNING || state_ == NEMRA_RENDERER_PAUSED) beginStopping(Dispatcher::From::engine);
            conductor_.notify_all();
        }
    }
}

NemraRendererState_t RenderJob::state() const {
    const std::lock_guard lock(mutex_);
    return state_;
}

void RenderJob::setState(NemraRendererState_t state, Dispatcher::From from) {
    const auto now = Clock::now();
    if (state_ == NEMRA_RENDERER_RUNNING && state != NEMRA_RENDERER_RUNNING) elapsedBefore_ = elapsed(now);
    if (state == NEMRA_RENDERER_RUNNING) {
        runningSince_ = rateSince_ = now;
        rateSamples_ = samples_;
        nextStatistics_ = now + kStatisticsInterval;
    }
    state_ = state;
    paused_ = state == NEMRA_RENDERER_PAUSED;
    dispatcher_->postState(state, from);
}

void RenderJob::beginStopping(Dispatcher::From from) {
    // First, since memory for the news may be what is missing.
    cancel_ = true;
    workers_.notify_all();
    conductor_.notify_all();
    setState(NEMRA_RENDERER_STOPPING, from);
}

void RenderJob::stop() {
    const std::lock_guard lock(mutex_);
    if (state_ == NEMRA_RENDERER_RUNNING || state_ == NEMRA_RENDERER_PAUSED) beginStopping(Dispatcher::From::host);
}

void RenderJob::cancel() {
    const std::lock_guard lock(mutex_);
    silent_ = true;
    if (state_ == NEMRA_RENDERER_RUNNING || state_ == NEMRA_RENDERER_PAUSED) beginStopping(Dispatcher::From::host);
}

bool RenderJob::setPaused(bool paused) {
    const std::lock_guard lock(mutex_);
    if (state_ == NEMRA_RENDERER_RUNNING && paused) {
        setState(NEMRA_RENDERER_PAUSED, Dispatcher::From::host);
    } else if (state_ == NEMRA_RENDERER_PAUSED && !paused) {
        setState(NEMRA_RENDERER_RUNNING, Dispatcher::From::host);
        workers_.notify_all();
        conductor_.notify_all();
    }
    return state_ == (paused ? NEMRA_RENDERER_PAUSED : NEMRA_RENDERER_RUNNING);
}

void RenderJob::setHalt(const HaltCondition& halt) {
    const std::lock_guard lock(mutex_);
    halt_ = halt;
    haltDone_ = false;
    ++haltGeneration_;
    workers_.notify_all();
    conductor_.notify_all();
}

void RenderJob::requestUpdate() {
    const std::lock_guard lock(mutex_);
    updateRequested_ = true;
    conductor_.notify_all();
}

// ---- Render threads ----------------------------------------------------------------------------------------------------------

void RenderJob::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        if (state_ == NEMRA_RENDERER_STOPPING || state_ == NEMRA_RENDERER_IDLE) return;
        const auto task = state_ == NEMRA_RENDERER_RUNNING ? schedule_.next(sampleLimit()) : std::nullopt;
        if (!task) {
            if (outstanding_ == 0) conductor_.notify_all();
            workers_.wait(lock);
            continue;
        }
        ++outstanding_;
        lock.unlock();
        renderTask(*task);
        lock.lock();
        --outstanding_;
        schedule_.finished(task->tile);
        workers_.notify_all();
        if (outstanding_ == 0) conductor_.notify_all();
    }
}

bool RenderJob::waitWhilePaused() {
    if (paused_) {
        std::unique_lock lock(mutex_);
        ++resting_;
        conductor_.notify_all();
        workers_.wait(lock, [&] { return state_ != NEMRA_RENDERER_PAUSED; });
        --resting_;
    }
    return !cancel_;
}

void RenderJob::renderTask(const TileSchedule::Task& task) {
    // A call of the renderer can't be paused, so a task is cut into calls of kChunkSeconds by what the last one took: all of its
    // samples at once, fewer samples, or fewer rows. The samples' values don't depend on the cut.
    thread_local double secondsPerSample = 1.0e-3;  // a careful first guess: a row or so
    const PreparedScene::Tile tile = schedule_.tile(task.tile);
    const int columns = tile.x1 - tile.x0;
    const std::uint32_t end = task.first + task.count;
    for (std::uint32_t first = task.first; first < end;) {
        const double affordable = kChunkSeconds / secondsPerSample;
        const double pixels = static_cast<double>(columns) * (tile.y1 - tile.y0);
        const auto count = static_cast<std::uint32_t>(std::clamp(affordable / pixels, 1.0, static_cast<double>(end - first)));
        for (int y = tile.y0; y < tile.y1;) {
            const double rows = kChunkSeconds / secondsPerSample / (static_cast<double>(columns) * count);
            const int yEnd = y + static_cast<int>(std::clamp(rows, 1.0, static_cast<double>(tile.y1 - y)));
            if (!waitWhilePaused()) return;
            const auto before = Clock::now();
            PreparedScene::Counts done;
            {
                const std::lock_guard lock(tileMutexes_[task.tile]);
                done = scene_->render(*film_, {tile.x0, y, tile.x1, yEnd}, first, count, cancel_);
            }
            samples_ += done.samples;
            wrong_ += done.wrong;
            if (done.samples > 0) {
                secondsPerSample = std::max(1.0e-9, Seconds(Clock::now() - before).count() / static_cast<double>(done.samples));
            }
            y = yEnd;
        }
        first += count;
    }
}

// ---- The conductor -----------------------------------------------------------------------------------------------------------

void RenderJob::conduct() {
    std::unique_lock lock(mutex_);
    if (state_ == NEMRA_RENDERER_IDLE) return;  // called off before it began
    while (state_ != NEMRA_RENDERER_STOPPING) {
        if (state_ == NEMRA_RENDERER_RUNNING) {
            whileRunning(lock);
        } else if (std::exchange(updateRequested_, false)) {
            postUpdate(lock);
        } else {
            conductor_.wait(lock);
        }
    }
    conductor_.wait(lock, [&] { return outstanding_ == 0; });
    finish(lock);
}

void RenderJob::whileRunning(std::unique_lock<std::mutex>& lock) {
    if (haltReached()) {
        halt(lock);
        return;
    }
    const auto now = Clock::now();
    if (now >= nextStatistics_) tickStatistics(now);
    const bool isDue = now >= nextUpdate_;
    if (isDue) {
        updateInterval_ = std::min(updateInterval_ * kUpdateGrowth, kLongestUpdateSeconds);
        nextUpdate_ = now + ticks<Clock::duration>(updateInterval_);
    }
    if (std::exchange(updateRequested_, false) || isDue) {
        postUpdate(lock);
        return;  // much may have changed meanwhile
    }
    auto until = std::min(nextStatistics_, nextUpdate_);
    if (halt_.hasTime() && !haltDone_) {
        const double left = std::min(halt_.time - elapsed(now), 1.0e6);
        until = std::min(until, now + ticks<Clock::duration>(left) + std::chrono::microseconds(1));
    }
    conductor_.wait_until(lock, until);
}

bool RenderJob::haltReached() const {
    if (haltDone_) return false;
    if (halt_.hasTime() && elapsed(Clock::now()) >= halt_.time) return true;
    // A scene can't take more samples than their numbers reach, so the schedule's own end is one too.
    return outstanding_ == 0 && schedule_.handedOut() >= sampleLimit();
}

void RenderJob::halt(std::unique_lock<std::mutex>& lock) {
    const std::uint64_t generation = haltGeneration_;
    if (halt_.action == NEMRA_HALT_STOPS) {
        haltDone_ = true;
        beginStopping(Dispatcher::From::engine);
        return;
    }
    if (halt_.action == NEMRA_HALT_PAUSES) {
        haltDone_ = true;
        setState(NEMRA_RENDERER_PAUSED, Dispatcher::From::engine);
        conductor_.wait(lock, [&] { return resting_ == outstanding_ || state_ != NEMRA_RENDERER_PAUSED; });
        if (state_ == NEMRA_RENDERER_STOPPING) return;
    }
    // Where the condition is a number of samples, the render threads still stand at its limit: the copy has just that many in
    // each pixel. Only then may they go on.
    const std::uint64_t samples = samples_;
    lock.unlock();
    std::shared_ptr<Raw> raw = snapshot();
    if (!raw) log::error("renderer", "there is no memory for a copy of the result: the render stops");
    lock.lock();
    if (!raw) {
        if (state_ != NEMRA_RENDERER_STOPPING) beginStopping(Dispatcher::From::engine);
        return;
    }
    samplesAtFinish_ = samples;
    finishPosted_ = true;
    dispatcher_->postFinish(std::move(raw));
    if (generation == haltGeneration_) haltDone_ = true;
    workers_.notify_all();
}

void RenderJob::finish(std::unique_lock<std::mutex>& lock) {
    const bool isNews = !silent_ && (!finishPosted_ || samples_ != samplesAtFinish_);
    const bool writes = !silent_ && !outputFile_.empty();
    std::shared_ptr<Raw> raw;
    lock.unlock();
    if (isNews || writes) raw = makeRaw(std::move(film_));
    if (writes) writeFinal(*raw, outputFile_, outputRaw_);
    lock.lock();
    setState(NEMRA_RENDERER_IDLE, Dispatcher::From::engine);
    // The finish is the last that is heard of a render: a script that waits for it may then drop everything.
    if (isNews) dispatcher_->postFinish(std::move(raw));
    lock.unlock();
    scene_.reset();  // the job itself lives on for its statistics
    film_.reset();
}

/// After a failure of the conductor: whoever waits for the finish must not wait for ever.
void RenderJob::endWithoutResult() {
    std::unique_lock lock(mutex_);
    if (state_ == NEMRA_RENDERER_RUNNING || state_ == NEMRA_RENDERER_PAUSED) beginStopping(Dispatcher::From::engine);
    conductor_.wait(lock, [&] { return outstanding_ == 0; });
    if (state_ == NEMRA_RENDERER_STOPPING) setState(NEMRA_RENDERER_IDLE, Dispatcher::From::engine);
    if (!silent_ && !finishPosted_) dispatcher_->postFinish(nullptr);
    lock.unlock();
    scene_.reset();
    film_.reset();
}

void RenderJob::postUpdate(std::unique_lock<std::mutex>& lock) {
    lock.unlock();
    std::shared_ptr<Raw> raw;
    const bool isWanted = dispatcher_->wants(Dispatcher::Slot::update);
    if (isWanted) raw = snapshot();
    if (raw) {
        dispatcher_->postUpdate(std::move(raw));
    } else if (isWanted && !std::exchange(saidNoUpdates_, true)) {
        log::warning("renderer", "there is no memory for a copy of the result: this update is left out");
    }
    lock.lock();
}

void RenderJob::tickStatistics(Clock::time_point now) {
    const double seconds = Seconds(now - rateSince_).count();
    const std::uint64_t samples = samples_;
    if (seconds > 0.0) currentRate_ = static_cast<double>(samples - rateSamples_) / seconds;
    rateSince_ = now;
    rateSamples_ = samples;
    nextStatistics_ = now + kStatisticsInterval;
    dispatcher_->postStatistics();
}

std::shared_ptr<Film> RenderJob::copyFilm() const {
    // Tile by tile, so that render threads wait for this copy only where they are just about to go on.
    std::shared_ptr<Film> copy = scene_->makeFilm();
    const std::size_t channels = film_->channels.size();
    const auto copyRange = [](const auto& from, auto& to, std::size_t first, std::size_t count) {
        if (!from.empty())
            std::copy_n(from.begin() + static_cast<std::ptrdiff_t>(first), count,
                        to.begin() + static_cast<std::ptrdiff_t>(first));
    };
    for (std::size_t i = 0; i < tileMutexes_.size(); ++i) {
        const PreparedScene::Tile tile = schedule_.tile(i);
        const auto rows = static_cast<std::size_t>(tile.y1 - tile.y0);
        const std::lock_guard lock(tileMutexes_[i]);
        for (int x = tile.x0; x < tile.x1; ++x) {
            const std::size_t pixel = film_->pixel(x, tile.y0);
            copyRange(film_->high, copy->high, pixel * channels, rows * channels);
            copyRange(film_->low, copy->low, pixel * channels, rows * channels);
            copyRange(film_->samples, copy->samples, pixel, rows);
            copyRange(film_->squares, copy->squares, pixel, rows);
            copyRange(film_->depth, copy->depth, pixel, rows);
            copyRange(film_->depthSamples, copy->depthSamples, pixel, rows);
        }
    }
    return copy;
}

std::shared_ptr<Raw> RenderJob::makeRaw(std::shared_ptr<const Film> film) const {
    RenderCounts now;
    {
        const std::lock_guard lock(mutex_);
        now = counts(Clock::now());
    }
    auto raw = std::make_shared<Raw>(std::move(film), *scene_, now);
    try {
        raw->view();  // made here, so that the host doesn't wait for it at its first pixel
    } catch (const std::bad_alloc&) {
        // Without a view there is still a result, which can be kept, and read when there is memory again.
    }
    return raw;
}

/// The result so far; null if there is no memory for it.
std::shared_ptr<Raw> RenderJob::snapshot() const {
    try {
        return makeRaw(copyFilm());
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::uint32_t RenderJob::sampleLimit() const { return haltDone_ ? HaltCondition::kEndOfSamples : halt_.sampleLimit(); }

double RenderJob::elapsed(Clock::time_point now) const {
    return state_ == NEMRA_RENDERER_RUNNING ? elapsedBefore_ + Seconds(now - runningSince_).count() : elapsedBefore_;
}

RenderCounts RenderJob::counts(Clock::time_point now) const { return {elapsed(now), samples_, wrong_}; }

double RenderJob::statistic(nemra_renderer_stat_t type) const {
    const std::lock_guard lock(mutex_);
    const RenderCounts now = counts(Clock::now());
    const auto rate = [&](double count) { return now.time > 0.0 ? count / now.time : 0.0; };
    switch (type) {
        case NEMRA_STAT_TIME:
            return now.time;
        case NEMRA_STAT_SAMPLES:
            return static_cast<double>(now.samples);
        case NEMRA_STAT_SPP:
            return pixels_ > 0.0 ? static_cast<double>(now.samples) / pixels_ : 0.0;
        case NEMRA_STAT_SPS_AVERAGE:
            return rate(static_cast<double>(now.samples));
        // Before the first interval is over the average is the best there is.
        case NEMRA_STAT_SPS_CURRENT:
            return currentRate_ > 0.0 ? currentRate_ : rate(static_cast<double>(now.samples));
        case NEMRA_STAT_WRONG_RATE:
            return rate(static_cast<double>(now.wrong));
        case NEMRA_STAT_HALT_TIME:
            return std::max(0.0, halt_.time);
        case NEMRA_STAT_HALT_SPP:
            return std::max(0.0, halt_.spp);
    }
    return 0.0;
}

}  // namespace nemra::core
