/// What the remote nodes of one render share.
#pragma once

#include <memory>
#include <string>

#include "engine/common/buffer.h"
#include "engine/core/job/dispatcher.h"
#include "engine/core/job/render_job.h"
#include "engine/core/worker/attendance.h"
#include "engine/core/worker/messages.h"
#include "engine/network/network.h"

namespace nemra::core::worker {

struct RemoteRender {
    const network::Network& network;
    std::shared_ptr<RenderJob> job;
    std::shared_ptr<const PreparedScene> scene;
    std::shared_ptr<Dispatcher> dispatcher;
    std::shared_ptr<const Buffer> parcel;
    ContentHash hash{};
    std::string setup;
    bool hasLocalNode = false;
    Attendance attendance;

    /// The job wants no more samples.
    bool isOver() const {
        const auto state = job->state();
        return state == NEMRA_RENDERER_STOPPING || state == NEMRA_RENDERER_IDLE;
    }
};

}  // namespace nemra::core::worker
