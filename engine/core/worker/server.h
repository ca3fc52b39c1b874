/// The object behind a server handle: a render worker.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "engine/core/job/dispatcher.h"
#include "engine/core/job/job_threads.h"
#include "engine/core/worker/messages.h"
#include "engine/core/worker/server_settings.h"
#include "engine/core/worker/wake.h"
#include "engine/network/network.h"

namespace nemra::core::worker {

/// Any function may be called from any thread, also from inside a callback; none waits for a callback. One thread waits on the
/// network (Service); it and the render threads call into the host through the dispatcher only.
class Server : public Stoppable, public std::enable_shared_from_this<Server> {
public:
    explicit Server(ServerSettings settings = {});
    ~Server() override;
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Closes without waiting. After the return no new callback starts.
    void release();
    void stopForGood() override;

    void setParameter(std::string_view name, std::string_view value);
    /// Listens and gives the port, which is another one than wanted if that can't be had; 0 after an error message. Does nothing
    /// but give the port if it listens already.
    int open(int port);
    /// The same on a thread of its own.
    void openAsync(int port);
    /// Returns when the port is free again.
    void close();
    /// To the client that is served, if there is one.
    void sendMessage(std::string_view name, std::string_view text, int level);

    Dispatcher& callbacks() noexcept { return *dispatcher_; }
    /// True in a child of a fork: the threads of this server are its parent's, and only release() does something.
    bool isForeign() const noexcept;

private:
    enum class State { closed, opening, open };

    int openNow(int port, Dispatcher::From from);
    std::unique_ptr<network::Listener> listen(const network::Network& network, int port);
    void serve(const network::Network& network, network::Listener& listener);
    void say(LogLevel_t level, const std::string& text, Dispatcher::From from);
    ServerSettings settings() const;

    const std::shared_ptr<Dispatcher> dispatcher_;
    const std::shared_ptr<Wake> wake_;
    const int process_;  ///< id

    mutable std::mutex mutex_;  ///< for all that follows
    std::condition_variable changed_;
    ServerSettings settings_;
    State state_ = State::closed;
    bool closing_ = false;  ///< asked to close
    int port_ = 0;
    std::deque<Said> toTell_;
};

}  // namespace nemra::core::worker
