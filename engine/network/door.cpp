#include "engine/network/door.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sodium.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace nemra::network {

namespace {

constexpr std::chrono::seconds kRefusalDelay{1};
/// What waits longer than that is soon cut off anyway (kHandshakeMs).
constexpr std::chrono::seconds kLongestRow{4};

/// Frames of a question: who asks and an empty one, then version, id of the question, domain, address, identity, mechanism and
/// key.
enum Frame : std::size_t { asker, empty, version, question, domain, address, identity, mechanism, key, frameCount };

/// An IPv4 address, or the first half of an IPv6 one, which is what one subscriber has.
std::string neighbourhoodOf(const std::string& address) {
    in6_addr bytes{};
    if (::inet_pton(AF_INET6, address.c_str(), &bytes) != 1 || IN6_IS_ADDR_V4MAPPED(&bytes)) {
        return address.substr(address.rfind(':') + 1);
    }
    return {reinterpret_cast<const char*>(&bytes), sizeof bytes / 2};
}

zmq::message_t text(std::string_view words) { return zmq::message_t(words.data(), words.size()); }

}  // namespace

Door::Door(zmq::context_t& context, const Key& clientPublic)
    : expected_(clientPublic), socket_(context, zmq::socket_type::router) {
    socket_.set(zmq::sockopt::linger, 0);
    socket_.bind("inproc://zeromq.zap.01");
}

bool Door::isWelcome(const Parts& asked) const {
    return asked.size() == frameCount && asked[mechanism].to_string_view() == "CURVE" && asked[key].size() == expected_.size() &&
           sodium_memcmp(asked[key].data(), expected_.data(), expected_.size()) == 0;
}

void Door::send(Parts& reply) {
    for (std::size_t i = 0; i < reply.size(); ++i) {
        const auto more = i + 1 < reply.size() ? zmq::send_flags::sndmore : zmq::send_flags::none;
        (void)socket_.send(reply[i], more | zmq::send_flags::dontwait);
    }
}

void Door::take(Parts asked, Clock::time_point now) {
    std::erase_if(restsUntil_, [&](const auto& entry) { return entry.second <= now; });
    const std::string from = asked.size() > address ? neighbourhoodOf(asked[address].to_string()) : "";
    const auto resting = restsUntil_.find(from);
    auto due = resting == restsUntil_.end() ? now : resting->second;
    bool welcome = false;
    if (due - now > kLongestRow) {
        due = now + kRefusalDelay;
    } else if (welcome = isWelcome(asked); !welcome) {
        due += kRefusalDelay;
        restsUntil_[from] = due;
    }
    Parts reply;
    reply.push_back(std::move(asked[asker]));
    reply.push_back(text(""));
    reply.push_back(text("1.0"));
    reply.push_back(asked.size() > question ? std::move(asked[question]) : text(""));
    reply.push_back(text(welcome ? "200" : "400"));
    reply.push_back(text(welcome ? "welcome" : "no access"));
    reply.push_back(text(""));  // user
    reply.push_back(text(""));  // metadata
    if (due <= now) return send(reply);
    const auto place = std::find_if(answers_.begin(), answers_.end(), [&](const Answer& other) { return other.due > due; });
    answers_.insert(place, {due, std::move(reply)});
}

void Door::answer() {
    const auto now = Clock::now();
    while (!answers_.empty() && answers_.front().due <= now) {
        send(answers_.front().reply);
        answers_.pop_front();
    }
    for (;;) {
        Parts asked;
        zmq::message_t part;
        if (!socket_.recv(part, zmq::recv_flags::dontwait)) return;
        bool more = part.more();
        asked.push_back(std::move(part));
        while (more) {
            zmq::message_t next;
            (void)socket_.recv(next);
            more = next.more();
            asked.push_back(std::move(next));
        }
        take(std::move(asked), now);
    }
}

int Door::cut(int timeoutMs) const {
    if (answers_.empty()) return timeoutMs;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(answers_.front().due - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, timeoutMs));
}

}  // namespace nemra::network
