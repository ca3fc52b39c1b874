/// Builds a svbin file piece by piece. The pieces of a table are made before the table itself, so a file grows from its end to
/// its front.
#pragma once

#include <flatbuffers/flatbuffers.h>

#include <string_view>
#include <vector>

#include "engine/common/buffer.h"
#include "scene_generated.h"

namespace nemra::node::svbin {

template <class T>
using Offset = flatbuffers::Offset<T>;
using Text = Offset<flatbuffers::String>;

class FileBuilder {
public:
    /// `expected` bytes are reserved; a file of more grows by copying.
    explicit FileBuilder(std::size_t expected) : builder_(expected, &heap_) {}

    /// A text of its own.
    Text text(std::string_view text) {
        checkRoom(text.size());
        return builder_.CreateString(text.data(), text.size());
    }
    /// None for an empty text.
    Text textOrNone(std::string_view words) { return words.empty() ? Text() : text(words); }
    /// A word that many tables refer to: names of classes, parameters, slots. Stored once.
    Text word(std::string_view word) {
        checkRoom(word.size());
        return builder_.CreateSharedString(word.data(), word.size());
    }

    /// Numbers, at a multiple of 16 bytes; none for an empty array.
    template <class Number>
    Offset<flatbuffers::Vector<Number>> numbers(const Number* first, std::size_t count) {
        if (count == 0) return {};
        checkRoom(count * sizeof(Number));
        builder_.ForceVectorAlignment(count, sizeof(Number), 16);
        return builder_.CreateVector(first, count);
    }
    auto numbers(const auto& all) { return numbers(all.data(), all.size()); }

    /// Tables or texts; none for an empty list.
    template <class T>
    Offset<flatbuffers::Vector<Offset<T>>> list(const std::vector<Offset<T>>& all) {
        if (all.empty()) return {};
        checkRoom(all.size() * sizeof(Offset<T>));
        return builder_.CreateVector(all);
    }
    Offset<flatbuffers::Vector<Text>> texts(const std::vector<std::string>& all) {
        std::vector<Text> offsets;
        for (const std::string& one : all) offsets.push_back(text(one));
        return list(offsets);
    }

    /// For the tables that the generated functions make. Tables are small: there is always room for one.
    flatbuffers::FlatBufferBuilder& tables() {
        checkRoom(0);
        return builder_;
    }

    template <class T>
    Buffer finish(fb::Contents type, Offset<T> contents) {
        return finishFile(type, contents.Union());
    }

private:
    class Heap final : public flatbuffers::Allocator {
    public:
        std::uint8_t* allocate(std::size_t size) override;
        void deallocate(std::uint8_t* block, std::size_t size) override;
    };

    /// Throws std::length_error if a file with that many more bytes couldn't be read any more.
    void checkRoom(std::size_t more) const;
    Buffer finishFile(fb::Contents type, Offset<void> contents);

    Heap heap_;
    flatbuffers::FlatBufferBuilder builder_;
};

}  // namespace nemra::node::svbin
