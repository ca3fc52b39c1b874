#include "engine/core/worker/parcel_cache.h"

#include <algorithm>
#include <utility>

namespace nemra::core::worker {

namespace {

constexpr std::size_t kMostEntries = 8;
constexpr std::size_t kMostBytes = std::size_t{1} << 30U;  // one scene may be larger; then it is the only one

}  // namespace

ParcelCache::Parcel ParcelCache::find(const ContentHash& hash) {
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) { return entry.hash == hash; });
    if (found == entries_.end()) return nullptr;
    entries_.splice(entries_.begin(), entries_, found);
    return found->parcel;
}

void ParcelCache::add(const ContentHash& hash, Parcel parcel) {
    if (find(hash)) return;
    bytes_ += parcel->size();
    entries_.push_front({hash, std::move(parcel)});
    while (entries_.size() > 1 && (entries_.size() > kMostEntries || bytes_ > kMostBytes)) {
        bytes_ -= entries_.back().parcel->size();
        entries_.pop_back();
    }
}

std::shared_ptr<const PreparedScene> ParcelCache::findPrepared(const ContentHash& hash, const std::string& setup) const {
    return hash == preparedHash_ && setup == preparedSetup_ ? prepared_ : nullptr;
}

void ParcelCache::keepPrepared(const ContentHash& hash, const std::string& setup, std::shared_ptr<const PreparedScene> scene) {
    preparedHash_ = hash;
    preparedSetup_ = setup;
    prepared_ = std::move(scene);
}

}  // namespace nemra::core::worker
