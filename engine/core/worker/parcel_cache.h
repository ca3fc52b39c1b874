/// Scenes that clients have sent, so that each travels once.
#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <string>

#include "engine/common/buffer.h"
#include "engine/core/render.h"
#include "engine/core/worker/messages.h"

namespace nemra::core::worker {

/// Used by one thread. Those that were asked for longest ago go first.
class ParcelCache {
public:
    using Parcel = std::shared_ptr<const Buffer>;

    /// Null if it isn't there.
    Parcel find(const ContentHash& hash);
    void add(const ContentHash& hash, Parcel parcel);

    /// The scene prepared last is kept too, since the next render is often of the same. Null if it is another one.
    std::shared_ptr<const PreparedScene> findPrepared(const ContentHash& hash, const std::string& setup) const;
    void keepPrepared(const ContentHash& hash, const std::string& setup, std::shared_ptr<const PreparedScene> scene);
    /// When what a preparation depends on has changed.
    void forgetPrepared() { prepared_.reset(); }

private:
    struct Entry {
        ContentHash hash;
        Parcel parcel;
    };
    std::list<Entry> entries_;  ///< latest first
    std::size_t bytes_ = 0;
    ContentHash preparedHash_{};
    std::string preparedSetup_;
    std::shared_ptr<const PreparedScene> prepared_;
};

}  // namespace nemra::core::worker
