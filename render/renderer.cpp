#include "render/renderer.h"

#include <utility>

#include "render/callback_slot.h"

namespace Nemra {

NemraRenderer::NemraRenderer() {
    handle = nemraRendererCreate();
    takeOwnership();
}

NemraRenderer::~NemraRenderer() {
    emptyCallback(message_);
    emptyCallback(statistics_);
    emptyCallback(finish_);
    emptyCallback(change_);
    emptyCallback(update_);
}

void NemraRenderer::onChange(const StateCallback& callback) {
    replaceCallback(change_, callback);
    nemraRendererSetStateChangedCallback(handle, this, &NemraRenderer::changed);
}

void NemraRenderer::onUpdate(const RawCallback& callback) {
    replaceCallback(update_, callback);
    nemraRendererSetUpdateCallback(handle, this, &NemraRenderer::updated);
}

void NemraRenderer::onFinish(const RawCallback& callback) {
    replaceCallback(finish_, callback);
    nemraRendererSetFinishedCallback(handle, this, &NemraRenderer::finished);
}

void NemraRenderer::onStatisticsUpdate(const StatisticsCallback& callback) {
    replaceCallback(statistics_, callback);
    nemraRendererSetStatisticsCallback(handle, this, &NemraRenderer::statisticsUpdated);
}

void NemraRenderer::onMessage(const MessageCallback& callback) {
    replaceCallback(message_, callback);
    nemraRendererSetMessageCallback(handle, this, &NemraRenderer::messageSent);
}

void NemraRenderer::updated(void* user, nemra_raw_t* raw) {
    if (!user) return;
    NemraRaw borrowedRaw(raw);  // the engine's: a copy is up to the script
    static_cast<NemraRenderer*>(user)->update_(std::move(borrowedRaw));
}

void NemraRenderer::changed(void* user, NemraRendererState_t state) {
    if (!user) return;
    static_cast<NemraRenderer*>(user)->change_(state);
}

void NemraRenderer::finished(void* user, nemra_raw_t* raw) {
    if (!user) return;
    NemraRaw borrowedRaw(raw);
    static_cast<NemraRenderer*>(user)->finish_(std::move(borrowedRaw));
}

void NemraRenderer::statisticsUpdated(void* user) {
    if (!user) return;
    static_cast<NemraRenderer*>(user)->statistics_();
}

void NemraRenderer::messageSent(void* user, const char* source, const char* message, LogLevel_t level) {
    if (!user) return;
    const std::string sourceText(source);  // null raises std::logic_error, as in every text of the engine's
    const std::string messageText(message);
    static_cast<NemraRenderer*>(user)->message_(sourceText, messageText, level);
}

}  // namespace Nemra
