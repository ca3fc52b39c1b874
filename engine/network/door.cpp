#include "engine/network/door.h"

#include <sodium.h>

#include <algorithm>
#include <string_view>

namespace nemra::network {

namespace {

constexpr std::chrono::seconds kRefusalDelay{1};

/// Frames of a question: who asks and an empty one, then version, id of the question, domain, address, identity, mechanism and
/// key.
enum Frame : std::size_t { asker, empty, version, question, domain, address, identity, mechanism, key, frameCount };

zmq::message_t text(std::string_view words) { return zmq::message_t(words.data(), words.size()); }

}  // namespace

Door::Door(zmq::context_t& context, const Key& clientPublic)
    : expected_(clientPublic), socket_(context, zmq::socket_type::router) {
    socket_.set(zmq::sockopt::linger, 0);
    socket_.bind("inproc://zeromq.zap.01");
}

Door::Parts Door::replyTo(Parts& asked, bool& isWelcome) const {
    isWelcome = asked.size() == frameCount && asked[mechanism].to_string_view() == "CURVE" &&
                asked[key].size() == expected_.size() &&
                sodium_memcmp(asked[key].data(), expected_.data(), expected_.size()) == 0;
    Parts reply;
    reply.push_back(std::move(asked[asker]));
    reply.push_back(text(""));
    reply.push_back(text("1.0"));
    reply.push_back(asked.size() > question ? std::move(asked[question]) : text(""));
    reply.push_back(text(isWelcome ? "200" : "400"));
    reply.push_back(text(isWelcome ? "welcome" : "no access"));
    reply.push_back(text(""));  // user
    reply.push_back(text(""));  // metadata
    return reply;
}

void Door::send(Parts& reply) {
    for (std::size_t i = 0; i < reply.size(); ++i) {
        const auto more = i + 1 < reply.size() ? zmq::send_flags::sndmore : zmq::send_flags::none;
        (void)socket_.send(reply[i], more | zmq::send_flags::dontwait);
    }
}

void Door::answer() {
    const auto now = Clock::now();
    while (!refusals_.empty() && refusals_.front().due <= now) {
        send(refusals_.front().reply);
        refusals_.pop_front();
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
        bool isWelcome = false;
        Parts reply = replyTo(asked, isWelcome);
        if (isWelcome) {
            send(reply);
        } else {
            refusals_.push_back({now + kRefusalDelay, std::move(reply)});
        }
    }
}

int Door::cut(int timeoutMs) const {
    if (refusals_.empty()) return timeoutMs;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(refusals_.front().due - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, timeoutMs));
}

}  // namespace nemra::network
