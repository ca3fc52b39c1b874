#include "engine/core/job/render_job.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <numeric>
#include <optional>
#include <system_error>
#include <utility>

#include "engine/common/log.h"
#include "engine/core/film/arrays.h"
#include "engine/core/job/adaptive.h"
#include "engine/core/job/job_threads.h"
#include "engine/core/job/thread_time.h"
#include "engine/core/output/write_result.h"

namespace nemra::core {

namespace {

using Seconds = std::chrono::duration<double>;

/// What one call of the renderer should take: long against its own cost, short against the 100 ms in which a pause must work.
constexpr double kChunkSeconds = 0.010;
constexpr auto kStatisticsInterval = std::chrono::milliseconds(250);

/// Samples of each pixel that a piece for outside workers has at least, since each costs them a film to send.
constexpr std::uint32_t kOutsideSamples = 16;
/// And at most, of what each pixel has got by then: so the picture stays even.
constexpr double kOutsideShare = 0.5;
constexpr std::uint32_t kMostOutsideSamples = 4096;
/// Of what a worker may have in hand: it isn't given more for a lack that is less, since each gift is a message.
constexpr std::uint64_t kNegligible = 8;
/// Workers whose number isn't known should find smaller tiles in a small image, too.
constexpr int kOutsideThreads = 16;

template <class Duration>
auto ticks(double seconds) {
    return std::chrono::duration_cast<Duration>(Seconds(seconds));
}

TileGrid gridOf(const JobPlan& plan) {
    const int width = plan.scene->width();
    const int height = plan.scene->height();
    if (plan.adaptive) return {width, height, kAdaptiveTile};
    if (plan.from) return {width, height, plan.from->progress->tileSize};
    return TileGrid::fitting(width, height, std::max(1, plan.threads + (plan.hasOutsideWorkers ? kOutsideThreads : 0)));
}

/// Of a film that account is kept of.
RenderCounts countsOf(const Film& film, const std::vector<Piece>& done, double time) {
    RenderCounts counts{time, 0, 0};
    for (const Piece& piece : done) counts.samples += piece.samples();
    counts.wrong = counts.samples - std::accumulate(film.samples.begin(), film.samples.end(), std::uint64_t{0});
    return counts;
}

/// Of the film, and of what is derived from it for the host.
std::size_t copyBytes(const SharedFilm& film) {
    const TileGrid& grid = film.grid();
    const auto pixels = static_cast<std::size_t>(grid.width) * static_cast<std::size_t>(grid.height);
    constexpr std::size_t metaChannels = 3;
    return arrayBytes(pixels, film.channels()) + pixels * (film.channels() + metaChannels) * sizeof(double);
}

/// Here, so that the host doesn't wait for it at its first pixel.
void makeView(const Raw& raw) {
    try {
        raw.view();
    } catch (const std::bad_alloc&) {
        // Without a view there is still a result, which can be kept, and read when there is memory again.
    }
}

}  // namespace

RenderJob::RenderJob(JobPlan plan, std::shared_ptr<Dispatcher> dispatcher)
    : scene_(plan.scene),
      dispatcher_(std::move(dispatcher)),
      pixels_(static_cast<double>(scene_->width()) * scene_->height()),
      threads_(std::max(plan.hasOutsideWorkers ? 0 : 1, plan.threads)),
      outputFile_(std::move(plan.outputFile)),
      outputRaw_(plan.outputRaw),
      adaptive_(plan.adaptive),
      resumable_(plan.resumable),
      fingerprint_(plan.fingerprint),
      film_(*scene_, gridOf(plan)),
      schedule_(film_.grid(), plan.firstSample),
      piloting_(plan.adaptive),
      halt_(plan.halt),
      noise_(plan.haltNoise),
      clock_(plan.from ? plan.from->time : 0.0),
      timeBefore_(plan.from ? plan.from->time : 0.0),
      updates_(threads_, copyBytes(film_)) {
    if (!resumable_) return;
    film_.keepAccount(plan.from.get());
    schedule_.goOnFrom(film_.done());
    if (plan.from) {
        const auto& adaptive = plan.from->progress->adaptive;
        if (piloting_ && adaptive && !adaptive->shares.empty()) {
            schedule_.setShares(adaptive->pilot, adaptive->shares);
            piloting_ = false;
        }
        const RenderCounts before = countsOf(*plan.from->film, plan.from->progress->done, plan.from->time);
        samples_ = before.samples;
        wrong_ = before.wrong;
    }
    if (plan.saveInterval > 0.0) autoSave_ = std::make_unique<AutoSave>(outputFile_, plan.saveInterval);
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
        if (started < std::min(1, threads_) ||
            startJobThreads(self, "nemra-conduct", 1, [self] { self->guardThread(&RenderJob::conduct); }) == 0) {
            throw std::system_error(EAGAIN, std::generic_category(),
                                    "no thread for the render");  // the others find the state idle
        }
        updates_.begin(Clock::now());
        try {
            setState(NEMRA_RENDERER_RUNNING, Dispatcher::From::host);
        } catch (...) {
            state_ = NEMRA_RENDERER_IDLE;  // nobody would know of a render that goes on
            throw;
        }
    }
    if (autoSave_ && startJobThreads(self, "nemra-save", 1, [self] { self->guardThread(&RenderJob::autoSave); }) == 0) {
        log::warning("renderer", "the system gave no thread to save results");
    }
    wake();
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
            if (isLive()) beginStopping(Dispatcher::From::engine);
            conductor_.notify_all();
        }
    }
}

void RenderJob::wake() const {
    for (const auto& wake : wakes_) wake();
}

NemraRendererState_t RenderJob::state() const {
    const std::lock_guard lock(mutex_);
    return state_;
}

void RenderJob::setState(NemraRendererState_t state, Dispatcher::From from) {
    const auto now = Clock::now();
    if (state_ == NEMRA_RENDERER_RUNNING && state != NEMRA_RENDERER_RUNNING) clock_.rest(now);
    if (state == NEMRA_RENDERER_RUNNING) {
        clock_.run(now, samples_);
        nextStatistics_ = now + kStatisticsInterval;
    }
    state_ = state;
    paused_ = state == NEMRA_RENDERER_PAUSED;
    dispatcher_->postState(state, from);
}

void RenderJob::beginStopping(Dispatcher::From from) {
    // First, since memory for the news may be what is missing.
    cancel_ = true;
    outside_.clear();
    workers_.notify_all();
    conductor_.notify_all();
    setState(NEMRA_RENDERER_STOPPING, from);
}

void RenderJob::stop() {
    {
        const std::lock_guard lock(mutex_);
        if (isLive()) beginStopping(Dispatcher::From::host);
    }
    wake();
}

void RenderJob::cancel() {
    {
        const std::lock_guard lock(mutex_);
        silent_ = true;
        if (isLive()) beginStopping(Dispatcher::From::host);
    }
    wake();
}

bool RenderJob::setPaused(bool paused) {
    std::unique_lock lock(mutex_);
    if (state_ == NEMRA_RENDERER_RUNNING && paused) {
        setState(NEMRA_RENDERER_PAUSED, Dispatcher::From::host);
    } else if (state_ == NEMRA_RENDERER_PAUSED && !paused) {
        setState(NEMRA_RENDERER_RUNNING, Dispatcher::From::host);
        workers_.notify_all();
        conductor_.notify_all();
    }
    const bool isSo = state_ == (paused ? NEMRA_RENDERER_PAUSED : NEMRA_RENDERER_RUNNING);
    lock.unlock();
    wake();
    return isSo;
}

void RenderJob::setHalt(const HaltCondition& halt) {
    {
        const std::lock_guard lock(mutex_);
        halt_.set(halt);
        workers_.notify_all();
        conductor_.notify_all();
    }
    wake();
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
        const auto piece = state_ == NEMRA_RENDERER_RUNNING
                               ? schedule_.next(sampleLimit(), {.least = adaptive_ ? kAdaptivePiece : 1})
                               : std::nullopt;
        if (!piece) {
            if (outstanding_ == 0) conductor_.notify_all();
            workers_.wait(lock);
            continue;
        }
        ++outstanding_;
        lock.unlock();
        const double before = threadTime();
        try {
            renderPiece(*piece);
        } catch (...) {
            lock.lock();
            --outstanding_;
            throw;
        }
        const double took = threadTime() - before;
        lock.lock();
        renderSeconds_ += took;
        --outstanding_;
        if (outstanding_ == resting_) conductor_.notify_all();  // a pause may be waiting for just this piece
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

void RenderJob::renderPiece(const Piece& piece) {
    // A call of the renderer can't be paused, so a piece is cut into calls of kChunkSeconds by what the last one took: all of its
    // samples at once, fewer samples, or fewer rows. The samples' values don't depend on the cut.
    thread_local double secondsPerSample = 1.0e-3;  // a careful first guess: a row or so
    const PreparedScene::Tile tile = piece.tile;
    const int columns = tile.x1 - tile.x0;
    const std::uint32_t end = piece.first + piece.count;
    for (std::uint32_t first = piece.first; first < end;) {
        const double affordable = kChunkSeconds / secondsPerSample;
        const auto pixels = static_cast<double>(piece.pixels());
        const auto count = static_cast<std::uint32_t>(std::clamp(affordable / pixels, 1.0, static_cast<double>(end - first)));
        for (int y = tile.y0; y < tile.y1;) {
            const double rows = kChunkSeconds / secondsPerSample / (static_cast<double>(columns) * count);
            const int yEnd = y + static_cast<int>(std::clamp(rows, 1.0, static_cast<double>(tile.y1 - y)));
            if (!waitWhilePaused()) return;
            const auto before = Clock::now();
            const PreparedScene::Counts done = film_.render(*scene_, {{tile.x0, y, tile.x1, yEnd}, first, count}, cancel_);
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

// ---- Saving ------------------------------------------------------------------------------------------------------------------

void RenderJob::autoSave() {
    std::uint64_t saved = samples_;
    autoSave_->run([&]() -> std::shared_ptr<Raw> {
        const std::uint64_t now = samples_;
        return std::exchange(saved, now) == now ? nullptr : makeRaw(film_.copy(*scene_));
    });
}

// ---- Outside workers ---------------------------------------------------------------------------------------------------------

std::vector<RenderJob::HandedOut> RenderJob::takePieces(const Request& request) {
    std::vector<HandedOut> taken;
    const std::lock_guard lock(mutex_);
    if (state_ != NEMRA_RENDERER_RUNNING) return taken;
    const std::uint32_t limit = sampleLimit();
    const auto workers = static_cast<std::uint64_t>(threads_ + std::max(1, request.workers));
    const std::uint64_t left = schedule_.left(limit) + outside_.samples();
    const std::uint64_t hand = std::clamp<std::uint64_t>(left / (2 * workers), 1, std::max<std::uint64_t>(1, request.hand));
    if (request.held >= hand || hand - request.held < hand / kNegligible) return taken;
    const std::uint64_t wanted = hand - request.held;
    const double even = std::min<double>(kOutsideShare * static_cast<double>(samples_) / pixels_, kMostOutsideSamples);
    const double worth = static_cast<double>(request.each) / (static_cast<double>(film_.grid().size) * film_.grid().size);
    const auto least = static_cast<std::uint32_t>(std::max<double>(std::min(worth, even), kOutsideSamples));
    for (std::uint64_t sum = 0; sum < wanted;) {
        // Rather a little more in hand than a last piece that isn't worth its way.
        const auto piece = schedule_.next(limit, {least, std::max(wanted - sum, std::min(request.each, wanted))});
        if (!piece) break;
        taken.push_back({outside_.add(*piece), *piece});
        sum += piece->samples();
    }
    return taken;
}

bool RenderJob::deliver(std::uint64_t id, const Film& cutOut, PreparedScene::Counts done) {
    const auto kept = std::accumulate(cutOut.samples.begin(), cutOut.samples.end(), std::uint64_t{0});
    std::optional<Piece> piece;
    bool fits = false;
    {
        const std::lock_guard lock(mutex_);
        if (!isLive()) return false;
        piece = outside_.take(id);
        if (!piece) return false;
        fits = done.samples == piece->samples() && kept + done.wrong == done.samples && film_.fits(*piece, cutOut);
        if (fits) {
            ++outstanding_;
        } else {
            schedule_.giveBack(*piece);
            workers_.notify_all();
        }
    }
    if (!fits) {
        wake();
        return false;
    }
    film_.add(*piece, cutOut);
    samples_ += done.samples;
    wrong_ += done.wrong;
    const std::lock_guard lock(mutex_);
    --outstanding_;
    // A limit may be reached, or an end waited for; results come too often to wake the conductor with each.
    if (outstanding_ == 0 && (outside_.samples() == 0 || !isLive())) conductor_.notify_all();
    return true;
}

void RenderJob::giveBack(std::span<const std::uint64_t> ids) {
    {
        const std::lock_guard lock(mutex_);
        for (const std::uint64_t id : ids) {
            if (const auto piece = outside_.take(id)) schedule_.giveBack(*piece);
        }
        workers_.notify_all();
        conductor_.notify_all();
    }
    wake();
}

void RenderJob::endEarly(const std::string& why) {
    {
        const std::lock_guard lock(mutex_);
        if (!isLive()) return;
        if (!silent_) dispatcher_->postMessage({NEMRA_LOG_ERROR, "renderer", why}, Dispatcher::From::engine);
        beginStopping(Dispatcher::From::engine);
    }
    wake();
}

std::shared_ptr<const PreparedScene> RenderJob::scene() const {
    const std::lock_guard lock(mutex_);
    return scene_;
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
    wakeWithout(lock);
    conductor_.wait(lock, [&] { return outstanding_ == 0; });
    finish(lock);
}

void RenderJob::whileRunning(std::unique_lock<std::mutex>& lock) {
    if (haltReached()) {
        halt(lock);
        return;
    }
    if (piloting_ && isInTo(kPilotSamples)) {
        shareOut(lock);
        return;  // much may have changed meanwhile
    }
    const auto now = Clock::now();
    if (now >= nextStatistics_) tickStatistics(now);
    const bool looksAtNoise = noise_.isOn() && !halt_.isDone();
    if (looksAtNoise && now >= noise_.next()) {
        lookAtNoise(lock);
        return;
    }
    const bool isDue = updates_.isDue(now, threads_ > 0 ? renderSeconds_ : clock_.elapsed(now) - timeBefore_);
    if (std::exchange(updateRequested_, false) || isDue) {
        postUpdate(lock);
        return;
    }
    auto until = std::min(nextStatistics_, updates_.next());
    if (looksAtNoise) until = std::min(until, noise_.next());
    if (halt_.waitsForTime()) {
        const double left = std::min(halt_.secondsLeft(clock_.elapsed(now)), 1.0e6);
        until = std::min(until, now + ticks<Clock::duration>(left) + std::chrono::microseconds(1));
    }
    conductor_.wait_until(lock, until);
}

void RenderJob::lookAtNoise(std::unique_lock<std::mutex>& lock) {
    const std::uint64_t generation = halt_.generation();
    lock.unlock();
    const bool isQuiet = noise_.isQuiet(film_);
    lock.lock();
    if (isQuiet && generation == halt_.generation()) halt_.setQuiet();
}

bool RenderJob::haltReached() const {
    if (halt_.isDone()) return false;
    if (halt_.isQuiet() || halt_.isTimeUp(clock_.elapsed(Clock::now()))) return true;
    return isInTo(halt_.sampleLimit());
}

/// All samples below the limit are in the film.
bool RenderJob::isInTo(std::uint32_t limit) const {
    return outstanding_ == 0 && !outside_.anyBelow(limit, schedule_) && schedule_.allHandedOut(limit);
}

std::uint32_t RenderJob::sampleLimit() const noexcept {
    return piloting_ ? std::min(kPilotSamples, halt_.sampleLimit()) : halt_.sampleLimit();
}

/// Once the pilot is there, and nothing else: what each tile gets from now on.
void RenderJob::shareOut(std::unique_lock<std::mutex>& lock) {
    lock.unlock();  // nobody is at work, and nobody gets work: the limit is that of the pilot still
    auto shares = adaptiveShares(film_);
    lock.lock();
    schedule_.setShares(kPilotSamples, std::move(shares));
    piloting_ = false;
    workers_.notify_all();
    wakeWithout(lock);
}

void RenderJob::halt(std::unique_lock<std::mutex>& lock) {
    const std::uint64_t generation = halt_.generation();
    const auto action = halt_.condition().action;
    if (action == NEMRA_HALT_STOPS) {
        halt_.setDone();
        beginStopping(Dispatcher::From::engine);
        return;
    }
    if (action == NEMRA_HALT_PAUSES) {
        halt_.setDone();
        setState(NEMRA_RENDERER_PAUSED, Dispatcher::From::engine);
        wakeWithout(lock);
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
    if (generation == halt_.generation()) halt_.setDone();
    workers_.notify_all();
    wakeWithout(lock);
}

/// Wakes the outside workers while the lock isn't held.
void RenderJob::wakeWithout(std::unique_lock<std::mutex>& lock) const {
    lock.unlock();
    wake();
    lock.lock();
}

void RenderJob::finish(std::unique_lock<std::mutex>& lock) {
    const bool isNews = !silent_ && (!finishPosted_ || samples_ != samplesAtFinish_);
    const bool writes = !silent_ && !outputFile_.empty();
    std::shared_ptr<Raw> raw;
    lock.unlock();
    if (autoSave_) autoSave_->end();
    if (isNews || writes) raw = makeRaw(film_.release());
    if (isNews) makeView(*raw);
    if (writes) writeFinal(*raw, outputFile_, outputRaw_);
    lock.lock();
    setState(NEMRA_RENDERER_IDLE, Dispatcher::From::engine);
    // The finish is the last that is heard of a render: a script that waits for it may then drop everything.
    if (isNews) dispatcher_->postFinish(std::move(raw));
    lock.unlock();
    giveBackScene();
    wake();
}

/// The job itself lives on for its statistics.
void RenderJob::giveBackScene() {
    std::shared_ptr<const PreparedScene> scene;
    {
        const std::lock_guard lock(mutex_);
        scene.swap(scene_);
    }
    film_.release();
}

/// After a failure of the conductor: whoever waits for the finish must not wait for ever.
void RenderJob::endWithoutResult() {
    std::unique_lock lock(mutex_);
    if (isLive()) beginStopping(Dispatcher::From::engine);
    wakeWithout(lock);
    lock.unlock();
    if (autoSave_) autoSave_->end();
    lock.lock();
    conductor_.wait(lock, [&] { return outstanding_ == 0; });
    if (state_ == NEMRA_RENDERER_STOPPING) setState(NEMRA_RENDERER_IDLE, Dispatcher::From::engine);
    if (!silent_ && !finishPosted_) dispatcher_->postFinish(nullptr);
    lock.unlock();
    giveBackScene();
    wake();
}

void RenderJob::postUpdate(std::unique_lock<std::mutex>& lock) {
    lock.unlock();
    const double before = threadTime();
    std::shared_ptr<Raw> raw;
    const bool isWanted = dispatcher_->wants(Dispatcher::Slot::update);
    if (isWanted) raw = snapshot();
    if (raw) {
        dispatcher_->postUpdate(std::move(raw));
    } else if (isWanted && !std::exchange(saidNoUpdates_, true)) {
        log::warning("renderer", "there is no memory for a copy of the result: this update is left out");
    }
    const double took = threadTime() - before;
    lock.lock();
    if (isWanted) updates_.add(took);
}

void RenderJob::tickStatistics(Clock::time_point now) {
    clock_.tick(now, samples_);
    nextStatistics_ = now + kStatisticsInterval;
    dispatcher_->postStatistics();
}

std::shared_ptr<Raw> RenderJob::makeRaw(FilmState state) const {
    RenderCounts now;
    std::optional<AdaptiveProgress> adaptive;
    {
        const std::lock_guard lock(mutex_);
        now = counts(Clock::now());
        // Asked for when the film's copy is there already: as long as there are no shares it has nothing but the pilot.
        if (resumable_ && adaptive_) adaptive.emplace(AdaptiveProgress{kPilotSamples, schedule_.shares()});
    }
    // What was counted meanwhile isn't in this film.
    if (resumable_) now = countsOf(*state.film, state.done, now.time);
    auto raw = std::make_shared<Raw>(std::move(state.film), *scene_, now);
    if (resumable_) {
        raw->setProgress(std::make_shared<const RenderProgress>(
            RenderProgress{fingerprint_, film_.grid().size, std::move(state.done), std::move(adaptive)}));
    }
    return raw;
}

/// The result so far; null if there is no memory for it.
std::shared_ptr<Raw> RenderJob::snapshot() const {
    try {
        auto raw = makeRaw(film_.copy(*scene_));
        makeView(*raw);
        return raw;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

RenderCounts RenderJob::counts(Clock::time_point now) const { return {clock_.elapsed(now), samples_, wrong_}; }

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
        case NEMRA_STAT_SPS_CURRENT:
            return clock_.currentRate(rate(static_cast<double>(now.samples)));
        case NEMRA_STAT_WRONG_RATE:
            return rate(static_cast<double>(now.wrong));
        case NEMRA_STAT_HALT_TIME:
            return std::max(0.0, halt_.condition().time);
        case NEMRA_STAT_HALT_SPP:
            return std::max(0.0, halt_.condition().spp);
    }
    return 0.0;
}

}  // namespace nemra::core
