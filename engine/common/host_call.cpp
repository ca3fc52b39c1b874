#include "engine/common/host_call.h"

#include <atomic>
#include <chrono>
#include <new>
#include <thread>
#include <utility>

namespace nemra {

namespace {

constexpr int kKeptLimit = 4096;

constinit std::atomic<bool> closing{false};
constinit std::atomic<int> inFlight{0};
constinit std::atomic<int> keptCount{0};

/// What hosts threw, in a list that is never emptied.
struct Kept {
    std::exception_ptr thrown;
    Kept* next;
};
constinit std::atomic<Kept*> keptList{nullptr};
constinit thread_local int ownPasses = 0;

constinit std::atomic<int (*)()> lockAcquire{nullptr};
constinit std::atomic<void (*)(int)> lockRelease{nullptr};

}  // namespace

// The count goes up before the flag is read, and the closing side sets the flag before it reads the count; in the single total
// order of these four operations, either the callback sees the gate closed or the closer sees the callback.
GatePass::GatePass() noexcept {
    inFlight.fetch_add(1);
    open_ = !closing.load();
    if (open_) {
        ++ownPasses;
    } else {
        inFlight.fetch_sub(1);
    }
}

GatePass::~GatePass() {
    if (!open_) return;
    --ownPasses;
    inFlight.fetch_sub(1);
}

bool closeCallbackGate(int timeoutMs) {
    closing.store(true);
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    // A callback that closes the gate itself doesn't wait for its own end.
    while (inFlight.load() > ownPasses) {
        if (std::chrono::steady_clock::now() >= until) return false;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return true;
}

void setHostLock(HostLock lock) {
    if (!lock.acquire || !lock.release) return;
    void (*none)(int) = nullptr;
    if (lockRelease.compare_exchange_strong(none, lock.release)) lockAcquire.store(lock.acquire, std::memory_order_release);
}

HostLock hostLock() noexcept {
    int (*const acquire)() = lockAcquire.load(std::memory_order_acquire);
    return acquire ? HostLock{acquire, lockRelease.load(std::memory_order_relaxed)} : HostLock{};
}

bool keepForever(std::exception_ptr thrown) noexcept {
    // Also beyond the limit: dropping it here could already ask for the host's lock.
    if (auto* const entry = new (std::nothrow) Kept{std::move(thrown), keptList.load()}) {
        while (!keptList.compare_exchange_weak(entry->next, entry)) {
        }
    } else {
        alignas(std::exception_ptr) unsigned char storage[sizeof(std::exception_ptr)];
        new (storage) std::exception_ptr(std::move(thrown));  // never destroyed
    }
    return keptCount.fetch_add(1) + 1 < kKeptLimit;
}

}  // namespace nemra
