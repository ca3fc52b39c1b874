#include "engine/network/link.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sodium.h>
#include <sys/socket.h>

#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "engine/network/keys.h"
#include "engine/network/sockets.h"

namespace nemra::network {

namespace {

/// In which the last words may still go out.
constexpr int kGoodbyeMs = 200;

struct FreeAddresses {
    void operator()(addrinfo* list) const noexcept { ::freeaddrinfo(list); }
};

/// The host's addresses as numbers, "1.2.3.4" or "[::1]". We ask for them ourselves since a transport would only wait in silence
/// for a name that nobody knows.
std::vector<std::string> addressesOf(const std::string& host, std::string& why) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (const int fault = ::getaddrinfo(host.c_str(), nullptr, &hints, &found); fault != 0) {
        why = ::gai_strerror(fault);
        return {};
    }
    const std::unique_ptr<addrinfo, FreeAddresses> list(found);
    std::vector<std::string> addresses;
    for (const addrinfo* one = list.get(); one; one = one->ai_next) {
        std::array<char, NI_MAXHOST> text{};
        if (::getnameinfo(one->ai_addr, one->ai_addrlen, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST) != 0) continue;
        std::string address = text.data();
        if (one->ai_family == AF_INET6) {
            address.insert(address.begin(), '[');
            address += ']';
        }
        addresses.push_back(std::move(address));
    }
    if (addresses.empty()) why = "the name has no address";
    return addresses;
}

class DealerLink final : public Link {
public:
    DealerLink(std::vector<std::string> addresses, int port, const Keys& keys, int wakeDescriptor)
        : addresses_(std::move(addresses)), port_(port), keys_(keys), wake_(wakeDescriptor), context_(1) {
        randombytes_buf(challenge_.data(), challenge_.size());
        tryNext();
    }

    bool send(std::span<const char> message) override {
        if (!socket_) return true;  // closed: wait() says so
        return socket_->send(zmq::const_buffer(message.data(), message.size()), zmq::send_flags::dontwait).has_value();
    }

    Event wait(int timeoutMs, bool wantsWriting, std::string& message) override {
        if (!socket_) return Event::closed;
        // What has arrived comes before the news of an end.
        if (receive(message)) return Event::message;
        if (const auto event = news()) return *event;
        const short interest = static_cast<short>(ZMQ_POLLIN | (wantsWriting ? ZMQ_POLLOUT : 0));
        std::array<zmq::pollitem_t, 3> items{{{socket_->handle(), 0, interest, 0},
                                              {monitor_->socket().handle(), 0, ZMQ_POLLIN, 0},
                                              {nullptr, wake_, ZMQ_POLLIN, 0}}};
        const std::size_t count = wake_ >= 0 ? 3 : 2;
        if (zmq::poll(items.data(), count, std::chrono::milliseconds(timeoutMs)) == 0) return Event::timeout;
        if (receive(message)) return Event::message;
        if (const auto event = news()) return *event;
        if (wake_ >= 0 && items[2].revents != 0) {
            drain(wake_);
            return Event::woken;
        }
        return (items[0].revents & ZMQ_POLLOUT) != 0 ? Event::writable : Event::timeout;
    }

    bool wasAnswered() const override { return wasAnswered_; }

    const Hash& challenge() const override { return challenge_; }

    bool isProof(const Hash& proof) const override {
        const Hash expected = proofOf(keys_.proof, challenge_);
        return sodium_memcmp(proof.data(), expected.data(), expected.size()) == 0;
    }

private:
    void close() {
        monitor_.reset();
        socket_.reset();
    }

    void tryNext() {
        close();
        if (next_ >= addresses_.size()) return;
        socket_.emplace(context_, zmq::socket_type::dealer);
        setCommonOptions(*socket_);
        socket_->set(zmq::sockopt::linger, kGoodbyeMs);
        socket_->set(zmq::sockopt::reconnect_ivl, -1);  // a connection that comes back would go on in the middle of a talk
        socket_->set(zmq::sockopt::connect_timeout, kHandshakeMs);
        socket_->set(zmq::sockopt::ipv6, addresses_[next_].front() == '[');
        socket_->set(zmq::sockopt::curve_serverkey, zmq::const_buffer(portKeys().publicKey.data(), portKeys().publicKey.size()));
        socket_->set(zmq::sockopt::curve_publickey, zmq::const_buffer(keys_.clientPublic.data(), keys_.clientPublic.size()));
        socket_->set(zmq::sockopt::curve_secretkey, zmq::const_buffer(keys_.clientSecret.data(), keys_.clientSecret.size()));
        monitor_.emplace(context_, *socket_,
                         ZMQ_EVENT_CONNECTED | ZMQ_EVENT_CLOSED | ZMQ_EVENT_DISCONNECTED | ZMQ_EVENT_CONNECT_RETRIED |
                             ZMQ_EVENT_HANDSHAKE_SUCCEEDED | ZMQ_EVENT_HANDSHAKE_FAILED_NO_DETAIL |
                             ZMQ_EVENT_HANDSHAKE_FAILED_PROTOCOL | ZMQ_EVENT_HANDSHAKE_FAILED_AUTH);
        socket_->connect("tcp://" + addresses_[next_++] + ":" + std::to_string(port_));
    }

    bool receive(std::string& message) {
        zmq::message_t part;
        if (!socket_->recv(part, zmq::recv_flags::dontwait)) return false;
        message.assign(part.data<char>(), part.size());
        while (part.more()) (void)socket_->recv(part);  // nobody of ours sends more than one
        return true;
    }

    /// What has happened to the connection.
    std::optional<Event> news() {
        while (const int event = monitor_->next()) {
            if (event == ZMQ_EVENT_CONNECTED) {
                wasAnswered_ = true;
            } else if (event == ZMQ_EVENT_HANDSHAKE_SUCCEEDED) {
                isSecure_ = true;
                return Event::connected;
            } else {
                // A name may stand for several addresses, of which not all need answer.
                if (!isSecure_ && !wasAnswered_ && next_ < addresses_.size()) {
                    tryNext();
                    continue;
                }
                close();
                return Event::closed;
            }
        }
        return std::nullopt;
    }

    const std::vector<std::string> addresses_;
    const int port_;
    const Keys keys_;
    const int wake_;
    Hash challenge_{};
    std::size_t next_ = 0;
    bool wasAnswered_ = false;
    bool isSecure_ = false;
    zmq::context_t context_;
    std::optional<zmq::socket_t> socket_;
    std::optional<Monitor> monitor_;
};

}  // namespace

std::unique_ptr<Link> connectTo(const std::string& host, int port, const Keys& keys, int wakeDescriptor, std::string& why) {
    auto addresses = addressesOf(host, why);
    if (addresses.empty()) return nullptr;
    try {
        return std::make_unique<DealerLink>(std::move(addresses), port, keys, wakeDescriptor);
    } catch (const zmq::error_t& fault) {
        why = faultText(fault);
        return nullptr;
    }
}

}  // namespace nemra::network
