/// The object behind a renderer handle.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "engine/core/job/dispatcher.h"
#include "engine/core/job/halt_condition.h"
#include "engine/core/job/load_scene.h"
#include "engine/core/job/render_job.h"
#include "engine/core/job/settings.h"
#include "engine/core/worker/remote_node.h"

namespace nemra::core {

/// Any function may be called from any thread, also from inside a callback; none waits for a callback.
class Renderer {
public:
    using Loader = std::function<LoadedScene(const Settings&, RenderPlaces)>;

    Renderer();
    ~Renderer();  ///< as release()
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    /// Cancels what runs. After the return no new callback starts; see Dispatcher::close.
    void release();

    void setParameter(std::string_view name, std::string_view value);
    void setHalt(const HaltCondition& halt);
    void clearNodes();
    void addLocalNode();
    void addRemoteNode();

    /// Reads and prepares the scene on the calling thread, so that a broken one is answered with false, and starts the render.
    bool start(const Loader& load);
    void stop();
    bool setPaused(bool paused);
    void updateRaw();
    double statistic(nemra_renderer_stat_t type) const;

    Dispatcher& callbacks() noexcept { return *dispatcher_; }
    /// True in a child of a fork: the threads of this renderer are its parent's, and only release() does something.
    bool isForeign() const noexcept;

private:
    struct Node {
        Settings settings;
        bool isRemote;
    };

    std::shared_ptr<RenderJob> job() const;
    HaltCondition halt() const;
    void say(LogLevel_t level, const std::string& text);
    bool startChecked(const Loader& load);
    void startRemote(std::vector<worker::RemoteNode::Target> targets, std::shared_ptr<RenderJob> job, const LoadedScene& loaded,
                     const Settings& settings, bool hasLocalNode);

    const std::shared_ptr<Dispatcher> dispatcher_;
    const int process_;  ///< id

    mutable std::mutex mutex_;  ///< for all that follows
    Settings settings_;
    std::vector<Node> nodes_;
    HaltCondition halt_;
    bool starting_ = false;
    bool released_ = false;
    std::shared_ptr<RenderJob> job_;  ///< the running or the last one
};

}  // namespace nemra::core
