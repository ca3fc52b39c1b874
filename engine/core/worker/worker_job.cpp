#include "engine/core/worker/worker_job.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <exception>
#include <system_error>
#include <utility>

#include "engine/common/log.h"
#include "engine/core/job/halt_condition.h"
#include "engine/core/worker/cut_out_bytes.h"

namespace nemra::core::worker {

namespace {

using Clock = std::chrono::steady_clock;

/// Of results that the client hasn't taken yet; threads wait above it.
constexpr std::size_t kMostWaitingBytes = std::size_t{64} << 20U;
constexpr std::size_t kMostQueued = 1U << 16U;  // pieces
/// Pixels of a piece. Ours have 256 at most.
constexpr std::uint64_t kMostPixels = 1U << 14U;
/// As in a local render: what one call of the renderer should take, so that a pause works soon.
constexpr double kChunkSeconds = 0.010;

}  // namespace

WorkerJob::WorkerJob(Prepare prepare, std::function<void()> changed)
    : prepare_(std::move(prepare)), changed_(std::move(changed)) {}

std::shared_ptr<WorkerJob> WorkerJob::start(int threads, Prepare prepare, std::function<void()> changed) {
    auto job = std::make_shared<WorkerJob>(std::move(prepare), std::move(changed));
    if (startJobThreads(job, "nemra-worker", 1, [job] { job->run(true); }) == 0) {
        throw std::system_error(EAGAIN, std::generic_category(), "no thread for a client");
    }
    // They find nothing to do until the scene is ready.
    const int more = threads - 1;
    if (more > 0 && startJobThreads(job, "nemra-worker", more, [job] { job->run(false); }) < more) {
        log::warning("worker", "the system gives fewer threads than were asked for");
    }
    return job;
}

void WorkerJob::run(bool prepares) {
    try {
        if (prepares) prepare();
        work();
    } catch (const std::exception& e) {
        // Out of memory, most likely. The client has its pieces rendered elsewhere.
        cancel();
        post(Failure{std::string("the worker gives up: ") + e.what()});
    }
}

void WorkerJob::prepare() {
    std::string why = "the scene can't be rendered";
    bool isFirst = true;
    const log::Capture capture([&](const log::Message& message) {
        if (message.level == NEMRA_LOG_ERROR && std::exchange(isFirst, false)) why = message.source + ": " + message.text;
    });
    auto scene = prepare_();
    if (!scene) {
        cancel();
        return post(Failure{std::move(why)});
    }
    {
        const std::lock_guard lock(mutex_);
        scene_ = scene;
    }
    post(Prepared{std::move(scene)});
    wake_.notify_all();
}

void WorkerJob::work() {
    for (;;) {
        Work::Item item;
        std::shared_ptr<const PreparedScene> scene;
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock,
                       [&] { return cancel_ || (scene_ && !queue_.empty() && !paused_ && outcomeBytes_ < kMostWaitingBytes); });
            if (cancel_) return;
            item = queue_.front();
            queue_.pop_front();
            scene = scene_;
        }
        const auto film = scene->makeFilm(item.piece.tile);
        Result result{item.id, {}, {}};
        if (!renderPiece(*scene, item.piece, *film, result.counts)) return;
        result.bytes = cutOutBytes(*film);
        post(std::move(result));
    }
}

/// False if it was called off in the middle.
bool WorkerJob::renderPiece(const PreparedScene& scene, const Piece& piece, Film& film, PreparedScene::Counts& counts) {
    thread_local double secondsPerSample = 1.0e-3;
    const std::uint64_t end = piece.end();
    for (std::uint64_t first = piece.first; first < end;) {
        if (!waitWhilePaused()) return false;
        const double affordable = kChunkSeconds / secondsPerSample / static_cast<double>(piece.pixels());
        const auto count = static_cast<std::uint32_t>(std::clamp(affordable, 1.0, static_cast<double>(end - first)));
        const auto before = Clock::now();
        const auto done = scene.render(film, piece.tile, static_cast<std::uint32_t>(first), count, cancel_);
        counts.samples += done.samples;
        counts.wrong += done.wrong;
        const double seconds = std::chrono::duration<double>(Clock::now() - before).count();
        if (done.samples > 0) secondsPerSample = std::max(1.0e-9, seconds / static_cast<double>(done.samples));
        first += count;
    }
    return !cancel_;
}

bool WorkerJob::waitWhilePaused() {
    if (paused_) {
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [&] { return cancel_ || !paused_; });
    }
    return !cancel_;
}

void WorkerJob::post(Outcome outcome) {
    bool isUrgent = true;
    {
        const std::lock_guard lock(mutex_);
        if (const auto* const result = std::get_if<Result>(&outcome)) {
            const std::size_t before = std::exchange(outcomeBytes_, outcomeBytes_ + result->bytes.size());
            // Or else the client would only hear a while later that there is room for more work, or that it has all.
            isUrgent = (before < kPartBytes && outcomeBytes_ >= kPartBytes) || queue_.empty();
        }
        outcomes_.push_back(std::move(outcome));
    }
    if (isUrgent) changed_();
}

std::vector<WorkerJob::Outcome> WorkerJob::take(std::size_t bytes) {
    std::vector<Outcome> taken;
    {
        const std::lock_guard lock(mutex_);
        for (std::size_t sum = 0; !outcomes_.empty() && sum < bytes; outcomes_.pop_front()) {
            if (const auto* const result = std::get_if<Result>(&outcomes_.front())) {
                sum += result->bytes.size();
                outcomeBytes_ -= result->bytes.size();
            }
            taken.push_back(std::move(outcomes_.front()));
        }
    }
    if (!taken.empty()) wake_.notify_all();
    return taken;
}

bool WorkerJob::isRenderable(const Piece& piece) const {
    const PreparedScene::Tile& tile = piece.tile;
    return tile.x0 >= 0 && tile.y0 >= 0 && tile.x0 < tile.x1 && tile.y0 < tile.y1 && tile.x1 <= scene_->width() &&
           tile.y1 <= scene_->height() && piece.pixels() <= kMostPixels && piece.count > 0 &&
           piece.end() <= HaltCondition::kEndOfSamples;
}

bool WorkerJob::add(std::span<const Work::Item> items) {
    {
        const std::lock_guard lock(mutex_);
        if (!scene_ || queue_.size() + items.size() > kMostQueued) return false;
        if (!std::all_of(items.begin(), items.end(), [&](const Work::Item& item) { return isRenderable(item.piece); }))
            return false;
        queue_.insert(queue_.end(), items.begin(), items.end());
    }
    wake_.notify_all();
    return true;
}

void WorkerJob::setPaused(bool paused) {
    {
        const std::lock_guard lock(mutex_);
        paused_ = paused;
    }
    wake_.notify_all();
}

void WorkerJob::cancel() {
    {
        const std::lock_guard lock(mutex_);
        cancel_ = true;
        queue_.clear();
    }
    wake_.notify_all();
}

}  // namespace nemra::core::worker
