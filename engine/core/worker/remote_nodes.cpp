#include "engine/core/worker/remote_nodes.h"

#include <utility>

#include "engine/common/log.h"
#include "engine/core/worker/load_network.h"

namespace nemra::core::worker {

namespace {

/// A server of this process, which nobody else gets in to.
bool openOwnServer(const network::Network& network, const Settings& settings, RemoteNode::Target& target) {
    target.password = network.randomPassword();
    target.ownServer = std::make_shared<Server>(ServerSettings{.threads = settings.threads,
                                                               .libraryPaths = settings.libraryPaths,
                                                               .password = target.password,
                                                               .thisMachineOnly = true});
    target.address = {"127.0.0.1", target.ownServer->open(0)};
    return target.address.port != 0;  // else the server has said why
}

}  // namespace

std::string whyNoTarget(const Settings& settings) {
    if (settings.localRemoteServer) return {};
    if (settings.remoteHost.empty()) return "set the parameter \"remote_host\" first";
    if (!parseAddress(settings.remoteHost)) return "\"" + settings.remoteHost + "\" isn't of the form host:port";
    return {};
}

std::optional<std::vector<RemoteNode::Target>> makeTargets(const std::vector<Settings>& settings) {
    const network::Network* const network = loadNetwork();
    if (!network) return std::nullopt;
    std::vector<RemoteNode::Target> targets;
    for (const Settings& node : settings) {
        RemoteNode::Target target{};
        target.wake = std::make_shared<Wake>();
        if (node.localRemoteServer) {
            if (!openOwnServer(*network, node, target)) return std::nullopt;
        } else {
            target.address = parseAddress(node.remoteHost).value_or(RemoteAddress{});
            target.password = node.password;
        }
        targets.push_back(std::move(target));
    }
    return targets;
}

std::function<void()> wakerOf(const std::vector<RemoteNode::Target>& targets) {
    std::vector<std::shared_ptr<Wake>> wakes;
    for (const auto& target : targets) wakes.push_back(target.wake);
    return [wakes = std::move(wakes)] {
        for (const auto& wake : wakes) wake->wake();
    };
}

void startRemoteNodes(std::vector<RemoteNode::Target> targets, std::shared_ptr<RemoteRender> render) {
    for (auto& target : targets) {
        const auto node = std::make_shared<RemoteNode>(render, std::move(target));
        if (!node->start()) {
            log::error("renderer", "there is no thread for a remote node");
            render->attendance.gaveUp();
        }
    }
    if (!render->hasLocalNode && render->attendance.isHopeless()) render->job->endEarly("no render worker is left");
}

}  // namespace nemra::core::worker
