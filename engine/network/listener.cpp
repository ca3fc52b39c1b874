#include "engine/network/listener.h"

#include <array>
#include <cerrno>
#include <optional>
#include <utility>

#include "engine/network/door.h"
#include "engine/network/keys.h"
#include "engine/network/sockets.h"

namespace nemra::network {

namespace {

/// A client that goes in the middle of its greeting is none of them.
constexpr int kRefusals = ZMQ_EVENT_HANDSHAKE_FAILED_PROTOCOL | ZMQ_EVENT_HANDSHAKE_FAILED_AUTH;

class RouterListener final : public Listener {
public:
    /// Throws zmq::error_t if the port can't be had.
    RouterListener(bool thisMachineOnly, int port, const Keys& keys, int wakeDescriptor)
        : wake_(wakeDescriptor),
          proofKey_(keys.proof),
          context_(1),
          door_(context_, keys.clientPublic),
          socket_(context_, zmq::socket_type::router) {
        setCommonOptions(socket_);
        socket_.set(zmq::sockopt::router_mandatory, true);  // else what is sent to a client that is gone vanishes in silence
        socket_.set(zmq::sockopt::backlog, 1024);
        socket_.set(zmq::sockopt::zap_domain, "nemra");
        socket_.set(zmq::sockopt::curve_server, true);
        socket_.set(zmq::sockopt::curve_secretkey, zmq::const_buffer(portKeys().secretKey.data(), portKeys().secretKey.size()));
        monitor_.emplace(context_, socket_, kRefusals);
        socket_.set(zmq::sockopt::ipv6, !thisMachineOnly);
        const std::string number = port == 0 ? "*" : std::to_string(port);
        socket_.bind("tcp://" + std::string(thisMachineOnly ? "127.0.0.1" : "*") + ":" + number);
        const std::string bound = socket_.get(zmq::sockopt::last_endpoint);
        port_ = std::stoi(bound.substr(bound.rfind(':') + 1));
    }

    int port() const override { return port_; }

    Hash proof(const Hash& challenge) const override { return proofOf(proofKey_, challenge); }

    Sent send(const std::string& peer, std::span<const char> message) override {
        try {
            // Both parts or none: the first says already whether there is room.
            if (!socket_.send(zmq::const_buffer(peer.data(), peer.size()),
                              zmq::send_flags::sndmore | zmq::send_flags::dontwait)) {
                return Sent::full;
            }
            const auto sent = socket_.send(zmq::const_buffer(message.data(), message.size()), zmq::send_flags::dontwait);
            return sent ? Sent::done : Sent::full;
        } catch (const zmq::error_t& fault) {
            if (fault.num() == EHOSTUNREACH) return Sent::gone;
            throw;
        }
    }

    Event wait(int timeoutMs, std::string& peer, std::string& message) override {
        door_.answer();
        if (receive(peer, message)) return Event::message;
        std::array<zmq::pollitem_t, 4> items{{{socket_.handle(), 0, ZMQ_POLLIN, 0},
                                              {door_.socket().handle(), 0, ZMQ_POLLIN, 0},
                                              {monitor_->socket().handle(), 0, ZMQ_POLLIN, 0},
                                              {nullptr, wake_, ZMQ_POLLIN, 0}}};
        const std::size_t count = wake_ >= 0 ? 4 : 3;
        if (zmq::poll(items.data(), count, std::chrono::milliseconds(door_.cut(timeoutMs))) == 0) return Event::timeout;
        door_.answer();
        if (receive(peer, message)) return Event::message;
        if (wake_ >= 0 && items[3].revents != 0) {
            drain(wake_);
            return Event::woken;
        }
        return monitor_->next() != 0 ? Event::refused : Event::timeout;
    }

private:
    bool receive(std::string& peer, std::string& message) {
        zmq::message_t part;
        if (!socket_.recv(part, zmq::recv_flags::dontwait)) return false;
        peer = part.to_string();
        message.clear();
        // Of several parts the last counts; what it means is looked at by whoever takes it.
        while (part.more()) {
            (void)socket_.recv(part);
            message.assign(part.data<char>(), part.size());
        }
        return true;
    }

    const int wake_;
    const Key proofKey_;
    int port_ = 0;
    zmq::context_t context_;  // goes last and waits for the sockets: when it is gone, so is the port
    Door door_;
    zmq::socket_t socket_;
    std::optional<Monitor> monitor_;
};

}  // namespace

std::unique_ptr<Listener> listenOn(bool thisMachineOnly, int port, const Keys& keys, int wakeDescriptor, std::string& why) {
    try {
        return std::make_unique<RouterListener>(thisMachineOnly, port, keys, wakeDescriptor);
    } catch (const zmq::error_t& fault) {
        why = faultText(fault);
        return nullptr;
    }
}

}  // namespace nemra::network
