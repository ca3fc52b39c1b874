#include "engine/common/log.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "engine/common/host_call.h"

namespace nemra::log {

namespace {

/// A sink that throws this often is called no more until it is given again.
constexpr int kThrowsUntilSilenced = 64;
/// A host that answers a message with a call that causes another message must not run out of stack.
constexpr int kMaximumNesting = 8;

struct Sink {
    HostSink function = nullptr;
    void* user = nullptr;
    std::string text;
    std::shared_ptr<std::atomic<int>> throws;
};
using SinkList = std::vector<Sink>;

struct Sinks {
    std::mutex mutex;
    std::shared_ptr<const SinkList> list = std::make_shared<SinkList>();

    std::shared_ptr<const SinkList> current() {
        const std::lock_guard lock(mutex);
        return list;
    }
};

Sinks& sinks() {
    static auto* const instance = new Sinks;  // for the whole process: threads may still speak while it ends
    return *instance;
}

constinit thread_local Capture* innermost = nullptr;
constinit thread_local int nesting = 0;

class Nested {
public:
    Nested() { ++nesting; }
    ~Nested() { --nesting; }
    Nested(const Nested&) = delete;
    Nested& operator=(const Nested&) = delete;
    explicit operator bool() const { return nesting <= kMaximumNesting; }
};

/// While a capture's own sink runs, what it says itself goes one capture further out.
class Outward {
public:
    explicit Outward(Capture* outer) : kept_(std::exchange(innermost, outer)) {}
    ~Outward() { innermost = kept_; }
    Outward(const Outward&) = delete;
    Outward& operator=(const Outward&) = delete;

private:
    Capture* kept_;
};

}  // namespace

namespace {

std::string lineOf(const Message& message) {
    return message.source.empty() ? message.text : message.source + ": " + message.text;
}

}  // namespace

namespace {

/// True if the sink took the line.
bool deliver(const Sink& sink, const std::string& line, LogLevel_t level) {
    if (sink.throws->load() >= kThrowsUntilSilenced) return false;
    std::string what;
    const HostCall outcome = callHost([&] { sink.function(sink.user, line.c_str(), level); }, what);
    if (outcome == HostCall::threw && sink.throws->fetch_add(1) == 0) {
        print({NEMRA_LOG_ERROR, "", "the message callback raised: " + what});
    }
    return outcome == HostCall::done;
}

}  // namespace

bool hasHostSink() { return !sinks().current()->empty(); }

void print(const Message& message) {
    if (message.level != NEMRA_LOG_WARNING && message.level != NEMRA_LOG_ERROR && message.level != NEMRA_LOG_CRITICAL) return;
    const char* const kind = message.level == NEMRA_LOG_WARNING ? "warning" : "error";
    const std::string line = std::string("nemra: ") + kind + ": " + lineOf(message) + "\n";
    std::fputs(line.c_str(), stderr);
}

bool deliverToHost(const Message& message) {
    const Nested nested;
    if (!nested) return false;
    bool heard = false;
    try {
        const auto list = sinks().current();
        const std::string line = lineOf(message);
        for (const Sink& sink : *list) heard |= deliver(sink, line, message.level);
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        // Nothing is left to say it with: a message is lost when memory is.
    }
    return heard;
}

void emit(LogLevel_t level, std::string_view source, std::string_view text) {
    try {
        const Message message{level, std::string(source), std::string(text)};
        if (Capture* const capture = innermost) {
            const Outward outward(capture->outer_);
            capture->sink_(message);
        } else if (!deliverToHost(message)) {
            print(message);
        }
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        // A capture that throws loses its message, not the caller.
    }
}

Capture::Capture(std::function<void(const Message&)> sink) : sink_(std::move(sink)), outer_(innermost) { innermost = this; }

Capture::~Capture() { innermost = outer_; }

void addHostSink(HostSink sink, void* user, std::string_view text) {
    if (!sink) return;
    Sink added{sink, user, std::string(text), std::make_shared<std::atomic<int>>(0)};
    Sinks& all = sinks();
    const std::lock_guard lock(all.mutex);
    auto list = std::make_shared<SinkList>(*all.list);
    const auto same =
        std::find_if(list->begin(), list->end(), [&](const Sink& known) { return known.function == sink && known.user == user; });
    if (same == list->end()) {
        list->push_back(std::move(added));
    } else {
        *same = std::move(added);
    }
    all.list = std::move(list);
}

}  // namespace nemra::log
