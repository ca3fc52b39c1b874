/// A network without wires: what clients say is put into a queue, and what they are told is looked at.
#pragma once

#include <chrono>
#include <cstring>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "engine/core/worker/messages.h"
#include "engine/network/network.h"

namespace nemra::test {

class FakeListener : public network::Listener {
public:
    std::deque<std::pair<std::string, std::string>> incoming;
    std::map<std::string, std::vector<std::string>> told;
    std::set<std::string> gone;

    int port() const override { return 1; }
    network::Hash proof(const network::Hash& challenge) const override { return challenge; }
    Sent send(const std::string& peer, std::span<const char> message) override {
        if (gone.count(peer) != 0) return Sent::gone;
        told[peer].emplace_back(message.data(), message.size());
        return Sent::done;
    }
    network::Event wait(int timeoutMs, std::string& peer, std::string& message) override {
        if (incoming.empty()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(std::min(timeoutMs, 1)));
            return network::Event::timeout;
        }
        std::tie(peer, message) = std::move(incoming.front());
        incoming.pop_front();
        return network::Event::message;
    }

    void say(const std::string& peer, const core::worker::Message& message) {
        incoming.emplace_back(peer, core::worker::encode(message));
    }
    template <class M>
    int count(const std::string& peer) {
        int found = 0;
        for (const std::string& bytes : told[peer]) {
            const auto message = core::worker::decode(bytes);
            found += message && std::holds_alternative<M>(*message);
        }
        return found;
    }
};

class FakeNetwork : public network::Network {
public:
    network::Keys deriveKeys(std::string_view) const override { return {}; }
    network::Hash hash(std::span<const char> bytes) const override {
        std::uint64_t sum = 14695981039346656037ULL;
        for (const char c : bytes) sum = (sum ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
        network::Hash hash{};
        std::memcpy(hash.data(), &sum, sizeof sum);
        return hash;
    }
    std::string randomPassword() const override { return "?"; }
    std::unique_ptr<network::Link> connect(const std::string&, int, const network::Keys&, int, std::string&) const override {
        return nullptr;
    }
    std::unique_ptr<network::Listener> listen(bool, int, const network::Keys&, int, std::string&) const override {
        return nullptr;
    }
};

}  // namespace nemra::test
