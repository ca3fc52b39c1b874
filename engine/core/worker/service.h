/// The talk of a worker with its clients, on the thread that waits on the network.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "engine/core/worker/client.h"
#include "engine/core/worker/parcel_cache.h"
#include "engine/core/worker/server_settings.h"
#include "engine/core/worker/wake.h"
#include "engine/network/network.h"

namespace nemra::core::worker {

/// One client is served at a time, the others wait in the order of their coming. Whatever a client sends, the worst that happens
/// is that it is dropped.
class Service {
public:
    /// `settings` gives the present ones, `busyChanged` is told when there is somebody to serve and when there is nobody any
    /// more.
    Service(const network::Network& network, network::Listener& listener, std::shared_ptr<Wake> wake,
            std::function<ServerSettings()> settings, std::function<void(bool)> busyChanged);

    /// One wait and what follows from it.
    void turn();
    /// To the client that is served now, if there is one.
    void tell(const Said& said);

private:
    using Clock = Client::Clock;
    using Clients = std::map<std::string, Client>;

    void receive(const std::string& peer, std::span<const char> bytes);
    void greet(const std::string& peer, const Hello& hello);
    void take(const std::string& peer, Client& client, const Message& message);
    void takeOffer(Client& client, const SceneOffer& offer);
    void takePart(Client& client, const ScenePart& part);
    void begin(Client& client, ParcelCache::Parcel parcel);
    void fill(Client& client);
    void fail(Client& client, const std::string& why);
    bool deliver(const std::string& peer, Client& client);
    void watch();
    void drop(const std::string& peer, const std::string& why);
    Client* served();

    const network::Network& network_;
    network::Listener& listener_;
    const std::shared_ptr<Wake> wake_;
    const std::function<ServerSettings()> settings_;
    const std::function<void(bool)> busyChanged_;
    ParcelCache parcels_;
    std::vector<std::string> libraryPaths_;  ///< that the kept scene was prepared with
    Clients clients_;
    std::deque<std::string> order_;  ///< of the clients; the first is served
    bool isStuck_ = false;           ///< a queue was full: try again soon
    int refusals_ = 0;               ///< not reported yet
    Clock::time_point nextReport_;
};

}  // namespace nemra::core::worker
