/// One connection of a client to a worker, from its greeting to its end.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "engine/core/worker/remote_render.h"
#include "engine/core/worker/result_stream.h"

namespace nemra::core::worker {

/// Used by one thread. What the worker still had to do is given back to the job at the end.
class RemoteSession {
public:
    /// `name` is the worker's in messages.
    RemoteSession(RemoteRender& render, network::Link& link, std::string name);
    ~RemoteSession();
    RemoteSession(const RemoteSession&) = delete;
    RemoteSession& operator=(const RemoteSession&) = delete;

    enum class Ending {
        over,     ///< the render wants no more
        lost,     ///< the worker is gone
        refused,  ///< the worker can't render this
        stranger  ///< it doesn't know the password
    };
    /// Talks until one of these has come; begins with a connection that stands.
    Ending run();
    /// Why the worker was lost or has refused.
    const std::string& why() const noexcept { return why_; }

private:
    using Clock = std::chrono::steady_clock;
    std::optional<Ending> receive(std::span<const char> bytes);
    std::optional<Ending> take(const ResultPart& part);
    void makeFilmFor(const PreparedScene::Tile& tile);
    bool deliver(const ResultHead& head, std::span<const char> bytes);
    std::optional<Ending> lose(std::string why);
    void askForWork();
    void tellPause();
    bool send(const Message& message);
    bool flush();
    void measure();

    RemoteRender& render_;
    network::Link& link_;
    const std::string name_;
    const std::size_t channels_;  ///< of the scene's sensor
    std::string why_;
    std::deque<std::string> outbox_;
    std::uint64_t sent_ = 0;                        ///< bytes of the parcel
    bool isSending_ = false;                        ///< the parcel
    std::optional<Attendance::Presence> presence_;  ///< once the worker has shown that it knows the password
    bool isReady_ = false;                          ///< the worker has the scene
    bool isPaused_ = false;                         ///< as the worker knows it
    std::map<std::uint64_t, Piece> open_;           ///< that the worker has
    std::uint64_t openSamples_ = 0;
    ResultStream results_;
    std::unique_ptr<Film> film_;   ///< of the piece that came last, for the next one
    double threads_ = 1.0;         ///< of the worker
    double target_ = 0.0;          ///< samples that the worker should have in hand
    double rate_ = 0.0;            ///< samples per second
    std::uint64_t delivered_ = 0;  ///< samples since the last measurement
    Clock::time_point measuredAt_;
    Clock::time_point lastHeard_;
    Clock::time_point lastTold_;
};

}  // namespace nemra::core::worker
