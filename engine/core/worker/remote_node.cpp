#include "engine/core/worker/remote_node.h"

#include <poll.h>

#include <algorithm>
#include <exception>
#include <utility>

#include "engine/common/log.h"
#include "engine/core/worker/remote_session.h"

namespace nemra::core::worker {

namespace {

constexpr std::chrono::milliseconds kFirstPause{500};
constexpr std::chrono::milliseconds kLongestPause{10000};
constexpr int kConnectWaitMs = 250;
constexpr std::chrono::seconds kLongestConnect{10};
/// By a worker that doesn't know our key, or by ourselves from somebody who isn't one.
constexpr const char* kTurnedAway = "turned away: the password isn't the worker's, or this is no worker; trying again";

}  // namespace

RemoteNode::RemoteNode(std::shared_ptr<RemoteRender> render, Target target)
    : render_(std::move(render)),
      target_(std::move(target)),
      name_("worker " + target_.address.text()),
      wake_(target_.wake),
      pause_(kFirstPause) {}

RemoteNode::~RemoteNode() {
    if (target_.ownServer) target_.ownServer->release();
}

bool RemoteNode::start() {
    return startJobThreads(shared_from_this(), "nemra-remote", 1, [self = shared_from_this()] { self->run(); }) > 0;
}

void RemoteNode::sayOnce(LogLevel_t level, const std::string& text) {
    if (std::exchange(said_, text) != text) log::emit(level, name_, text);
}

void RemoteNode::run() {
    const log::Capture capture(
        [this](const log::Message& message) { render_->dispatcher->postMessage(message, Dispatcher::From::engine); });
    try {
        attend();
    } catch (const std::exception& e) {
        giveUp(e.what());
    }
}

void RemoteNode::giveUp(const std::string& why) {
    log::error(name_, "the worker takes no part in this render: " + why);
    render_->attendance.gaveUp();
    if (!render_->hasLocalNode && render_->attendance.isHopeless()) render_->job->endEarly("no render worker is left");
}

void RemoteNode::attend() {
    const network::Keys keys = render_->network.deriveKeys(target_.password);
    while (!render_->isOver()) {
        std::string why;
        const auto link = render_->network.connect(target_.address.host, target_.address.port, keys, wake_->descriptor(), why);
        if (!link) {
            sayOnce(NEMRA_LOG_WARNING, "can't connect: " + why + "; trying again");
        } else {
            std::string message;
            auto event = network::Event::timeout;
            const auto until = std::chrono::steady_clock::now() + kLongestConnect;
            while (event != network::Event::connected && event != network::Event::closed && !render_->isOver() &&
                   std::chrono::steady_clock::now() < until) {
                event = link->wait(kConnectWaitMs, false, message);
            }
            if (event == network::Event::connected) {
                RemoteSession session(*render_, *link, name_);
                const auto ending = session.run();
                if (ending == RemoteSession::Ending::over) return;
                if (ending == RemoteSession::Ending::refused) return giveUp(session.why());
                if (ending == RemoteSession::Ending::stranger) {
                    sayOnce(NEMRA_LOG_WARNING, kTurnedAway);
                } else {
                    pause_ = kFirstPause;
                    said_.clear();
                    log::warning(name_,
                                 "the worker is lost: " + session.why() + "; what it had is rendered anew, and it is looked for");
                }
            } else if (render_->isOver()) {
                return;
            } else if (link->wasAnswered()) {
                sayOnce(NEMRA_LOG_WARNING, kTurnedAway);
            } else {
                sayOnce(NEMRA_LOG_WARNING, "nobody answers; trying again");
            }
        }
        if (!rest()) return;
    }
}

/// A pause before the next try, longer each time. False if the render is over.
bool RemoteNode::rest() {
    using Clock = std::chrono::steady_clock;
    const auto until = Clock::now() + pause_;
    pause_ = std::min(2 * pause_, kLongestPause);
    while (!render_->isOver()) {
        if (!render_->hasLocalNode && render_->attendance.isHopeless()) {
            render_->job->endEarly("no render worker is left");
            return false;
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
        if (left <= 0) return true;
        pollfd descriptor{wake_->descriptor(), POLLIN, 0};
        if (::poll(&descriptor, 1, static_cast<int>(std::min<long long>(left, 250))) > 0) wake_->clear();
    }
    return false;
}

}  // namespace nemra::core::worker
