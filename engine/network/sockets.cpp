#include "engine/network/sockets.h"

#include <unistd.h>

#include <atomic>
#include <cstring>

namespace nemra::network {

namespace {

/// Messages in a queue: with the largest of them a connection takes 8 MiB each way.
constexpr int kQueueLength = 64;

}  // namespace

void setCommonOptions(zmq::socket_t& socket) {
    socket.set(zmq::sockopt::linger, 0);
    socket.set(zmq::sockopt::maxmsgsize, static_cast<std::int64_t>(kLargestMessage));
    socket.set(zmq::sockopt::handshake_ivl, kHandshakeMs);
    socket.set(zmq::sockopt::heartbeat_ivl, kHeartbeatMs);
    socket.set(zmq::sockopt::heartbeat_timeout, kHeartbeatTimeoutMs);
    socket.set(zmq::sockopt::heartbeat_ttl, kHeartbeatMs + kHeartbeatTimeoutMs);
    socket.set(zmq::sockopt::sndhwm, kQueueLength);
    socket.set(zmq::sockopt::rcvhwm, kQueueLength);
}

Monitor::Monitor(zmq::context_t& context, zmq::socket_t& watched, int events)
    : watched_(watched), socket_(context, zmq::socket_type::pair) {
    static std::atomic<unsigned> count{0};
    const std::string address = "inproc://monitor" + std::to_string(++count);
    if (zmq_socket_monitor(watched.handle(), address.c_str(), events) != 0) throw zmq::error_t();
    socket_.set(zmq::sockopt::linger, 0);
    socket_.connect(address);
}

Monitor::~Monitor() { zmq_socket_monitor(watched_.handle(), nullptr, 0); }

int Monitor::next() {
    zmq::message_t event;
    if (!socket_.recv(event, zmq::recv_flags::dontwait)) return 0;
    zmq::message_t address;  // of no use here
    if (event.more()) (void)socket_.recv(address, zmq::recv_flags::dontwait);
    std::uint16_t number = 0;
    if (event.size() >= sizeof number) std::memcpy(&number, event.data(), sizeof number);
    return number;
}

void drain(int descriptor) noexcept {
    std::uint64_t count = 0;
    while (descriptor >= 0 && ::read(descriptor, &count, sizeof count) > 0) {
    }
}

std::string faultText(const zmq::error_t& fault) { return fault.what(); }

}  // namespace nemra::network
