#include "engine/common/slot_table.h"

#include <bit>
#include <utility>

namespace nemra {

namespace {

constexpr unsigned kGenerationBits = 10;
constexpr unsigned kLowIndexBits = 18;
constexpr unsigned kKindShift = kGenerationBits + kLowIndexBits;
constexpr unsigned kHighIndexShift = 32;
constexpr std::uint64_t kLastGeneration = (std::uint64_t{1} << kGenerationBits) - 1;
constexpr std::uint64_t kLowIndexMask = (std::uint64_t{1} << kLowIndexBits) - 1;

constexpr std::uint64_t kCurrent = 1;
constexpr std::uint64_t kReader = 2;
constexpr unsigned kStateGenerationShift = 32;
constexpr std::uint64_t kReadersMask = ((std::uint64_t{1} << kStateGenerationShift) - 1) & ~kCurrent;

std::uint64_t generationOf(std::uint64_t id) noexcept { return id & kLastGeneration; }
std::uint64_t indexOf(std::uint64_t id) noexcept {
    return ((id >> kGenerationBits) & kLowIndexMask) | (id >> kHighIndexShift << kLowIndexBits);
}

/// Keeps alive what HotHandle points to; apart from it, since it must be destroyed with its thread.
struct HotKeeper {
    std::shared_ptr<void> object;
    std::uint64_t id = 0;
    ~HotKeeper() { HotHandle::forget(id); }
};
thread_local HotKeeper hotKeeper;

}  // namespace

constinit thread_local HotHandle::Last HotHandle::last_{};

SlotTable& SlotTable::of(Kind kind) noexcept {
    struct All {
        SlotTable* tables[kKindCount];
        All() {
            for (std::size_t i = 0; i < kKindCount; ++i) tables[i] = new SlotTable(static_cast<Kind>(i));
        }
    };
    static const All all;  // its destructor is trivial: the tables outlive every thread
    return *all.tables[static_cast<std::size_t>(kind)];
}

std::uint64_t SlotTable::makeId(std::uint64_t index, std::uint32_t generation) const noexcept {
    return (index >> kLowIndexBits << kHighIndexShift) | (static_cast<std::uint64_t>(kind_) << kKindShift) |
           ((index & kLowIndexMask) << kGenerationBits) | generation;
}

SlotTable::Slot* SlotTable::slotAt(std::uint64_t index) const noexcept {
    const std::uint64_t shifted = (index >> kFirstSegmentBits) + 1;
    const auto segment = static_cast<std::size_t>(std::bit_width(shifted)) - 1;
    if (segment >= kSegments) return nullptr;
    Slot* const slots = segments_[segment].load(std::memory_order_acquire);
    if (!slots) return nullptr;
    const std::uint64_t first = ((std::uint64_t{1} << segment) - 1) << kFirstSegmentBits;
    return slots + (index - first);
}

SlotTable::Slot* SlotTable::slotOf(std::uint64_t id) const noexcept {
    const std::uint64_t index = indexOf(id);
    if (makeId(index, static_cast<std::uint32_t>(generationOf(id))) != id) return nullptr;  // of another kind, or no id at all
    return slotAt(index);
}

std::uint64_t SlotTable::publish(const std::shared_ptr<void>& object, bool held) {
    const std::lock_guard lock(mutex_);
    Slot* taken = nullptr;
    if (freeCount_ > kFreePool) {
        taken = std::exchange(firstFree_, firstFree_->nextFree);
        --freeCount_;
    } else {
        const auto segment = static_cast<std::size_t>(std::bit_width((used_ >> kFirstSegmentBits) + 1)) - 1;
        if (!segments_[segment].load(std::memory_order_relaxed)) {
            segments_[segment].store(new Slot[std::size_t{1} << (segment + kFirstSegmentBits)], std::memory_order_release);
        }
        taken = slotAt(used_);
        taken->index = used_++;
    }
    Slot& slot = *taken;
    slot.object = object;
    if (held) slot.held = object;
    const std::uint64_t generation = slot.state.load(std::memory_order_relaxed) >> kStateGenerationShift;
    slot.state.store((generation << kStateGenerationShift) | kCurrent, std::memory_order_release);
    current_.fetch_add(1, std::memory_order_relaxed);
    return makeId(slot.index, static_cast<std::uint32_t>(generation));
}

bool SlotTable::isCurrent(std::uint64_t id) const noexcept {
    const Slot* const slot = slotOf(id);
    if (!slot) return false;
    const std::uint64_t state = slot->state.load(std::memory_order_acquire);
    return (state & kCurrent) && state >> kStateGenerationShift == generationOf(id);
}

std::shared_ptr<void> SlotTable::find(std::uint64_t id) const noexcept {
    Slot* const slot = slotOf(id);
    if (!slot) return nullptr;
    std::uint64_t state = slot->state.load(std::memory_order_relaxed);
    do {
        if (!(state & kCurrent) || state >> kStateGenerationShift != generationOf(id)) return nullptr;
    } while (!slot->state.compare_exchange_weak(state, state + kReader, std::memory_order_acquire, std::memory_order_relaxed));
    std::shared_ptr<void> object = slot->object.lock();
    const std::uint64_t before = slot->state.fetch_sub(kReader, std::memory_order_acq_rel);
    if (!(before & kCurrent) && (before & kReadersMask) == kReader) {  // retired meanwhile, and we are the last reader
        const std::lock_guard lock(mutex_);
        recycle(*slot);
    }
    return object;
}

void* HotHandle::look(Kind kind, std::uint64_t id) noexcept {
    static_assert(kReaders == kReadersMask);
    const SlotTable& table = SlotTable::of(kind);
    std::shared_ptr<void> object = table.find(id);
    last_ = {};
    if (object) {
        last_ = {id, kind, object.get(), &table.slotOf(id)->state,
                 (generationOf(id) << kStateGenerationShift) | kReadersMask | kCurrent};
    }
    hotKeeper.id = last_.id;
    hotKeeper.object.swap(object);  // what was there before is destroyed when everything is consistent again
    return last_.object;
}

void HotHandle::forget(std::uint64_t id) noexcept {
    if (id == 0 || last_.id != id) return;
    last_ = {};
    hotKeeper.id = 0;
    const std::shared_ptr<void> dropped = std::move(hotKeeper.object);
}

bool SlotTable::hold(std::uint64_t id, const std::shared_ptr<void>& object) {
    const std::lock_guard lock(mutex_);
    if (!isCurrent(id)) return false;
    slotOf(id)->held = object;
    return true;
}

std::shared_ptr<void> SlotTable::letGo(std::uint64_t id) {
    const std::lock_guard lock(mutex_);
    return isCurrent(id) ? std::exchange(slotOf(id)->held, nullptr) : nullptr;
}

std::shared_ptr<void> SlotTable::retire(std::uint64_t id) {
    std::shared_ptr<void> held;
    {
        const std::lock_guard lock(mutex_);
        if (!isCurrent(id)) return nullptr;
        Slot& slot = *slotOf(id);
        held = std::exchange(slot.held, nullptr);
        const std::uint64_t before = slot.state.fetch_and(~kCurrent, std::memory_order_acq_rel);
        current_.fetch_sub(1, std::memory_order_relaxed);
        if ((before & kReadersMask) == 0) recycle(slot);  // else the last reader does
    }
    HotHandle::forget(id);
    return held;
}

void SlotTable::recycle(Slot& slot) const noexcept {
    slot.object.reset();
    const std::uint64_t generation = slot.state.load(std::memory_order_relaxed) >> kStateGenerationShift;
    slot.state.store((generation + 1) << kStateGenerationShift, std::memory_order_release);
    if (generation == kLastGeneration) return;  // used up: an id never comes twice
    slot.nextFree = nullptr;
    (freeCount_++ == 0 ? firstFree_ : lastFree_->nextFree) = &slot;
    lastFree_ = &slot;
}

std::size_t SlotTable::size() const noexcept { return current_.load(std::memory_order_relaxed); }

}  // namespace nemra
