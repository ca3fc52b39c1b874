/// What render workers and their clients need of a network: messages that arrive whole, in order and encrypted, or not at all; at
/// a worker only from somebody who knows the password, and at a client from somebody who can prove that. ZeroMQ does the framing
/// and the encryption (CURVE); its types stay behind this interface.
///
/// A Link or a Listener is used by one thread at a time, which calls wait() again and again: that is also where clients are let
/// in.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace nemra::network {

/// Bytes of a message. Peers that send more are cut off, and no more is ever kept for one that hasn't shown that it knows the
/// password. What is larger is sent in several.
inline constexpr std::size_t kLargestMessage = std::size_t{128} << 10U;

/// A peer that isn't heard of is noticed after the sum of these, at most.
inline constexpr int kHeartbeatMs = 2000;
inline constexpr int kHeartbeatTimeoutMs = 8000;
/// In which a peer has to have shown that it knows the password.
inline constexpr int kHandshakeMs = 8000;

using Key = std::array<unsigned char, 32>;
using Hash = std::array<unsigned char, 32>;

/// What a password comes to. A client has a key pair by which workers know it, and a worker proves with a key that it is one.
struct Keys {
    Key clientPublic, clientSecret, proof;
};

enum class Event {
    message,    ///< one has arrived
    woken,      ///< the caller's event descriptor was written to
    timeout,    ///< nothing happened in that time
    writable,   ///< a message that didn't fit the queue may fit now
    connected,  ///< link: the peer is there and lets us in; see Link::isProof for whether it knows the password
    closed,     ///< link: the peer is gone, for good
    refused     ///< listener: somebody was turned away who didn't know the password, or doesn't talk like a client
};

/// One connection to a worker. It is never taken up again after it is lost: make a new one.
class Link {
public:
    virtual ~Link() = default;
    /// False, and nothing is sent, while the queue is full.
    virtual bool send(std::span<const char> message) = 0;
    /// Waits at most that long. `wantsWriting`: return as soon as there is room in the queue, too.
    virtual Event wait(int timeoutMs, bool wantsWriting, std::string& message) = 0;
    /// Whether there was somebody at the address at all: tells a refusal from an absence.
    virtual bool wasAnswered() const = 0;
    /// Random, another one for each link. A peer that gives the proof of it (Listener::proof) knows the password; nothing else
    /// that it says is to be believed before.
    virtual const Hash& challenge() const = 0;
    virtual bool isProof(const Hash& proof) const = 0;
};

/// A port with any number of clients.
class Listener {
public:
    virtual ~Listener() = default;
    virtual int port() const = 0;
    virtual Hash proof(const Hash& challenge) const = 0;
    enum class Sent { done, full, gone };
    virtual Sent send(const std::string& peer, std::span<const char> message) = 0;
    /// `peer` is who has sent the message, a name that stays the same for as long as the connection lasts.
    virtual Event wait(int timeoutMs, std::string& peer, std::string& message) = 0;
};

class Network {
public:
    virtual ~Network() = default;
    /// Takes about a tenth of a second and 64 MiB, so that guessing takes long, but nothing for the password that was the last.
    /// Throws std::bad_alloc.
    virtual Keys deriveKeys(std::string_view password) const = 0;
    /// Of the contents, to know them again (BLAKE2b).
    virtual Hash hash(std::span<const char> bytes) const = 0;
    /// A password that nobody guesses.
    virtual std::string randomPassword() const = 0;

    /// Begins to connect; `wakeDescriptor` is an eventfd, or -1. Null and `why` if that isn't possible at all.
    virtual std::unique_ptr<Link> connect(const std::string& host, int port, const Keys& keys, int wakeDescriptor,
                                          std::string& why) const = 0;
    /// Listens on this machine alone or on all its addresses. Port 0 is any. Null and `why` if the port can't be had.
    virtual std::unique_ptr<Listener> listen(bool thisMachineOnly, int port, const Keys& keys, int wakeDescriptor,
                                             std::string& why) const = 0;
};

/// The library's one entry; its version is that of this header, so that a library of another build isn't taken for ours.
inline constexpr const char* kEntryName = "nemraNetworkEntry2";
using Entry = const Network* (*)();

}  // namespace nemra::network
