#include "engine/core/job/renderer.h"

#include <unistd.h>

#include <algorithm>
#include <exception>
#include <utility>

#include "engine/common/log.h"
#include "engine/common/workdir.h"
#include "engine/core/output/final_file.h"
#include "engine/core/output/write_result.h"
#include "engine/core/result/presets.h"
#include "engine/core/worker/load_network.h"
#include "engine/core/worker/remote_nodes.h"

namespace nemra::core {

namespace {

constexpr const char* kSource = "renderer";

/// Plans to go on where an earlier render of the scene was saved. False after one error message.
bool planResume(const Settings& settings, std::uint64_t fingerprint, JobPlan& plan) {
    if (!plan.outputRaw || formatOf(plan.outputFile) != "svraw") {
        log::error(kSource, "the parameter \"resume\" needs \"output_raw\", and an \"output_file_name\" for a svraw file");
        return false;
    }
    plan.resumable = true;
    plan.fingerprint = fingerprint;
    plan.saveInterval = settings.saveInterval;
    return findResumePoint(plan.outputFile, {*plan.scene, fingerprint, plan.adaptive}, plan.from);
}

}  // namespace

Renderer::Renderer() : dispatcher_(std::make_shared<Dispatcher>()), process_(::getpid()) {}

Renderer::~Renderer() { release(); }

bool Renderer::isForeign() const noexcept { return process_ != ::getpid(); }

void Renderer::release() {
    if (isForeign()) return;  // locks may have been held by threads that this process doesn't have
    dispatcher_->close();
    std::shared_ptr<RenderJob> job;
    {
        const std::lock_guard lock(mutex_);
        released_ = true;
        job = std::move(job_);
    }
    if (job) job->cancel();
}

void Renderer::say(LogLevel_t level, const std::string& text) {
    dispatcher_->postMessage({level, kSource, text}, Dispatcher::From::host);
}

std::shared_ptr<RenderJob> Renderer::job() const {
    const std::lock_guard lock(mutex_);
    return job_;
}

HaltCondition Renderer::halt() const {
    const std::lock_guard lock(mutex_);
    return halt_;
}

void Renderer::setParameter(std::string_view name, std::string_view value) {
    std::string why;
    {
        const std::lock_guard lock(mutex_);
        if (settings_.set(name, value, why)) return;
    }
    say(NEMRA_LOG_WARNING, why);
}

void Renderer::setHalt(const HaltCondition& halt) {
    std::shared_ptr<RenderJob> job;
    {
        const std::lock_guard lock(mutex_);
        halt_ = halt;
        job = job_;
    }
    if (job) job->setHalt(halt);
}

void Renderer::clearNodes() {
    const std::lock_guard lock(mutex_);
    nodes_.clear();
}

void Renderer::addLocalNode() {
    const std::lock_guard lock(mutex_);
    nodes_.push_back({settings_, false});
}

void Renderer::addRemoteNode() {
    std::string why;
    {
        const std::lock_guard lock(mutex_);
        why = worker::whyNoTarget(settings_);
        if (why.empty()) nodes_.push_back({settings_, true});
    }
    if (!why.empty()) say(NEMRA_LOG_ERROR, "no remote node is added: " + why);
}

bool Renderer::start(const Loader& load) {
    // What reading and preparing have to say goes to this renderer's own message callback too, from its dispatcher.
    const log::Capture capture(
        [this](const log::Message& message) { dispatcher_->postMessage(message, Dispatcher::From::host); });
    try {
        return startChecked(load);
    } catch (const std::exception& e) {
        log::error(kSource, std::string("the render can't start: ") + e.what());
        return false;
    }
}

bool Renderer::startChecked(const Loader& load) {
    std::vector<Node> nodes;
    const char* refusal = nullptr;
    {
        const std::lock_guard lock(mutex_);
        if (starting_ || (job_ && job_->state() != NEMRA_RENDERER_IDLE)) {
            refusal = "a render is under way already: stop it first";
        } else if (!nodes_.empty()) {
            nodes = nodes_;
            starting_ = true;
        } else {
            refusal = "no node to render on: add a local or a remote node first";
        }
    }
    if (refusal) {
        log::error(kSource, refusal);
        return false;
    }

    // Whatever happens below, the next start finds the renderer ready.
    struct Reset {
        Renderer& renderer;
        ~Reset() {
            const std::lock_guard lock(renderer.mutex_);
            renderer.starting_ = false;
        }
    } const reset{*this};

    const Settings& settings = nodes.back().settings;
    std::vector<Settings> remotes;
    JobPlan plan;
    plan.threads = 0;
    for (const Node& node : nodes) {
        if (node.isRemote) {
            remotes.push_back(node.settings);
        } else {
            plan.threads += renderThreads(node.settings.threads);
        }
    }
    const LoadedScene loaded = load(settings, {.here = plan.threads > 0, .elsewhere = !remotes.empty()});
    if (!loaded.prepared) return false;
    plan.scene = loaded.prepared;
    if (!settings.outputFile.empty()) {
        plan.outputFile = resolvePath(settings.outputFile);
        plan.outputRaw = settings.outputRaw;
        const auto outputs = outputsOf(plan.scene->instrument());
        if (!settleFinalFile(plan.outputFile, plan.outputRaw, outputs.empty() ? nullptr : outputs.front().get())) return false;
    }
    std::vector<worker::RemoteNode::Target> targets;
    if (!remotes.empty()) {
        auto made = worker::makeTargets(remotes);
        if (!made) return false;
        targets = std::move(*made);
        plan.hasOutsideWorkers = true;
    }
    plan.haltNoise = settings.haltNoise;
    plan.adaptive = settings.adaptive;
    plan.firstSample = settings.firstSample;
    if (settings.adaptive && settings.firstSample > 0) {
        log::error(kSource, "the parameters \"adaptive\" and \"first_sample\" don't go together: all begin with the same pilot");
        return false;
    }
    if (settings.firstSample > 0 && halt().sampleLimit() <= settings.firstSample) {
        log::warning(kSource,
                     "\"first_sample\" is not below the samples per pixel of the halt condition: there is nothing to render");
    }
    if (settings.resume && !planResume(settings, loaded.fingerprint, plan)) return false;

    std::shared_ptr<RenderJob> before;
    std::shared_ptr<RenderJob> job;
    {
        const std::lock_guard lock(mutex_);
        if (released_) return false;
        plan.halt = halt_;
        job = std::make_shared<RenderJob>(std::move(plan), dispatcher_);
        if (!targets.empty()) job->addWake(worker::wakerOf(targets));
        job->begin();
        before = std::exchange(job_, job);
    }
    if (!targets.empty()) startRemote(std::move(targets), job, loaded, settings, nodes.size() > remotes.size());
    return true;
}

void Renderer::startRemote(std::vector<worker::RemoteNode::Target> targets, std::shared_ptr<RenderJob> job,
                           const LoadedScene& loaded, const Settings& settings, bool hasLocalNode) {
    const network::Network& network = *worker::loadNetwork();
    const int count = static_cast<int>(targets.size());
    const std::shared_ptr<worker::RemoteRender> render(new worker::RemoteRender{.network = network,
                                                                                .job = std::move(job),
                                                                                .scene = loaded.prepared,
                                                                                .dispatcher = dispatcher_,
                                                                                .parcel = loaded.parcel,
                                                                                .hash = network.hash(loaded.parcel->bytes()),
                                                                                .setup = settings.setup,
                                                                                .hasLocalNode = hasLocalNode,
                                                                                .attendance{count, settings.remotePatience}});
    worker::startRemoteNodes(std::move(targets), render);
}

void Renderer::stop() {
    if (const auto running = job()) running->stop();
}

bool Renderer::setPaused(bool paused) {
    const auto running = job();
    return running && running->setPaused(paused);
}

void Renderer::updateRaw() {
    if (const auto running = job()) running->requestUpdate();
}

double Renderer::statistic(nemra_renderer_stat_t type) const {
    if (const auto last = job()) return last->statistic(type);
    const std::lock_guard lock(mutex_);
    if (type == NEMRA_STAT_HALT_TIME) return std::max(0.0, halt_.time);
    if (type == NEMRA_STAT_HALT_SPP) return std::max(0.0, halt_.spp);
    return 0.0;
}

}  // namespace nemra::core
