/// A client, as the worker that it is connected to knows it.
#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "engine/core/worker/incoming.h"
#include "engine/core/worker/messages.h"
#include "engine/core/worker/worker_job.h"

namespace nemra::core::worker {

struct Client {
    using Clock = std::chrono::steady_clock;

    Clock::time_point lastHeard = Clock::now();
    Clock::time_point lastTold = Clock::now();
    std::deque<std::string> outbox;  ///< messages that aren't on their way yet
    SceneOffer offer;                ///< what the client wants rendered
    std::optional<Incoming> incoming;
    std::shared_ptr<WorkerJob> job;
    bool isLeaving = false;  ///< to be dropped as soon as the outbox is empty

    Client() = default;
    Client(Client&&) = default;
    Client& operator=(Client&&) = default;
    ~Client() {
        if (job) job->cancel();
    }
};

}  // namespace nemra::core::worker
