/// One render from its start to its last result.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "engine/core/job/auto_save.h"
#include "engine/core/job/dispatcher.h"
#include "engine/core/job/halt_watch.h"
#include "engine/core/job/job_threads.h"
#include "engine/core/job/noise.h"
#include "engine/core/job/outside_pieces.h"
#include "engine/core/job/render_clock.h"
#include "engine/core/job/shared_film.h"
#include "engine/core/job/tile_schedule.h"
#include "engine/core/job/update_rate.h"
#include "engine/core/render.h"

namespace nemra::core {

struct JobPlan {
    std::shared_ptr<const PreparedScene> scene;
    int threads = 1;                 ///< of our own; without outside workers at least one
    bool hasOutsideWorkers = false;  ///< others take pieces of this render
    HaltCondition halt;
    double haltNoise = 0.0;  ///< ends the render as `halt` does, see relativeNoise; 0 or below for none
    std::string outputFile;  ///< absolute; "" for none
    bool outputRaw = false;  ///< the file takes the sensor's channels instead of the output node's picture
    bool adaptive = false;   ///< more samples where the picture is noisy, see adaptiveShares; not together with `firstSample`
    std::uint32_t firstSample = 0;  ///< the index of each pixel's first sample; others have those before
    bool resumable = false;  ///< a later render can go on from the results, and they are saved meanwhile; needs a svraw file
    std::uint64_t fingerprint = 0;            ///< what tells such a render from others, see fingerprintOf
    double saveInterval = 0.0;                ///< s between saved results; 0 or below for none but the last
    std::shared_ptr<const ResumePoint> from;  ///< what to go on from; null for the beginning
};

/// States go by these arrows only: running to paused and back, both to stopping, stopping to idle. Render threads take tiles, one
/// conductor thread watches conditions and makes results. All threads are detached and keep the job alive; nobody waits for them
/// except, with a limit, the end of the process (job_threads.h).
///
/// Outside workers, such as other machines, take pieces too and deliver them as cut-outs of the film. A limit of samples waits
/// for what they have in hand, so that each pixel has just as many; everything else that ends or pauses a render doesn't.
class RenderJob : public Stoppable, public std::enable_shared_from_this<RenderJob> {
public:
    /// Starts the threads. The state is running, and posted, when it returns. Throws std::system_error if no thread can be had.
    static std::shared_ptr<RenderJob> start(JobPlan plan, std::shared_ptr<Dispatcher> dispatcher);

    RenderJob(JobPlan plan, std::shared_ptr<Dispatcher> dispatcher);
    /// To be called whenever there may be new work for outside workers, a pause, a resume or an end: from any thread, also one of
    /// the host's with the host's lock in hand, so it must neither wait nor call this job. Before begin(); kept as long as the
    /// job.
    void addWake(std::function<void()> wake) { wakes_.push_back(std::move(wake)); }
    /// As start() does; once.
    void begin();

    NemraRendererState_t state() const;
    /// Asks for the end; the last result comes through the dispatcher. Nothing happens if the job is stopping or idle.
    void stop();
    /// The end without a result.
    void cancel();
    void stopForGood() override { cancel(); }
    /// True pauses, false resumes. True if the job is in the wanted state afterwards. A halt condition that has paused the render
    /// doesn't count again after it is resumed, until a new one is set.
    bool setPaused(bool paused);
    void setHalt(const HaltCondition& halt);
    /// Asks for an update as soon as possible.
    void requestUpdate();
    double statistic(nemra_renderer_stat_t type) const;

    // For outside workers; none of these waits for a callback or for a result to be made.

    struct HandedOut {
        std::uint64_t id;
        Piece piece;
    };
    /// What a worker asks for. Numbers of samples.
    struct Request {
        std::uint64_t hand;      ///< that it would like to have in hand
        std::uint64_t held = 0;  ///< of these, the ones that it has
        std::uint64_t each = 1;  ///< that a piece should have, so that what it takes to send one is little beside it
        int workers = 1;         ///< that ask, this one among them
    };
    /// Pieces for about what is lacking, or none yet while that is little. Towards the end a worker gets no more in hand than a
    /// part of what is left, so that a slow one isn't waited for (guided self-scheduling: Polychronopoulos and Kuck, IEEE Trans.
    /// Computers C-36(12), 1987). None if there is no work at the moment: paused, limit reached, stopping.
    std::vector<HandedOut> takePieces(const Request& request);
    /// Adds a piece's samples, which were rendered into a film of the piece's size (PreparedScene::makeFilm(Tile)), all of them.
    /// False and nothing happens if that piece isn't outstanding: it was given back, or the render is over. A film that doesn't
    /// fit is refused too, and its piece counts as given back.
    bool deliver(std::uint64_t id, const Film& cutOut, PreparedScene::Counts done);
    /// These pieces won't be delivered: others get them. Those that aren't outstanding are left out.
    void giveBack(std::span<const std::uint64_t> ids);
    /// For when nobody is left to render: an error message, then the end with what there is. Nothing if the end has begun
    /// already.
    void endEarly(const std::string& why);
    /// Null once the render is over.
    std::shared_ptr<const PreparedScene> scene() const;

private:
    using Clock = RenderClock::Clock;

    void work();
    void autoSave();
    void guardThread(void (RenderJob::*body)());
    void renderPiece(const Piece& piece);
    bool isLive() const noexcept { return state_ == NEMRA_RENDERER_RUNNING || state_ == NEMRA_RENDERER_PAUSED; }
    void wake() const;
    void wakeWithout(std::unique_lock<std::mutex>& lock) const;
    bool waitWhilePaused();
    void conduct();
    std::uint32_t sampleLimit() const noexcept;
    bool isInTo(std::uint32_t limit) const;
    void shareOut(std::unique_lock<std::mutex>& lock);
    void lookAtNoise(std::unique_lock<std::mutex>& lock);
    void whileRunning(std::unique_lock<std::mutex>& lock);
    bool haltReached() const;
    void halt(std::unique_lock<std::mutex>& lock);
    void finish(std::unique_lock<std::mutex>& lock);
    void endWithoutResult();
    void postUpdate(std::unique_lock<std::mutex>& lock);
    void setState(NemraRendererState_t state, Dispatcher::From from);
    void beginStopping(Dispatcher::From from);
    void tickStatistics(Clock::time_point now);
    std::shared_ptr<Raw> makeRaw(FilmState state) const;
    std::shared_ptr<Raw> snapshot() const;
    RenderCounts counts(Clock::time_point now) const;
    void giveBackScene();

    std::shared_ptr<const PreparedScene> scene_;  ///< given back at the end; our own threads read it without the lock
    const std::shared_ptr<Dispatcher> dispatcher_;
    const double pixels_;
    const int threads_;
    const std::string outputFile_;
    const bool outputRaw_;
    const bool adaptive_;
    const bool resumable_;
    const std::uint64_t fingerprint_;
    std::unique_ptr<AutoSave> autoSave_;        ///< null for none
    std::vector<std::function<void()>> wakes_;  ///< unchanged from begin() on

    SharedFilm film_;
    std::atomic<bool> cancel_{false};  ///< render threads leave off what they do
    std::atomic<bool> paused_{false};
    std::atomic<std::uint64_t> samples_{0};
    std::atomic<std::uint64_t> wrong_{0};

    mutable std::mutex mutex_;           ///< for all that follows
    std::condition_variable workers_;    ///< there may be work, or an end
    std::condition_variable conductor_;  ///< something for the conductor
    NemraRendererState_t state_ = NEMRA_RENDERER_IDLE;
    TileSchedule schedule_;
    OutsidePieces outside_;
    int outstanding_ = 0;    ///< pieces that a thread is at work on here, be it only to add what was delivered
    int resting_ = 0;        ///< of these, the ones that wait for the end of a pause
    bool piloting_ = false;  ///< all pixels get the pilot of adaptive sampling before anything else
    HaltWatch halt_;
    bool silent_ = false;  ///< cancelled: no result is wanted
    bool updateRequested_ = false;
    NoiseWatch noise_;            ///< the conductor's own
    bool saidNoUpdates_ = false;  ///< the conductor's own
    bool finishPosted_ = false;
    std::uint64_t samplesAtFinish_ = 0;  ///< that the last posted finish showed
    RenderClock clock_;                  ///< with the time of the render that this one goes on from
    Clock::time_point nextStatistics_;
    const double timeBefore_;     ///< s, of earlier sessions
    double renderSeconds_ = 0.0;  ///< of the processor, that the render threads have had for their pieces
    UpdateRate updates_;
};

}  // namespace nemra::core
