/// The remote nodes of a render, from the parameters of a renderer to threads that look for workers.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/core/job/settings.h"
#include "engine/core/worker/remote_node.h"

namespace nemra::core::worker {

/// What keeps these settings from naming a worker; "" for nothing.
std::string whyNoTarget(const Settings& settings);

/// Opens the servers that settings want in this process. Nothing after an error message.
std::optional<std::vector<RemoteNode::Target>> makeTargets(const std::vector<Settings>& settings);

/// Wakes the nodes of these targets; for a job to call whenever there may be work, a pause or an end.
std::function<void()> wakerOf(const std::vector<RemoteNode::Target>& targets);

/// Each node lives on its own thread until the render's job is over.
void startRemoteNodes(std::vector<RemoteNode::Target> targets, std::shared_ptr<RemoteRender> render);

}  // namespace nemra::core::worker
