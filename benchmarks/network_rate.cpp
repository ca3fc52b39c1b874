// What encryption costs: messages of the size that workers send, through a TCP connection of this machine, with and without
// CURVE. Ratios of both, taken alternately; the processor time is that of both ends together.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>
#include <zmq.hpp>

#include "benchmarks/process.h"

using nemra::benchmark::processorSeconds;

namespace {

constexpr std::size_t kMessage = std::size_t{96} << 10U;  // bytes, as engine/core/worker/messages.h
constexpr int kMessages = 4000;
constexpr int kTurns = 5;

struct Cost {
    double wall;  ///< s
    double cpu;   ///< s
};

struct KeyPair {
    char publicKey[41];
    char secretKey[41];
    KeyPair() { zmq_curve_keypair(publicKey, secretKey); }
};

Cost measure(bool encrypted) {
    const KeyPair server, client;
    zmq::context_t context(1), otherContext(1);  // two, as in two processes
    zmq::socket_t receiver(context, zmq::socket_type::router), sender(otherContext, zmq::socket_type::dealer);
    if (encrypted) {
        receiver.set(zmq::sockopt::curve_server, true);
        receiver.set(zmq::sockopt::curve_secretkey, server.secretKey);
        sender.set(zmq::sockopt::curve_serverkey, server.publicKey);
        sender.set(zmq::sockopt::curve_publickey, client.publicKey);
        sender.set(zmq::sockopt::curve_secretkey, client.secretKey);
    }
    for (zmq::socket_t* const socket : {&receiver, &sender}) {
        socket->set(zmq::sockopt::sndhwm, 64);
        socket->set(zmq::sockopt::rcvhwm, 64);
        socket->set(zmq::sockopt::linger, 0);
    }
    receiver.bind("tcp://127.0.0.1:*");
    sender.connect(receiver.get(zmq::sockopt::last_endpoint));
    const std::string content(kMessage, 'x');
    const auto pass = [&](int count) {
        std::thread thread([&] {
            for (int i = 0; i < count; ++i) sender.send(zmq::buffer(content), zmq::send_flags::none);
        });
        zmq::message_t peer, message;
        for (int i = 0; i < count; ++i) {
            (void)receiver.recv(peer);
            (void)receiver.recv(message);
        }
        thread.join();
    };
    pass(10);  // past the handshake
    const auto began = std::chrono::steady_clock::now();
    const double cpu = processorSeconds();
    pass(kMessages);
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count(), processorSeconds() - cpu};
}

double middle(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

int main() {
    std::vector<double> wall, cpu, plainCpu, bytesPerSecond;
    for (int turn = 0; turn < kTurns; ++turn) {
        const Cost plain = measure(false);
        const Cost curve = measure(true);
        wall.push_back(curve.wall / plain.wall);
        cpu.push_back(curve.cpu / plain.cpu);
        plainCpu.push_back((curve.cpu - plain.cpu) / (kMessages * static_cast<double>(kMessage)) * 1e9);
        bytesPerSecond.push_back(kMessages * static_cast<double>(kMessage) / curve.wall);
    }
    std::printf(
        "encrypted beside plain: %.2f times the time, %.2f times the processor time; %.2f ns more per byte, both ends together\n",
        middle(wall), middle(cpu), middle(plainCpu));
    std::printf("encrypted: %.0f MB/s through one connection\n", middle(bytesPerSecond) / 1e6);
}
