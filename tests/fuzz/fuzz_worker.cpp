// Target: what a client sends to a worker. The first byte says whether the worker has a scene ready for client a; then comes a
// row of messages of two clients: who (1 byte), length (2 bytes), bytes. Both have said hello, since no input would guess the
// version.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "engine/common/log.h"
#include "engine/core/api/version.h"
#include "engine/core/worker/scene_parcel.h"
#include "engine/core/worker/service.h"
#include "engine/node/node_class.h"
#include "engine/node/read_scene.h"
#include "engine/node/svbin/svbin.h"
#include "tests/engine/worker/fake_network.h"

using namespace nemra;
namespace worker = core::worker;

namespace {

constexpr std::string_view kScene = R"(<scene version="1" name="s"><node family="setup" type="default" name="d">
<child slot="instrument" type="stdcam"><parameter name="width" value="8"/><parameter name="height" value="8"/>
<child slot="sensor" type="ciexyz"/></child></node></scene>)";

void demand(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

const Buffer& parcel() {
    static const Buffer* const packed = [] {
        node::Scene scene;
        demand(node::readScene(kScene, "fuzz", scene), "the scene of the target can't be read");
        auto* const made = new Buffer(worker::packScene(node::writeSvbin(scene)));
        worker::addLibrary(*made, core::libraryContent({}));
        return made;
    }();
    return *packed;
}

/// One service for all runs, which so has the scene ready; at the end of a run nobody is left in it.
struct World {
    test::FakeNetwork network;
    test::FakeListener listener;
    bool isBusy = false;
    worker::Service service{network, listener, std::make_shared<worker::Wake>(),
                            [] { return worker::ServerSettings{.threads = 1, .libraryPaths = {}, .password = {}}; },
                            [this](bool busy) {
                                demand(busy != isBusy, "busy was said twice");
                                isBusy = busy;
                            }};

    void turns() {
        while (!listener.incoming.empty()) service.turn();
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    static auto& world = [&]() -> World& {
        node::registerClasses();
        return *new World;
    }();
    auto& [network, listener, isBusy, service] = world;
    const log::Capture capture([](const log::Message&) {});
    listener.told.clear();
    for (const char* const peer : {"a", "b"}) listener.say(peer, worker::Hello{worker::kProtocol, core::kVersionText, {}});
    const bool hasScene = data[0] % 2 == 1;
    if (hasScene) listener.say("a", worker::SceneOffer{network.hash(parcel().bytes()), parcel().size(), ""});
    world.turns();
    if (listener.count<worker::Need>("a") > 0) listener.say("a", worker::ScenePart{0, parcel().bytes()});
    world.turns();
    for (int i = 0; hasScene && i < 5000 && listener.count<worker::Ready>("a") == 0; ++i) service.turn();
    demand(!hasScene || listener.count<worker::Ready>("a") == 1, "the scene of the target isn't taken");

    for (std::size_t at = 1; at + 3 <= size;) {
        const std::string peer(1, static_cast<char>('a' + data[at] % 2));
        const std::size_t length = std::min<std::size_t>(data[at + 1] + 256U * data[at + 2], size - at - 3);
        const std::string bytes(reinterpret_cast<const char*>(data) + at + 3, length);
        if (const auto message = worker::decode(bytes)) demand(worker::encode(*message) == bytes, "a message isn't what it was");
        listener.incoming.emplace_back(peer, bytes);
        at += 3 + length;
    }
    world.turns();
    listener.gone = {"a", "b"};
    for (const char* const peer : {"a", "b"}) listener.say(peer, worker::Goodbye{});
    world.turns();
    listener.gone.clear();
    demand(!isBusy, "somebody is still served");
    return 0;
}
