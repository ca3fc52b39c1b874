/// A svbin file whose structure has been checked, and the guard over what may be taken out of it.
#pragma once

#include <flatbuffers/flatbuffers.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/node/encoding/report.h"
#include "scene_generated.h"

namespace nemra::node::svbin {

/// "origin:byte 123", counted from 0.
std::string placeOf(std::string_view origin, std::size_t at);

/// Tables of a file can refer to the same bytes again and again, so that a small file would unfold without end. Therefore what is
/// copied out may be no more than the file has, and what is looked at only a multiple of that.
class FileView {
public:
    /// Throws a Fault for what isn't a sound file of a version that this reader knows. `bytes` must stay.
    FileView(std::span<const char> bytes, std::string_view origin, Unknown unknown);
    FileView(const FileView&) = delete;
    FileView& operator=(const FileView&) = delete;

    const fb::File& file() const noexcept { return *file_; }
    Report& report() noexcept { return report_; }
    /// Of a piece of the file, counted from its first byte.
    std::size_t offsetOf(const void* piece) const noexcept {
        return static_cast<std::size_t>(static_cast<const char*>(piece) - bytes_.data());
    }

    /// A text of the file; "" where it is absent. Throws a Fault for what isn't text.
    std::string_view text(const flatbuffers::String* text);
    /// A copy of it.
    std::string copy(const flatbuffers::String* text);

    /// An array of the file as vector of its own; empty where it is absent.
    template <class Number, class Vector = std::vector<Number>>
    Vector copy(const flatbuffers::Vector<Number>* numbers) {
        if (numbers == nullptr) return {};
        charge(copied_, std::size_t{numbers->size()} * sizeof(Number), numbers);
        if (reinterpret_cast<std::uintptr_t>(numbers->Data()) % alignof(Number) == 0) {
            return {numbers->data(), numbers->data() + numbers->size()};
        }
        // Writers of other programs may leave it to four bytes.
        Vector copied(numbers->size());
        if (!copied.empty()) std::memcpy(copied.data(), numbers->Data(), copied.size() * sizeof(Number));
        return copied;
    }

private:
    void charge(std::size_t& budget, std::size_t bytes, const void* piece) const;

    std::span<const char> bytes_;
    std::vector<double> aligned_;  // a copy of a file that doesn't begin where its arrays would lie right
    const fb::File* file_ = nullptr;
    Report report_;
    std::size_t looked_;  // bytes that may still be looked at
    std::size_t copied_;  // bytes that may still be copied
};

}  // namespace nemra::node::svbin
