/// What clients and workers say to each other. docs/workers.md describes the talk.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "engine/core/job/piece.h"
#include "engine/network/network.h"

namespace nemra::core::worker {

/// Of the talk: both ends must have the same.
inline constexpr std::uint32_t kProtocol = 2;

/// Bytes of a large content, such as a scene, that one message carries.
inline constexpr std::size_t kPartBytes = std::size_t{96} << 10U;
inline constexpr std::size_t kMostPieces = 2048;  ///< of one message
inline constexpr std::size_t kLongestText = std::size_t{16} << 10U;

/// BLAKE2b of a content.
using ContentHash = network::Hash;

// From the client.
struct Hello {
    std::uint32_t protocol = kProtocol;
    std::string engine;         ///< version: only the same engine computes the same bits
    network::Hash challenge{};  ///< of the link
};
/// What to render: the parcel of a scene, known by its hash, and the setup in it.
struct SceneOffer {
    ContentHash hash{};
    std::uint64_t size = 0;  ///< bytes
    std::string setup;
};
/// A part of what is needed (Need), in order.
struct ScenePart {
    std::uint64_t offset = 0;
    std::span<const char> bytes;  ///< into the message
};
struct Work {
    struct Item {
        std::uint64_t id = 0;
        Piece piece{};
    };
    std::vector<Item> items;
};
struct Pause {
    bool paused = false;
};
struct Goodbye {};

// From the worker.
struct Welcome {
    std::uint32_t threads = 0;
    std::uint32_t ahead = 0;  ///< clients that are served before this one
    network::Hash proof{};    ///< of the client's challenge
};
/// The client is served from now on.
struct Turn {};
/// The worker hasn't got the offered scene: it wants it from there on.
struct Need {
    std::uint64_t offset = 0;
};
struct Ready {};
/// The worker can't do what it was asked for, and serves this client no more.
struct Failed {
    std::string why;
    bool mayTryAgain = false;  ///< it could, at another time
};
/// The next bytes of the stream of results (result_stream.h).
struct ResultPart {
    std::span<const char> bytes;  ///< into the message
};
struct Said {
    std::string source;
    std::string text;
    std::uint32_t level = 0;  ///< LogLevel_t
};

/// From both: nothing, but it shows that one is there.
struct Alive {};

using Message =
    std::variant<Hello, SceneOffer, ScenePart, Work, Pause, Goodbye, Welcome, Turn, Need, Ready, Failed, ResultPart, Said, Alive>;

/// Texts are cut to kLongestText. The result is at most kLargestMessage long, given the limits above.
std::string encode(const Message& message);
/// Nothing for bytes that aren't a whole message and no more.
std::optional<Message> decode(std::span<const char> bytes);

}  // namespace nemra::core::worker
