#include "engine/core/job/dispatcher.h"

#include <pthread.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <thread>
#include <type_traits>
#include <utility>

#include "engine/common/host_call.h"
#include "engine/common/slot_table.h"

namespace nemra::core {

namespace {

/// Exceptions of callbacks live for ever (see keepForever), so there is an end to how many one renderer may leave behind.
constexpr int kMostFaults = 64;

/// For hosts that don't tell of their lock: they hand it over within a few milliseconds of running on; what they do right after a
/// call of ours, such as letting go of the renderer, takes microseconds.
constexpr std::chrono::milliseconds kHostPause{5};

constexpr std::array<const char*, Dispatcher::kSlotCount> kSlotNames{"update",     "state",   "finish",
                                                                     "statistics", "message", "busy"};

template <class Function>
auto erased(Function function) {
    return reinterpret_cast<void (*)()>(function);
}

std::size_t indexOf(Dispatcher::Slot slot) { return static_cast<std::size_t>(slot); }

}  // namespace

void Dispatcher::set(Slot slot, void* user, void (*function)()) {
    const std::lock_guard lock(mutex_);
    callbacks_[indexOf(slot)] = {user, function, ++settings_};
    if (slot == Slot::message) saidMessageFault_ = false;
}

void Dispatcher::setUpdate(void* user, nemra_renderer_raw_callback callback) { set(Slot::update, user, erased(callback)); }
void Dispatcher::setState(void* user, nemra_renderer_state_callback callback) { set(Slot::state, user, erased(callback)); }
void Dispatcher::setFinish(void* user, nemra_renderer_raw_callback callback) { set(Slot::finish, user, erased(callback)); }
void Dispatcher::setStatistics(void* user, nemra_renderer_statistics_callback callback) {
    set(Slot::statistics, user, erased(callback));
}
void Dispatcher::setMessage(void* user, nemra_renderer_message_callback callback) { set(Slot::message, user, erased(callback)); }

void Dispatcher::setBusy(void* user, nemra_server_busy_callback callback) { set(Slot::busy, user, erased(callback)); }

/// So that nothing is made any more for a host that wouldn't look at it. Unless it has set its callback anew meanwhile.
void Dispatcher::noteEmpty(Slot slot, const Callback& callback) {
    const std::lock_guard lock(mutex_);
    Callback& kept = callbacks_[indexOf(slot)];
    if (kept.setting == callback.setting) kept.function = nullptr;
}

bool Dispatcher::wants(Slot slot) const {
    const std::lock_guard lock(mutex_);
    return !closed_ && callbacks_[indexOf(slot)].function;
}

Dispatcher::Callback Dispatcher::callbackOf(Slot slot) const {
    const std::lock_guard lock(mutex_);
    return closed_ ? Callback{} : callbacks_[indexOf(slot)];
}

void Dispatcher::postState(NemraRendererState_t state, From from) { post(StateEvent{state}, from); }
void Dispatcher::postBusy(bool busy, From from) { post(BusyEvent{busy}, from); }
void Dispatcher::postMessage(log::Message message, From from) {
    if (!log::hasHostSink() && !wants(Slot::message)) return log::print(message);
    post(MessageEvent{std::move(message), true}, from);
}

void Dispatcher::postFinish(std::shared_ptr<Raw> raw) {
    std::shared_ptr<Raw> dropped;
    {
        const std::lock_guard lock(mutex_);
        dropped = std::move(update_);  // older than what comes now
        update_.reset();
        statistics_ = false;
    }
    post(StatisticsEvent{}, From::engine);
    post(FinishEvent{std::move(raw)}, From::engine);
}

void Dispatcher::postUpdate(std::shared_ptr<Raw> raw) {
    {
        const std::lock_guard lock(mutex_);
        if (closed_) return;
        update_.swap(raw);  // an older one is destroyed after the lock
        startThread();
    }
    wake_.notify_one();
}

void Dispatcher::postStatistics() {
    {
        const std::lock_guard lock(mutex_);
        if (closed_) return;
        statistics_ = true;
        startThread();
    }
    wake_.notify_one();
}

void Dispatcher::post(Event event, From from) {
    {
        const std::lock_guard lock(mutex_);
        if (closed_) return;
        const auto now = Clock::now();
        const bool waits = from == From::host && !hostLock().acquire;
        queue_.push_back({std::move(event), waits ? now + kHostPause : now});
        try {
            startThread();
        } catch (...) {
            queue_.pop_back();  // the poster takes back what it wanted to tell
            throw;
        }
    }
    wake_.notify_one();
}

void Dispatcher::startThread() {
    if (running_) return;
    std::thread([self = shared_from_this()] { self->run(); }).detach();
    running_ = true;
}

void Dispatcher::close() {
    std::deque<Queued> queue;
    std::shared_ptr<Raw> update;
    std::array<nemra_raw_t*, kSlotCount> given{};
    {
        const std::lock_guard lock(mutex_);
        closed_ = true;
        queue.swap(queue_);
        // What went wrong is still told to the host's own sinks: a script that drops a renderer whose start has failed.
        std::copy_if(std::make_move_iterator(queue.begin()), std::make_move_iterator(queue.end()), std::back_inserter(queue_),
                     [](const Queued& queued) { return std::holds_alternative<MessageEvent>(queued.event); });
        update.swap(update_);
        given.swap(given_);
    }
    for (nemra_raw_t*& handle : given) retire(&handle);
    wake_.notify_all();
}

// The frames from here to a callback have neither noexcept nor destructors that do more than give memory back: a host that closes
// down may end this thread inside a callback by a forced unwind.

void Dispatcher::run() {
    pthread_setname_np(pthread_self(), "nemra-callback");
    while (const std::optional<Event> event = take()) {
        try {
            deliver(*event);
        } catch (const std::bad_alloc&) {
            // What couldn't be told is lost; what comes next may find memory again.
        }
    }
}

std::optional<Dispatcher::Event> Dispatcher::take() {
    std::unique_lock lock(mutex_);
    for (;;) {
        if (closed_ && queue_.empty()) return std::nullopt;
        if (!queue_.empty()) {
            const auto notBefore = queue_.front().notBefore;
            if (notBefore > Clock::now()) {
                wake_.wait_until(lock, notBefore);
                continue;
            }
            Event event = std::move(queue_.front().event);
            queue_.pop_front();
            return event;
        }
        if (std::exchange(statistics_, false)) return StatisticsEvent{};
        if (update_) return UpdateEvent{std::exchange(update_, nullptr)};
        wake_.wait(lock);
    }
}

void Dispatcher::deliver(const Event& event) {
    if (const auto* const changed = std::get_if<StateEvent>(&event)) {
        call<nemra_renderer_state_callback>(Slot::state, changed->state);
    } else if (const auto* const finished = std::get_if<FinishEvent>(&event)) {
        deliverRaw(Slot::finish, finished->raw);
    } else if (std::holds_alternative<StatisticsEvent>(event)) {
        call<nemra_renderer_statistics_callback>(Slot::statistics);
    } else if (const auto* const updated = std::get_if<UpdateEvent>(&event)) {
        deliverRaw(Slot::update, updated->raw);
    } else if (const auto* const turned = std::get_if<BusyEvent>(&event)) {
        call<nemra_server_busy_callback>(Slot::busy, turned->busy);
    } else if (const auto* const said = std::get_if<MessageEvent>(&event)) {
        const log::Message& message = said->message;
        const bool heard = said->toRenderer && call<nemra_renderer_message_callback>(Slot::message, message.source.c_str(),
                                                                                     message.text.c_str(), message.level);
        if (!log::deliverToHost(message) && !heard) log::print(message);
    }
}

void Dispatcher::deliverRaw(Slot slot, const std::shared_ptr<Raw>& raw) {
    if (!callbackOf(slot).function) return;
    nemra_raw_t* handle = nullptr;
    try {
        handle = publish<nemra_raw_t>(raw);
    } catch (const std::bad_alloc&) {
        log::error("renderer", "there is no memory for a handle of the result");
        if (slot != Slot::finish) return;  // but whoever waits for the finish must not wait for ever
    }
    nemra_raw_t* before = nullptr;
    bool closed;
    {
        const std::lock_guard lock(mutex_);
        closed = closed_;
        if (!closed) before = std::exchange(given_[indexOf(slot)], handle);
    }
    if (closed) {
        retire(&handle);
        return;
    }
    call<nemra_renderer_raw_callback>(slot, handle);
    // Only now: a script that keeps its latest raw in a variable has the new one there by this time.
    retire(&before);
}

template <class Function, class... Arguments>
bool Dispatcher::call(Slot slot, Arguments... arguments) {
    if (!wants(slot)) return false;
    std::string what;
    bool done = false;
    Callback callback;
    const auto body = [&] {
        // Only now: with the host's lock in hand, the renderer isn't released between this look and the callback's own first
        // steps.
        callback = callbackOf(slot);
        if (!callback.function) return;
        reinterpret_cast<Function>(callback.function)(callback.user, arguments...);
        done = true;
    };
    switch (callHost(body, what)) {
        case HostCall::threw:
            noteFault(slot, what);
            break;
        case HostCall::empty:
            noteEmpty(slot, callback);
            break;
        case HostCall::done:
        case HostCall::closed:
            break;
    }
    return done;
}

void Dispatcher::noteFault(Slot slot, const std::string& what) {
    const std::string name = kSlotNames[indexOf(slot)];
    std::string text = "the " + name + " callback raised: " + what;
    const std::lock_guard lock(mutex_);
    const bool isLast = ++faults_ >= kMostFaults;
    if (isLast) {
        callbacks_[indexOf(slot)] = {};
        text += " (after " + std::to_string(faults_) + " faults of callbacks it is called no more)";
    }
    // Once is enough where each message is printed that the callback didn't take.
    if (slot == Slot::message && std::exchange(saidMessageFault_, true) && !isLast) return;
    const bool toRenderer = slot != Slot::message && callbacks_[indexOf(Slot::message)].function;
    queue_.push_front({MessageEvent{{NEMRA_LOG_ERROR, owner_, std::move(text)}, toRenderer}, Clock::now()});
}

}  // namespace nemra::core
