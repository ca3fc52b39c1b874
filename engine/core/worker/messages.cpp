#include "engine/core/worker/messages.h"

#include <cstring>
#include <type_traits>
#include <utility>

#include "engine/common/byte_reader.h"

namespace nemra::core::worker {

namespace {

/// Writes and reads by the same lists of fields below; each takes what it is given and says nothing of the other.
class Writer {
public:
    static constexpr bool kReads = false;
    std::string bytes;

    template <class Number>
    std::enable_if_t<std::is_arithmetic_v<Number>> operator()(const Number& number) {
        appendNumber(bytes, number);
    }
    void operator()(const bool& flag) { bytes.push_back(flag ? '\1' : '\0'); }
    void operator()(const std::string& text) { appendText(bytes, text.substr(0, kLongestText)); }
    void operator()(const ContentHash& hash) { bytes.append(reinterpret_cast<const char*>(hash.data()), hash.size()); }
    void operator()(const std::span<const char>& rest) { bytes.append(rest.data(), rest.size()); }
};

class Reader {
public:
    static constexpr bool kReads = true;
    explicit Reader(std::span<const char> bytes) : from(bytes) {}
    ByteReader from;
    bool isSound = true;

    template <class Number>
    std::enable_if_t<std::is_arithmetic_v<Number>> operator()(Number& number) {
        number = from.value<Number>();
    }
    void operator()(bool& flag) {
        const auto byte = from.value<std::uint8_t>();
        isSound = isSound && byte <= 1;
        flag = byte == 1;
    }
    void operator()(std::string& text) {
        text = from.text();
        isSound = isSound && text.size() <= kLongestText;
    }
    void operator()(ContentHash& hash) {
        const auto bytes = from.take(hash.size());
        if (from.ok()) std::memcpy(hash.data(), bytes.data(), hash.size());
    }
    void operator()(std::span<const char>& rest) {
        rest = from.take(from.left());
        isSound = isSound && rest.size() <= kPartBytes;
    }
};

template <class Codec, class M>
void fields(Codec& code, M& m) {
    using T = std::remove_const_t<M>;
    if constexpr (std::is_same_v<T, Hello>) {
        code(m.protocol);
        code(m.engine);
        code(m.challenge);
    } else if constexpr (std::is_same_v<T, SceneOffer>) {
        code(m.hash);
        code(m.size);
        code(m.setup);
    } else if constexpr (std::is_same_v<T, ScenePart>) {
        code(m.offset);
        code(m.bytes);
    } else if constexpr (std::is_same_v<T, Work>) {
        auto count = static_cast<std::uint32_t>(m.items.size());
        code(count);
        if constexpr (Codec::kReads) {
            code.isSound = code.isSound && count <= kMostPieces;
            m.items.resize(code.isSound ? count : 0);
        }
        for (auto& item : m.items) {
            code(item.id);
            code(item.piece.tile.x0);
            code(item.piece.tile.y0);
            code(item.piece.tile.x1);
            code(item.piece.tile.y1);
            code(item.piece.first);
            code(item.piece.count);
        }
    } else if constexpr (std::is_same_v<T, Pause>) {
        code(m.paused);
    } else if constexpr (std::is_same_v<T, Welcome>) {
        code(m.threads);
        code(m.ahead);
        code(m.proof);
    } else if constexpr (std::is_same_v<T, Need>) {
        code(m.offset);
    } else if constexpr (std::is_same_v<T, Failed>) {
        code(m.why);
        code(m.mayTryAgain);
    } else if constexpr (std::is_same_v<T, ResultPart>) {
        code(m.bytes);
    } else if constexpr (std::is_same_v<T, Said>) {
        code(m.source);
        code(m.text);
        code(m.level);
    }
}

template <std::size_t Index = 0>
std::optional<Message> decodeKind(std::size_t kind, Reader& reader) {
    if constexpr (Index < std::variant_size_v<Message>) {
        if (kind != Index) return decodeKind<Index + 1>(kind, reader);
        std::variant_alternative_t<Index, Message> message;
        fields(reader, message);
        if (!reader.isSound || !reader.from.ok() || reader.from.left() != 0) return std::nullopt;
        return message;
    } else {
        return std::nullopt;
    }
}

}  // namespace

std::string encode(const Message& message) {
    Writer writer;
    writer(static_cast<std::uint8_t>(message.index()));
    std::visit([&](const auto& m) { fields(writer, m); }, message);
    return std::move(writer.bytes);
}

std::optional<Message> decode(std::span<const char> bytes) {
    Reader reader(bytes);
    std::uint8_t kind = 0;
    reader(kind);
    return reader.from.ok() ? decodeKind(kind, reader) : std::nullopt;
}

}  // namespace nemra::core::worker
