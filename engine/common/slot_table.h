/// Handles of the flat interface: ids of a typed slot table instead of addresses, so that a null, stale or foreign handle is
/// recognised and answered.
///
/// An id packs the kind (3 bits), the low part of the slot's index (18 bits) and its generation (10 bits) into 31 bits; indices
/// that need more go on in the upper half. A slot whose generations are used up is never used again, so no id comes twice.
/// Released slots wait in a queue, first in first out, until kFreePool of them are there; so a generation lasts.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

#include "module/flat/nemra_types.h"

namespace nemra {

enum class Kind : std::uint32_t { raw = 1, renderer, server, node, geometry, instance, scene };
inline constexpr std::size_t kKindCount = 8;  ///< with the 0 that no handle has

/// The table of one kind. Every function may be called from any thread. Lives for ever.
class NEMRA_API SlotTable {
public:
    static SlotTable& of(Kind kind) noexcept;

    /// A new id. `held`: the table keeps the object alive until letGo or retire; else the id goes stale with the object, whose
    /// destructor should retire it.
    std::uint64_t publish(const std::shared_ptr<void>& object, bool held);
    /// The object, or null for an id that isn't current or whose object is gone. Lock-free.
    std::shared_ptr<void> find(std::uint64_t id) const noexcept;
    /// Makes the table keep the object of a current id alive. False if the id isn't current.
    bool hold(std::uint64_t id, const std::shared_ptr<void>& object);
    /// Stops keeping the object alive; the id stays current for as long as the object lives. Gives back what was held, which the
    /// caller should destroy without locks of its own.
    std::shared_ptr<void> letGo(std::uint64_t id);
    /// Ends the id. Gives back what was held.
    std::shared_ptr<void> retire(std::uint64_t id);

    /// Ids that are current.
    std::size_t size() const noexcept;

private:
    friend class HotHandle;
    struct Slot {
        /// Generation in the upper half; below it the number of finds that are reading the slot, times two, plus one while the
        /// id is current.
        mutable std::atomic<std::uint64_t> state{0};
        std::weak_ptr<void> object;  ///< written only while the id isn't current and nobody reads
        std::shared_ptr<void> held;  ///< under the mutex
        Slot* nextFree = nullptr;    ///< under the mutex
        std::uint64_t index = 0;
    };

    explicit SlotTable(Kind kind) noexcept : kind_(kind) {}
    Slot* slotOf(std::uint64_t id) const noexcept;
    Slot* slotAt(std::uint64_t index) const noexcept;
    std::uint64_t makeId(std::uint64_t index, std::uint32_t generation) const noexcept;
    bool isCurrent(std::uint64_t id) const noexcept;
    void recycle(Slot& slot) const noexcept;  ///< with the mutex held

    static constexpr std::size_t kFirstSegmentBits = 10;
    static constexpr std::size_t kSegments = 38;
    static constexpr std::size_t kFreePool = 256;

    const Kind kind_;
    mutable std::mutex mutex_;
    mutable Slot* firstFree_ = nullptr;  ///< in the order of release
    mutable Slot* lastFree_ = nullptr;
    mutable std::size_t freeCount_ = 0;
    std::uint64_t used_ = 0;  ///< slots ever taken
    std::atomic<std::size_t> current_{0};
    std::array<std::atomic<Slot*>, kSegments> segments_{};  ///< segment s has 2^(s + kFirstSegmentBits) slots
};

/// The object that this thread asked for last by findHot, of whatever kind.
class NEMRA_API HotHandle {
public:
    /// The object, or null, as SlotTable::find has it.
    static void* find(Kind kind, std::uint64_t id) noexcept {
        const Last& last = last_;
        const bool same = last.id == id && last.kind == kind && last.state &&
                          (last.state->load(std::memory_order_acquire) | kReaders) == last.wanted;
        return same ? last.object : look(kind, id);
    }
    /// Lets go of the object of that id, if it is the last.
    static void forget(std::uint64_t id) noexcept;

private:
    friend class SlotTable;
    struct Last {
        std::uint64_t id;
        Kind kind;
        void* object;
        const std::atomic<std::uint64_t>* state;  ///< of the slot
        std::uint64_t wanted;                     ///< the state while the id is current, with all bits of the readers set
    };
    static void* look(Kind kind, std::uint64_t id) noexcept;

    static constexpr std::uint64_t kReaders = 0xfffffffe;
    // Few bytes, so that they fit what the loader keeps for libraries that come late.
    static constinit thread_local Last last_ __attribute__((tls_model("initial-exec")));
};

/// Kind of each handle type.
template <class Handle>
struct KindOf;
template <>
struct KindOf<nemra_raw_t> {
    static constexpr Kind value = Kind::raw;
};
template <>
struct KindOf<nemra_renderer_t> {
    static constexpr Kind value = Kind::renderer;
};
template <>
struct KindOf<nemra_server_t> {
    static constexpr Kind value = Kind::server;
};
template <>
struct KindOf<nemra_onode_t> {
    static constexpr Kind value = Kind::node;
};
template <>
struct KindOf<nemra_geom_t> {
    static constexpr Kind value = Kind::geometry;
};
template <>
struct KindOf<nemra_instance_t> {
    static constexpr Kind value = Kind::instance;
};
template <>
struct KindOf<nemra_scene_t> {
    static constexpr Kind value = Kind::scene;
};

template <class Handle>
std::uint64_t toId(const Handle* handle) noexcept {
    return reinterpret_cast<std::uintptr_t>(handle);
}
template <class Handle>
Handle* toHandle(std::uint64_t id) noexcept {
    return reinterpret_cast<Handle*>(static_cast<std::uintptr_t>(id));
}

/// A handle that keeps the object alive until it is retired: publish<nemra_raw_t>(raw). Null for a null object. All objects
/// behind one handle type must be of the class that `find` is asked for.
template <class Handle, class T>
Handle* publish(const std::shared_ptr<T>& object) {
    return object ? toHandle<Handle>(SlotTable::of(KindOf<Handle>::value).publish(object, true)) : nullptr;
}
/// The object of a handle, or null for a null, stale or foreign one: find<Raw>(handle).
template <class T, class Handle>
std::shared_ptr<T> find(const Handle* handle) noexcept {
    return std::static_pointer_cast<T>(SlotTable::of(KindOf<Handle>::value).find(toId(handle)));
}
/// The same in a few nanoseconds when this thread asked for the same object last, for functions that are called millions of
/// times. The result is good until this thread's next call of findHot; until then the thread keeps the object alive, also when it
/// is retired elsewhere.
template <class T, class Handle>
T* findHot(const Handle* handle) noexcept {
    return static_cast<T*>(HotHandle::find(KindOf<Handle>::value, toId(handle)));
}
/// Ends a handle and clears the field; bears a null address and a null or stale field. True if it was current.
template <class Handle>
bool retire(Handle** handle) {
    if (!handle) return false;
    return SlotTable::of(KindOf<Handle>::value).retire(toId(std::exchange(*handle, nullptr))) != nullptr;
}

}  // namespace nemra
