/// What a worker renders for one client.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

#include "engine/common/buffer.h"
#include "engine/core/job/job_threads.h"
#include "engine/core/job/piece.h"
#include "engine/core/worker/messages.h"

namespace nemra::core::worker {

/// Render threads that take pieces from a queue and leave what these come to in another. Nobody waits for them: a job that is
/// called off ends by itself.
class WorkerJob : public Stoppable, public std::enable_shared_from_this<WorkerJob> {
public:
    /// The scene can be rendered from now on.
    struct Prepared {
        std::shared_ptr<const PreparedScene> scene;
    };
    /// Nothing more comes.
    struct Failure {
        std::string why;
    };
    struct Result {
        std::uint64_t id;
        PreparedScene::Counts counts;
        std::string bytes;
    };
    using Outcome = std::variant<Prepared, Failure, Result>;
    /// Makes the scene ready; called on one of the job's threads. What it emits as errors is the reason of a failure.
    using Prepare = std::function<std::shared_ptr<const PreparedScene>()>;

    /// `changed` is called on the job's threads when something has come out that shouldn't wait: everything but small results
    /// with others behind them.
    /// Throws std::system_error if there is no thread.
    static std::shared_ptr<WorkerJob> start(int threads, Prepare prepare, std::function<void()> changed);

    WorkerJob(Prepare prepare, std::function<void()> changed);

    /// False if one of them isn't a piece of this scene.
    bool add(std::span<const Work::Item> items);
    void setPaused(bool paused);
    void cancel();
    void stopForGood() override { cancel(); }
    /// Takes what there is, oldest first, and until about that many bytes.
    std::vector<Outcome> take(std::size_t bytes);

private:
    void run(bool prepares);
    void work();
    bool renderPiece(const PreparedScene& scene, const Piece& piece, Film& film, PreparedScene::Counts& counts);
    void prepare();
    bool waitWhilePaused();
    void post(Outcome outcome);
    bool isRenderable(const Piece& piece) const;

    const Prepare prepare_;
    const std::function<void()> changed_;
    std::atomic<bool> cancel_{false};
    std::atomic<bool> paused_{false};

    std::mutex mutex_;  ///< for what follows
    std::condition_variable wake_;
    std::shared_ptr<const PreparedScene> scene_;
    std::deque<Work::Item> queue_;
    std::deque<Outcome> outcomes_;
    std::size_t outcomeBytes_ = 0;
};

}  // namespace nemra::core::worker
