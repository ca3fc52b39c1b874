#include "engine/core/worker/server.h"

#include <unistd.h>

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "engine/common/log.h"
#include "engine/core/worker/load_network.h"
#include "engine/core/worker/service.h"

namespace nemra::core::worker {

namespace {

constexpr const char* kSource = "server";
constexpr int kLargestPort = 65535;
constexpr std::size_t kMostToTell = 1000;  ///< messages of a script that talks faster than the network takes it

}  // namespace

Server::Server(ServerSettings settings)
    : dispatcher_(std::make_shared<Dispatcher>(kSource)),
      wake_(std::make_shared<Wake>()),
      process_(::getpid()),
      settings_(std::move(settings)) {}

Server::~Server() { release(); }

bool Server::isForeign() const noexcept { return process_ != ::getpid(); }

void Server::release() {
    if (isForeign()) return;  // locks may have been held by threads that this process doesn't have
    dispatcher_->close();
    stopForGood();
}

void Server::stopForGood() {
    {
        const std::lock_guard lock(mutex_);
        closing_ = true;
    }
    wake_->wake();
}

void Server::say(LogLevel_t level, const std::string& text, Dispatcher::From from) {
    dispatcher_->postMessage({level, kSource, text}, from);
}

ServerSettings Server::settings() const {
    const std::lock_guard lock(mutex_);
    return settings_;
}

void Server::setParameter(std::string_view name, std::string_view value) {
    std::string why;
    bool isLate = false;
    {
        const std::lock_guard lock(mutex_);
        if (settings_.set(name, value, why)) isLate = name == "password" && state_ != State::closed;
    }
    if (!why.empty()) say(NEMRA_LOG_WARNING, why, Dispatcher::From::host);
    if (isLate) say(NEMRA_LOG_WARNING, "the password counts from the next time that a port is opened", Dispatcher::From::host);
}

// ---- Opening and closing
// --------------------------------------------------------------------------------------------------------

std::unique_ptr<network::Listener> Server::listen(const network::Network& network, int port) {
    const ServerSettings now = settings();
    const bool hasPassword = !now.password.empty();
    const bool thisMachineOnly = !hasPassword || now.thisMachineOnly;
    const network::Keys keys = network.deriveKeys(now.password);
    std::string why;
    auto listener = network.listen(thisMachineOnly, port, keys, wake_->descriptor(), why);
    if (!listener && port != 0) {
        log::warning(kSource, "port " + std::to_string(port) + " can't be had (" + why + "): taking another");
        listener = network.listen(thisMachineOnly, 0, keys, wake_->descriptor(), why);
    }
    if (!listener) {
        log::error(kSource, "can't listen: " + why);
    } else if (!hasPassword) {
        log::warning(kSource, "no password is set: clients of this machine alone are let in");
    }
    return listener;
}

int Server::openNow(int port, Dispatcher::From from) {
    const log::Capture capture([&](const log::Message& message) { dispatcher_->postMessage(message, from); });
    const auto giveUp = [&] {
        const std::lock_guard lock(mutex_);
        state_ = State::closed;
        changed_.notify_all();
        return 0;
    };
    try {
        if (port < 0 || port > kLargestPort) {
            log::error(kSource, "there is no port " + std::to_string(port) + ": they go from 0, which is any, to 65535");
            return giveUp();
        }
        const network::Network* const network = loadNetwork();
        auto listener = network ? std::shared_ptr<network::Listener>(listen(*network, port)) : nullptr;
        if (!listener) return giveUp();
        const int opened = listener->port();
        log::info(kSource, "listening on port " + std::to_string(opened));
        const std::lock_guard lock(mutex_);  // the thread waits for it
        const auto self = shared_from_this();
        const int started = startJobThreads(self, "nemra-server", 1, [self, network, listener = std::move(listener)]() mutable {
            self->serve(*network, *listener);
            listener.reset();  // frees the port
            const std::lock_guard closed(self->mutex_);
            self->state_ = State::closed;
            self->port_ = 0;
            self->changed_.notify_all();
        });
        if (started == 0) {
            log::error(kSource, "there is no thread for it");
            state_ = State::closed;
        } else {
            port_ = opened;
            state_ = State::open;
        }
        changed_.notify_all();
        return port_;
    } catch (const std::exception& e) {
        log::error(kSource, std::string("can't listen: ") + e.what());
        return giveUp();
    }
}

int Server::open(int port) {
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return state_ != State::opening; });
        if (state_ == State::open && !closing_) return port_;
        changed_.wait(lock, [&] { return state_ == State::closed; });
        state_ = State::opening;
        closing_ = false;
    }
    return openNow(port, Dispatcher::From::host);
}

void Server::openAsync(int port) {
    {
        const std::lock_guard lock(mutex_);
        if (state_ != State::closed) return;
        state_ = State::opening;
        closing_ = false;
    }
    const auto self = shared_from_this();
    if (startJobThreads(self, "nemra-server", 1, [self, port] { self->openNow(port, Dispatcher::From::engine); }) > 0) return;
    say(NEMRA_LOG_ERROR, "there is no thread to open a port", Dispatcher::From::host);
    const std::lock_guard lock(mutex_);
    state_ = State::closed;
    changed_.notify_all();
}

void Server::close() {
    std::unique_lock lock(mutex_);
    if (state_ == State::closed) return;
    closing_ = true;
    wake_->wake();
    changed_.wait(lock, [&] { return state_ == State::closed; });
}

// ---- Serving ------------------------------------------------------------------------------------------------------------------

void Server::serve(const network::Network& network, network::Listener& listener) {
    const log::Capture capture(
        [this](const log::Message& message) { dispatcher_->postMessage(message, Dispatcher::From::engine); });
    bool isBusy = false;
    const auto tellBusy = [&](bool busy) {
        if (std::exchange(isBusy, busy) != busy) dispatcher_->postBusy(busy, Dispatcher::From::engine);
    };
    for (;;) {
        try {
            Service service(
                network, listener, wake_, [this] { return settings(); }, tellBusy);
            for (;;) {
                std::deque<Said> toTell;
                {
                    const std::lock_guard lock(mutex_);
                    if (closing_) {
                        tellBusy(false);
                        return;
                    }
                    toTell.swap(toTell_);
                }
                for (const Said& said : toTell) service.tell(said);
                service.turn();
            }
        } catch (const std::bad_alloc&) {
            log::error(kSource, "there is no memory left: dropping all clients and beginning anew");
            tellBusy(false);
        } catch (const std::exception& e) {
            log::error(kSource, std::string("can't go on and closes the port: ") + e.what());
            return tellBusy(false);
        }
    }
}

void Server::sendMessage(std::string_view name, std::string_view text, int level) {
    constexpr int known = NEMRA_LOG_DEBUG | NEMRA_LOG_INFO | NEMRA_LOG_WARNING | NEMRA_LOG_ERROR | NEMRA_LOG_CRITICAL;
    {
        const std::lock_guard lock(mutex_);
        if (state_ != State::open || toTell_.size() >= kMostToTell) return;
        toTell_.push_back({std::string(name), std::string(text), static_cast<std::uint32_t>(level & known)});
    }
    wake_->wake();
}

}  // namespace nemra::core::worker
