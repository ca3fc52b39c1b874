/// The one thread of a renderer, or of a server, that calls back into the host.
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>

#include "engine/common/log.h"
#include "engine/core/job/pending_message.h"
#include "engine/core/result/raw.h"
#include "module/flat/nemra_renderer.h"
#include "module/flat/nemra_server.h"

namespace nemra::core {

/// Render threads post, this thread calls, so a host that keeps its lock never slows a render. States, messages, finishes and
/// what a server says of being busy come in the order of their posts and are never lost; of updates and statistics the newest
/// wins.
///
/// The thread starts with the first post and ends after close(). Nobody ever waits for it: the host holds its lock during every
/// call of ours, and a callback may be waiting for just that lock.
class Dispatcher : public std::enable_shared_from_this<Dispatcher> {
public:
    enum class Slot { update, state, finish, statistics, message, busy };
    static constexpr std::size_t kSlotCount = 6;

    /// `owner` is the source of messages about callbacks.
    explicit Dispatcher(const char* owner = "renderer") : owner_(owner) {}

    void setUpdate(void* user, nemra_renderer_raw_callback callback);
    void setState(void* user, nemra_renderer_state_callback callback);
    void setFinish(void* user, nemra_renderer_raw_callback callback);
    void setStatistics(void* user, nemra_renderer_statistics_callback callback);
    void setMessage(void* user, nemra_renderer_message_callback callback);
    void setBusy(void* user, nemra_server_busy_callback callback);
    bool wants(Slot slot) const;

    /// Whose thread posts. During a call of the host its lock is held, so a callback begun at once would only stand in front of
    /// that lock, inside an object that the host may be about to destroy; unless the lock is known (nemraGlobalSetHostLock), such
    /// events wait for a moment.
    enum class From { host, engine };
    void postState(NemraRendererState_t state, From from);
    void postMessage(log::Message message, From from);
    /// Null if there was no memory for a result: the callback then gets a null handle.
    void postFinish(std::shared_ptr<Raw> raw);
    void postUpdate(std::shared_ptr<Raw> raw);
    void postStatistics();
    void postBusy(bool busy, From from);

    /// After the return no new callback starts, what is queued is dropped but for messages, which still go to the host's own
    /// sinks, and the raws given to callbacks are stale. A callback that is under way goes on. May be called from inside a
    /// callback.
    void close();

private:
    struct StateEvent {
        NemraRendererState_t state;
    };
    struct FinishEvent {
        std::shared_ptr<Raw> raw;
    };
    struct StatisticsEvent {};
    struct UpdateEvent {
        std::shared_ptr<Raw> raw;
    };
    struct MessageEvent {
        log::Message message;
        bool toRenderer;  ///< false for what the message callback itself gave rise to
        PendingMessage pending{};
    };
    struct BusyEvent {
        bool busy;
    };
    using Event = std::variant<StateEvent, FinishEvent, StatisticsEvent, UpdateEvent, MessageEvent, BusyEvent>;
    using Clock = std::chrono::steady_clock;
    struct Queued {
        Event event;
        Clock::time_point notBefore;
    };
    struct Callback {
        void* user = nullptr;
        void (*function)() = nullptr;  ///< cast back to its own type before it is called
        std::uint64_t setting = 0;     ///< number of the call that has set it
    };

    void set(Slot slot, void* user, void (*function)());
    Callback callbackOf(Slot slot) const;
    void noteEmpty(Slot slot, const Callback& callback);
    void post(Event event, From from);
    void startThread();
    void run();
    std::optional<Event> take();
    void deliver(const Event& event);
    void deliverRaw(Slot slot, const std::shared_ptr<Raw>& raw);
    /// True if the host's function has done its work.
    template <class Function, class... Arguments>
    bool call(Slot slot, Arguments... arguments);
    void noteFault(Slot slot, const std::string& what);

    const char* const owner_;
    mutable std::mutex mutex_;  ///< for all that follows; never held around a callback
    std::condition_variable wake_;
    std::deque<Queued> queue_;
    std::shared_ptr<Raw> update_;  ///< newest, not delivered yet
    bool statistics_ = false;      ///< to be delivered
    bool closed_ = false;
    bool running_ = false;
    std::array<Callback, kSlotCount> callbacks_{};
    std::uint64_t settings_ = 0;                    ///< calls that have set a callback
    int faults_ = 0;                                ///< exceptions that callbacks have left with us
    bool saidMessageFault_ = false;                 ///< of the message callback that is set
    std::array<nemra_raw_t*, kSlotCount> given_{};  ///< handle that the slot's callback received last
};

}  // namespace nemra::core
