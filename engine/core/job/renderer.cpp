#include "engine/core/job/renderer.h"

#include <unistd.h>

#include <algorithm>
#include <exception>
#include <utility>

#include "engine/common/log.h"
#include "engine/common/workdir.h"
#include "engine/core/output/write_result.h"

namespace nemra::core {

namespace {

constexpr const char* kSource = "renderer";

/// Plans to go on where an earlier render of the scene was saved. False after one error message.
bool planResume(const Settings& settings, JobPlan& plan) {
    const std::string file = plan.outputRaw && !plan.outputFile.empty() ? finalSvrawName(plan.outputFile) : "";
    if (file.empty()) {
        log::error(kSource, "the parameter \"resume\" needs \"output_raw\", and an \"output_file_name\" for a svraw file");
        return false;
    }
    plan.resumable = true;
    plan.saveInterval = settings.saveInterval;
    return findResumePoint(file, *plan.scene, plan.from);
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
    localNodes_.clear();
    hasRemoteNode_ = false;
}

void Renderer::addLocalNode() {
    const std::lock_guard lock(mutex_);
    localNodes_.push_back(settings_);
}

void Renderer::addRemoteNode() {
    {
        const std::lock_guard lock(mutex_);
        hasRemoteNode_ = true;
    }
    say(NEMRA_LOG_WARNING, "render workers are not available yet: the remote node is left out");
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
    std::vector<Settings> nodes;
    const char* refusal = nullptr;
    {
        const std::lock_guard lock(mutex_);
        if (starting_ || (job_ && job_->state() != NEMRA_RENDERER_IDLE)) {
            refusal = "a render is under way already: stop it first";
        } else if (!localNodes_.empty()) {
            nodes = localNodes_;
            starting_ = true;
        } else {
            refusal = hasRemoteNode_ ? "no node to render on: render workers are not available yet, add a local node"
                                     : "no node to render on: add a local node first";
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

    const Settings& settings = nodes.back();
    JobPlan plan;
    plan.scene = load(settings);
    if (!plan.scene) return false;
    plan.threads = 0;
    for (const Settings& node : nodes) plan.threads += node.threads > 0 ? node.threads : availableCores();
    plan.outputFile = settings.outputFile.empty() ? "" : resolvePath(settings.outputFile);
    plan.outputRaw = settings.outputRaw;
    plan.haltNoise = settings.haltNoise;
    plan.adaptive = settings.adaptive;
    if (settings.resume && settings.adaptive) {
        log::error(kSource, "the parameters \"resume\" and \"adaptive\" don't go together");
        return false;
    }
    if (settings.resume && !planResume(settings, plan)) return false;

    std::shared_ptr<RenderJob> before;
    std::shared_ptr<RenderJob> job;
    {
        const std::lock_guard lock(mutex_);
        if (released_) return false;
        plan.halt = halt_;
        job = RenderJob::start(std::move(plan), dispatcher_);
        before = std::exchange(job_, job);
    }
    return true;
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
