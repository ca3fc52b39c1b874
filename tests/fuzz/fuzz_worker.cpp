// Target: what a client sends to a worker. The input is a row of messages of any two clients: who (1 byte), length (2 bytes),
// bytes.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "engine/common/log.h"
#include "engine/core/worker/service.h"
#include "engine/node/node_class.h"
#include "tests/engine/worker/fake_network.h"

using namespace nemra;
namespace worker = core::worker;

namespace {

void demand(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    node::registerClasses();
    const log::Capture capture([](const log::Message&) {});
    const test::FakeNetwork network;
    test::FakeListener listener;
    for (std::size_t at = 0; at + 3 <= size;) {
        const std::string peer(1, static_cast<char>('a' + data[at] % 2));
        const std::size_t length = std::min<std::size_t>(data[at + 1] + 256U * data[at + 2], size - at - 3);
        const std::string bytes(reinterpret_cast<const char*>(data) + at + 3, length);
        if (const auto message = worker::decode(bytes)) {
            const std::string again = worker::encode(*message);
            demand(worker::decode(again).has_value() && again == bytes, "a message isn't what it was");
        }
        listener.incoming.emplace_back(peer, bytes);
        at += 3 + length;
    }
    bool isBusy = false;
    const auto wake = std::make_shared<worker::Wake>();
    worker::Service service(
        network, listener, wake, [] { return worker::ServerSettings{}; },
        [&](bool busy) {
            demand(busy != isBusy, "busy was said twice");
            isBusy = busy;
        });
    while (!listener.incoming.empty()) service.turn();
    service.turn();
    return 0;
}
