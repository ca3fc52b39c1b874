#include "engine/node/svbin/file_view.h"

#include <cstdint>
#include <cstring>

#include "engine/node/encoding/limits.h"
#include "engine/node/encoding/utf8.h"
#include "engine/node/svbin/svbin.h"

namespace nemra::node::svbin {

namespace {

constexpr std::size_t kAlignment = 8;  // the largest that an element of an array asks for

/// Tables around nodes (file, scene, geometry) and inside them (value, table, column, run).
constexpr int kOtherDepth = 7;
/// A table takes 4 bytes and the reference to it 4 more, so a sound file has no more tables than this; one that does refers to
/// some of them twice, and could unfold without end.
constexpr std::size_t kBytesOfTable = 8;
/// Names of classes and parameters are stored once and looked at for each node.
constexpr std::size_t kLooksAtByte = 16;

}  // namespace

std::string placeOf(std::string_view origin, std::size_t at) { return std::string(origin) + ":byte " + std::to_string(at); }

FileView::FileView(std::span<const char> bytes, std::string_view origin, Unknown unknown)
    : bytes_(bytes),
      report_(origin, unknown, [origin = std::string(origin)](std::size_t at) { return placeOf(origin, at); }),
      looked_(kLooksAtByte * bytes.size()),
      copied_(bytes.size()) {
    if (bytes.size() > kMaxFileBytes) throw Fault{0, "the file is larger than 2 GiB"};
    if (reinterpret_cast<std::uintptr_t>(bytes.data()) % kAlignment != 0) {
        aligned_.resize(bytes.size() / sizeof(double) + 1);
        std::memcpy(aligned_.data(), bytes.data(), bytes.size());
        bytes_ = {reinterpret_cast<const char*>(aligned_.data()), bytes.size()};
    }
    const auto* const begin = reinterpret_cast<const std::uint8_t*>(bytes_.data());
    flatbuffers::Verifier verifier(begin, bytes_.size(), kMaxFileDepth + kOtherDepth,
                                   static_cast<flatbuffers::uoffset_t>(bytes_.size() / kBytesOfTable + 1));
    if (bytes_.size() < 8 || !fb::VerifyFileBuffer(verifier))
        throw Fault{bytes_.size(),
                    "damaged or cut off: a part of it lies outside of the file, which ends here, or parts nest deeper than " +
                        std::to_string(kMaxFileDepth) + " or hold one another"};
    file_ = fb::GetFile(begin);
    // The last bytes may be padding, which nothing refers to.
    if (file_->size() != 0 && file_->size() != bytes_.size())
        throw Fault{bytes_.size(), "damaged or cut off: the file says that it has " + std::to_string(file_->size()) + " bytes"};
    if (file_->version() < 1) throw Fault{offsetOf(file_), "the version of the form isn't a number from 1"};
    if (file_->version() > kSvbinVersion)
        throw Fault{offsetOf(file_), "written in version " + std::to_string(file_->version()) +
                                         " of the form, this reader knows versions up to " + std::to_string(kSvbinVersion)};
}

void FileView::charge(std::size_t& budget, std::size_t bytes, const void* piece) const {
    if (bytes > budget) throw Fault{offsetOf(piece), "parts of the file are used too often"};
    budget -= bytes;
}

std::string_view FileView::text(const flatbuffers::String* text) {
    if (text == nullptr) return {};
    const std::string_view view(text->c_str(), text->size());
    charge(looked_, view.size(), text);
    if (const std::size_t at = firstNotText(view); at < view.size())
        throw Fault{offsetOf(view.data() + at), view[at] == '\0' ? "a zero byte stands in a text" : "a text isn't UTF-8"};
    return view;
}

std::string FileView::copy(const flatbuffers::String* text) {
    const std::string_view view = this->text(text);
    if (!view.empty()) charge(copied_, view.size(), text);
    return std::string(view);
}

}  // namespace nemra::node::svbin
