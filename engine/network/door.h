/// Answers to the question whether a client may come in (ZAP, ZeroMQ RFC 27).
#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <string>
#include <vector>
#include <zmq.hpp>

#include "engine/network/network.h"

namespace nemra::network {

/// Must be there before the first socket of its context asks, and be looked after by whoever waits on these sockets.
class Door {
public:
    Door(zmq::context_t& context, const Key& clientPublic);

    zmq::socket_t& socket() noexcept { return socket_; }
    /// Answers the questions that have come. Of each address one wrong key is looked at in a second, and what comes from there
    /// meanwhile waits, whether right or wrong; so neither asking often nor many connections at once make guessing faster.
    /// Those who ask from an address with a long row of such questions are turned away unheard.
    void answer();
    /// Until the next delayed answer is due; `timeoutMs` if that is sooner.
    int cut(int timeoutMs) const;

private:
    using Clock = std::chrono::steady_clock;
    using Parts = std::vector<zmq::message_t>;
    struct Answer {
        Clock::time_point due;
        Parts reply;
    };

    bool isWelcome(const Parts& question) const;
    void take(Parts question, Clock::time_point now);
    void send(Parts& reply);

    const Key expected_;
    zmq::socket_t socket_;
    std::map<std::string, Clock::time_point> restsUntil_;  ///< by address, of those where a wrong key came from
    std::deque<Answer> answers_;                           ///< that are due later
};

}  // namespace nemra::network
