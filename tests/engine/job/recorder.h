/// A host that writes down what a renderer tells it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "engine/core/job/renderer.h"
#include "module/flat/nemra_raw.h"
#include "tests/engine/job/fake_scene.h"

namespace nemra::test {

class Recorder {
public:
    void attach(core::Renderer& renderer) { attach(renderer.callbacks()); }
    void attach(core::Dispatcher& callbacks) {
        callbacks.setState(this, [](void* user, NemraRendererState_t state) {
            static_cast<Recorder*>(user)->note([&](Recorder& r) { r.states.push_back(state); });
        });
        callbacks.setFinish(this, [](void* user, nemra_raw_t* raw) {
            auto& recorder = *static_cast<Recorder*>(user);
            recorder.note([&](Recorder& r) {
                r.finished.push_back(nemraRawCopy(raw));
                r.handles.push_back(raw);
                r.statesAtFinish.push_back(r.states.size());
            });
            if (recorder.onFinish) recorder.onFinish(raw);
        });
        callbacks.setUpdate(this, [](void* user, nemra_raw_t* raw) {
            static_cast<Recorder*>(user)->note([&](Recorder& r) {
                r.handles.push_back(raw);
                r.updateSpp.push_back(nemraRawSPP(raw));
            });
        });
        callbacks.setStatistics(this,
                                [](void* user) { static_cast<Recorder*>(user)->note([](Recorder& r) { ++r.statistics; }); });
        callbacks.setMessage(this, [](void* user, const char* source, const char* text, LogLevel_t) {
            static_cast<Recorder*>(user)->note([&](Recorder& r) { r.messages.push_back(std::string(source) + ": " + text); });
        });
    }

    bool waitFor(const std::function<bool(const Recorder&)>& condition, int timeoutMs = 5000) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), [&] { return condition(*this); });
    }
    bool waitForFinish(std::size_t count = 1) {
        return waitFor([&](const Recorder& r) { return r.finished.size() >= count; });
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::vector<int> states;
    std::vector<nemra_raw_t*> finished;  ///< copies
    std::vector<nemra_raw_t*> handles;   ///< as given
    std::vector<std::size_t> statesAtFinish;
    std::vector<double> updateSpp;
    std::vector<std::string> messages;
    int statistics = 0;
    std::function<void(nemra_raw_t*)> onFinish;

private:
    void note(const std::function<void(Recorder&)>& write) {
        const std::lock_guard lock(mutex);
        write(*this);
        changed.notify_all();
    }
};

/// Lives on: a callback that is under way when its renderer goes ends in its own time.
inline Recorder& makeRecorder() {
    static auto* const all = new std::deque<Recorder>;
    return all->emplace_back();
}

inline core::Renderer::Loader loaderOf(std::shared_ptr<const FakeScene> scene) {
    return [scene](const core::Settings&, core::RenderPlaces) { return core::LoadedScene{scene, nullptr, 0}; };
}

/// A renderer with one local node of that many threads.
inline std::shared_ptr<core::Renderer> rendererWith(int threads, const core::HaltCondition& halt = {}) {
    auto renderer = std::make_shared<core::Renderer>();
    renderer->setParameter("num_threads", std::to_string(threads));
    renderer->addLocalNode();
    renderer->setHalt(halt);
    return renderer;
}

}  // namespace nemra::test
