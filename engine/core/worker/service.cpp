#include "engine/core/worker/service.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "engine/common/log.h"
#include "engine/core/api/version.h"
#include "engine/core/job/settings.h"
#include "engine/core/worker/result_stream.h"
#include "engine/core/worker/scene_parcel.h"

namespace nemra::core::worker {

namespace {

constexpr const char* kSource = "server";

constexpr std::size_t kMostClients = 32;
constexpr std::uint64_t kLargestParcel = std::uint64_t{1} << 31U;
/// Results taken from the job at a time.
constexpr std::size_t kTakenBytes = std::size_t{4} << 20U;
constexpr int kLongestWaitMs = 500;
constexpr int kStuckWaitMs = 5;
/// While a job runs: small results are collected for so long.
constexpr int kCollectMs = 20;
/// A client that says nothing for so long is taken for dead; clients say something every kAliveEvery.
constexpr std::chrono::seconds kSilence{12};
constexpr std::chrono::seconds kAliveEvery{2};
constexpr std::chrono::seconds kReportEvery{60};
/// For the reason of a refusal to go out.
constexpr std::chrono::seconds kLastWords{2};

}  // namespace

Service::Service(const network::Network& network, network::Listener& listener, std::shared_ptr<Wake> wake,
                 std::function<ServerSettings()> settings, std::function<void(bool)> busyChanged)
    : network_(network),
      listener_(listener),
      wake_(std::move(wake)),
      settings_(std::move(settings)),
      busyChanged_(std::move(busyChanged)) {}

void Service::turn() {
    std::string peer;
    std::string message;
    const Client* const now = served();
    const auto event = listener_.wait(isStuck_ ? kStuckWaitMs : now && now->job ? kCollectMs : kLongestWaitMs, peer, message);
    if (event == network::Event::message) receive(peer, message);
    if (event == network::Event::refused) ++refusals_;
    watch();
    isStuck_ = false;
    for (const std::string& each : std::vector<std::string>(order_.begin(), order_.end())) {
        const auto found = clients_.find(each);
        if (found == clients_.end()) continue;
        fill(found->second);
        if (!deliver(each, found->second)) {
            drop(each, "it is gone");
        } else if (const auto leaveBy = found->second.leaveBy;
                   leaveBy && (found->second.outbox.empty() || Clock::now() > *leaveBy)) {
            drop(each, "");
        }
    }
}

Client* Service::served() { return order_.empty() ? nullptr : &clients_.at(order_.front()); }

void Service::tell(const Said& said) {
    if (Client* const client = served()) client->outbox.push_back(encode(said));
}

// ---- What clients say ---------------------------------------------------------------------------------------------------------

void Service::receive(const std::string& peer, std::span<const char> bytes) {
    const auto message = decode(bytes);
    const auto found = clients_.find(peer);
    if (found == clients_.end()) {
        // The first word decides; whatever else is left of an earlier talk is passed over.
        if (const auto* const hello = message ? std::get_if<Hello>(&*message) : nullptr) greet(peer, *hello);
        return;
    }
    if (!message) return drop(peer, "it sent what isn't a message");
    found->second.lastHeard = Clock::now();
    if (!found->second.leaveBy) take(peer, found->second, *message);
}

void Service::greet(const std::string& peer, const Hello& hello) {
    std::string why;
    const bool isFull = clients_.size() >= kMostClients;
    if (hello.protocol != kProtocol || hello.engine != kVersionText) {
        why = "the worker is " + std::string(kVersionText) + " and the client " + hello.engine +
              ": only the same version computes the same result";
    } else if (isFull) {
        why = "the worker has too many clients";
    }
    if (!why.empty()) {
        log::warning(kSource, "a client isn't served: " + why);
        listener_.send(peer, encode(Failed{why, isFull}));
        return;
    }
    Client& client = clients_[peer];
    order_.push_back(peer);
    client.outbox.push_back(encode(Welcome{static_cast<std::uint32_t>(renderThreads(settings_().threads)),
                                           static_cast<std::uint32_t>(order_.size() - 1), listener_.proof(hello.challenge)}));
    if (order_.size() > 1) {
        log::info(kSource, "a client waits for its turn");
        return;
    }
    client.outbox.push_back(encode(Turn{}));
    log::info(kSource, "a client is served");
    busyChanged_(true);
}

void Service::take(const std::string& peer, Client& client, const Message& message) {
    if (std::holds_alternative<Alive>(message)) return;
    if (std::holds_alternative<Goodbye>(message)) return drop(peer, "");
    if (&client != served()) return drop(peer, "it didn't wait for its turn");
    if (const auto* const offer = std::get_if<SceneOffer>(&message)) {
        takeOffer(client, *offer);
    } else if (const auto* const part = std::get_if<ScenePart>(&message)) {
        takePart(client, *part);
    } else if (const auto* const work = std::get_if<Work>(&message)) {
        if (!client.job || !client.job->add(work->items)) drop(peer, "it asked for work that can't be done");
    } else if (const auto* const pause = std::get_if<Pause>(&message)) {
        if (client.job) client.job->setPaused(pause->paused);
    } else {
        drop(peer, "it talks like a worker");
    }
}

void Service::takeOffer(Client& client, const SceneOffer& offer) {
    if (client.job) client.job->cancel();
    client.job.reset();
    client.incoming.reset();
    client.offer = offer;
    if (offer.size > kLargestParcel) {
        fail(client, "the scene is larger than " + std::to_string(kLargestParcel >> 20U) + " MiB");
    } else if (auto parcel = parcels_.find(offer.hash)) {
        begin(client, std::move(parcel));
    } else {
        client.incoming.emplace(offer.size);
        client.outbox.push_back(encode(Need{}));
    }
}

void Service::takePart(Client& client, const ScenePart& part) {
    if (!client.incoming || !client.incoming->add(part.offset, part.bytes)) return fail(client, "the scene came in disorder");
    if (!client.incoming->isWhole()) return;
    auto parcel = std::make_shared<const Buffer>(std::move(*client.incoming).take());
    client.incoming.reset();
    if (network_.hash(parcel->bytes()) != client.offer.hash) return fail(client, "the scene came damaged");
    parcels_.add(client.offer.hash, parcel);
    begin(client, std::move(parcel));
}

void Service::begin(Client& client, ParcelCache::Parcel parcel) {
    const ServerSettings settings = settings_();
    if (std::exchange(libraryPaths_, settings.libraryPaths) != settings.libraryPaths) parcels_.forgetPrepared();
    auto prepare = [known = parcels_.findPrepared(client.offer.hash, client.offer.setup), parcel = std::move(parcel),
                    setup = client.offer.setup,
                    paths = settings.libraryPaths] { return known ? known : prepareParcel(parcel->bytes(), setup, paths); };
    client.job = WorkerJob::start(renderThreads(settings.threads), std::move(prepare), [wake = wake_] { wake->wake(); });
}

void Service::fail(Client& client, const std::string& why) {
    log::warning(kSource, "a client isn't served: " + why);
    if (client.job) client.job->cancel();
    client.job.reset();
    client.incoming.reset();
    client.outbox.push_back(encode(Failed{why, false}));
    client.leaveBy = Clock::now() + kLastWords;
}

// ---- What the worker says -----------------------------------------------------------------------------------------------------

/// From the job's outcomes to messages, as long as these find room.
void Service::fill(Client& client) {
    if (!client.job || !client.outbox.empty()) return;
    std::string stream;
    std::string failure;
    for (auto& outcome : client.job->take(kTakenBytes)) {
        if (auto* const prepared = std::get_if<WorkerJob::Prepared>(&outcome)) {
            parcels_.keepPrepared(client.offer.hash, client.offer.setup, std::move(prepared->scene));
            client.outbox.push_back(encode(Ready{}));
        } else if (auto* const failed = std::get_if<WorkerJob::Failure>(&outcome)) {
            failure = std::move(failed->why);
        } else if (const auto* const result = std::get_if<WorkerJob::Result>(&outcome)) {
            appendResult(stream, {result->id, result->counts.samples, result->counts.wrong, result->bytes.size()}, result->bytes);
        }
    }
    for (std::span<const char> rest = stream; !rest.empty();) {
        const auto part = rest.first(std::min(kPartBytes, rest.size()));
        client.outbox.push_back(encode(ResultPart{part}));
        rest = rest.subspan(part.size());
    }
    if (!failure.empty()) fail(client, failure);
}

/// False if the client is gone.
bool Service::deliver(const std::string& peer, Client& client) {
    if (client.outbox.empty() && Clock::now() - client.lastTold >= kAliveEvery) client.outbox.push_back(encode(Alive{}));
    while (!client.outbox.empty()) {
        switch (listener_.send(peer, client.outbox.front())) {
            case network::Listener::Sent::gone:
                return false;
            case network::Listener::Sent::full:
                isStuck_ = true;
                return true;
            case network::Listener::Sent::done:
                client.outbox.pop_front();
                client.lastTold = Clock::now();
                if (client.outbox.empty()) fill(client);
        }
    }
    return true;
}

/// Who has fallen silent, and what is to be reported.
void Service::watch() {
    const auto now = Clock::now();
    for (const std::string& peer : std::vector<std::string>(order_.begin(), order_.end())) {
        if (now - clients_.at(peer).lastHeard > kSilence) drop(peer, "nothing has been heard of it");
    }
    if (refusals_ > 0 && now >= nextReport_) {
        const int count = std::exchange(refusals_, 0);
        log::warning(kSource, count == 1 ? "turned somebody away who doesn't know the password"
                                         : "turned " + std::to_string(count) + " connections away that don't know the password");
        nextReport_ = now + kReportEvery;
    }
}

void Service::drop(const std::string& peer, const std::string& why) {
    const bool wasServed = !order_.empty() && order_.front() == peer;
    clients_.erase(peer);
    std::erase(order_, peer);
    log::info(kSource, why.empty() ? "a client has left" : "a client is dropped: " + why);
    if (!wasServed) return;
    if (Client* const next = served()) {
        next->outbox.push_back(encode(Turn{}));
        log::info(kSource, "the next client is served");
    } else {
        busyChanged_(false);
    }
}

}  // namespace nemra::core::worker
