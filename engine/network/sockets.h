/// What the sockets of both ends have in common.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <zmq.hpp>

#include "engine/network/network.h"

namespace nemra::network {

/// Limits and times, all of which are off by default, and nothing that lingers: what isn't sent when a socket closes is lost.
void setCommonOptions(zmq::socket_t& socket);

/// Events of a socket's connections. The socket must outlive it.
class Monitor {
public:
    /// `events` as ZMQ_EVENT_*.
    Monitor(zmq::context_t& context, zmq::socket_t& watched, int events);
    ~Monitor();
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;

    zmq::socket_t& socket() noexcept { return socket_; }
    /// The next event, or 0 if there is none now.
    int next();

private:
    zmq::socket_t& watched_;
    zmq::socket_t socket_;
};

/// Empties an eventfd.
void drain(int descriptor) noexcept;

/// What zmq says of its last error.
std::string faultText(const zmq::error_t& fault);

}  // namespace nemra::network
