/// Answers to the question whether a client may come in (ZAP, ZeroMQ RFC 27).
#pragma once

#include <chrono>
#include <deque>
#include <vector>
#include <zmq.hpp>

#include "engine/network/network.h"

namespace nemra::network {

/// Must be there before the first socket of its context asks, and be looked after by whoever waits on these sockets.
class Door {
public:
    Door(zmq::context_t& context, const Key& clientPublic);

    zmq::socket_t& socket() noexcept { return socket_; }
    /// Answers the questions that have come. A no comes after a second, so that asking often doesn't pay.
    void answer();
    /// Until the next delayed answer is due; `timeoutMs` if that is sooner.
    int cut(int timeoutMs) const;

private:
    using Clock = std::chrono::steady_clock;
    using Parts = std::vector<zmq::message_t>;
    struct Refusal {
        Clock::time_point due;
        Parts reply;
    };

    Parts replyTo(Parts& question, bool& isWelcome) const;
    void send(Parts& reply);

    const Key expected_;
    zmq::socket_t socket_;
    std::deque<Refusal> refusals_;
};

}  // namespace nemra::network
