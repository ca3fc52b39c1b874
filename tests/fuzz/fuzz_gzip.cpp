// Target: the gzip forms. Damage to gzipped bytes nearly always ends at their checksum, so an input is what they inflate to, and
// behind it four bytes that say whether they are gzipped in two pieces and how the gzipped bytes are damaged. An input that
// begins as gzip does is taken as it is.
#include <algorithm>
#include <vector>

#include "engine/node/encoding/gzip.h"
#include "tests/fuzz/read_and_write.h"

namespace {

constexpr std::size_t kDamage = 4;  // a place (two bytes), what its byte is changed by, what is cut off the end

void damage(std::span<char> bytes, const std::uint8_t* how) {
    const std::size_t place = (std::size_t{how[0]} << 8 | how[1]) % bytes.size();
    bytes[place] = static_cast<char>(bytes[place] ^ static_cast<char>(how[2]));
}

nemra::Buffer gzipped(std::span<const char> contents, bool inPieces) {
    if (!inPieces) return nemra::node::gzip(contents);
    nemra::node::GzipPieces pieces;
    pieces.add(contents.first(contents.size() / 2));
    return std::move(pieces).finish(contents.subspan(contents.size() / 2));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace nemra;
    const std::span<const char> input{reinterpret_cast<const char*>(data), size};
    if (node::isGzip(input)) return fuzz::readAndWrite(data, size);
    if (size < kDamage) return 0;
    const std::span<const char> contents = input.first(size - kDamage);
    const std::uint8_t* const how = data + contents.size();
    const Buffer whole = gzipped(contents, (how[0] & 0x80) != 0);
    std::vector<char> bytes(whole.bytes().begin(), whole.bytes().end());
    if (how[2] == 0 && how[3] == 0) {
        Buffer again;
        std::string why;
        fuzz::demand(node::gunzip(bytes, again, why, node::Length::known), "gzip that was written can't be inflated");
        fuzz::demand(again.text() == std::string_view(contents.data(), contents.size()), "gzip lost something");
    }
    damage(bytes, how);
    bytes.resize(bytes.size() - std::min<std::size_t>(how[3], bytes.size()));
    return fuzz::readAndWrite(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}
