/// A worker that takes part in a render, for as long as the render lasts: found again when it is lost.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "engine/core/job/job_threads.h"
#include "engine/core/worker/remote_address.h"
#include "engine/core/worker/remote_render.h"
#include "engine/core/worker/server.h"
#include "engine/core/worker/wake.h"

namespace nemra::core::worker {

class RemoteNode : public Stoppable, public std::enable_shared_from_this<RemoteNode> {
public:
    struct Target {
        RemoteAddress address;
        std::string password;
        std::shared_ptr<Server> ownServer;  ///< a server of this process that is there for this node alone, or null
        std::shared_ptr<Wake> wake;         ///< called when there may be work, a pause or an end
    };

    RemoteNode(std::shared_ptr<RemoteRender> render, Target target);
    ~RemoteNode() override;

    /// Begins to look for the worker, on a thread of its own that ends with the render. False if there is no thread.
    bool start();
    void stopForGood() override { wake_->wake(); }

private:
    void run();
    void attend();
    void giveUp(const std::string& why);
    bool rest();
    void sayOnce(LogLevel_t level, const std::string& text);

    const std::shared_ptr<RemoteRender> render_;
    const Target target_;
    const std::string name_;
    const std::shared_ptr<Wake> wake_;
    std::chrono::milliseconds pause_;  ///< before the next try
    std::string said_;                 ///< last, so that what stays as it is isn't said again
};

}  // namespace nemra::core::worker
