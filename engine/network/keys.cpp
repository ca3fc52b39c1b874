#include "engine/network/keys.h"

#include <sodium.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <new>
#include <string>
#include <tuple>

namespace nemra::network {

namespace {

/// RFC 9106 (Biryukov et al. 2021), section 4, second recommended choice, but for the lanes, of which libsodium has one.
constexpr unsigned long long kPasses = 3;
constexpr std::size_t kMemory = std::size_t{64} << 20U;

/// The same for all: the two ends know nothing of each other but the password. So a table of the keys of common passwords could
/// be made once for all users, which is why the documentation asks for long ones.
constexpr std::array<unsigned char, crypto_pwhash_SALTBYTES> kSalt{'n', 'e', 'm', 'r', 'a', ' ', 'w', 'o',
                                                                   'r', 'k', 'e', 'r', ' ', 'v', '0', '2'};

Keys deriveAnew(std::string_view password) {
    std::array<unsigned char, crypto_box_SEEDBYTES + std::tuple_size_v<Key>> seeds{};
    if (crypto_pwhash(seeds.data(), seeds.size(), password.data(), password.size(), kSalt.data(), kPasses, kMemory,
                      crypto_pwhash_ALG_ARGON2ID13) != 0) {
        throw std::bad_alloc();
    }
    Keys keys{};
    crypto_box_seed_keypair(keys.clientPublic.data(), keys.clientSecret.data(), seeds.data());
    std::copy_n(seeds.begin() + crypto_box_SEEDBYTES, keys.proof.size(), keys.proof.begin());
    sodium_memzero(seeds.data(), seeds.size());
    return keys;
}

/// Of the last password, since scripts start many renders with one.
struct Known {
    std::mutex mutex;
    std::string password;
    Keys keys{};
    bool isSet = false;
};

}  // namespace

Keys deriveKeysOf(std::string_view password) {
    static auto* const known = new Known;  // for the whole process
    {
        const std::lock_guard lock(known->mutex);
        if (known->isSet && known->password == password) return known->keys;
    }
    const Keys keys = deriveAnew(password);
    const std::lock_guard lock(known->mutex);
    known->password = password;
    known->keys = keys;
    known->isSet = true;
    return keys;
}

const PortKeys& portKeys() {
    static const PortKeys keys = [] {
        std::array<unsigned char, crypto_box_SEEDBYTES> seed{};
        std::copy_n(kSalt.begin(), kSalt.size(), seed.begin());
        PortKeys made{};
        crypto_box_seed_keypair(made.publicKey.data(), made.secretKey.data(), seed.data());
        return made;
    }();
    return keys;
}

Hash proofOf(const Key& key, const Hash& challenge) {
    Hash proof{};
    crypto_generichash(proof.data(), proof.size(), challenge.data(), challenge.size(), key.data(), key.size());
    return proof;
}

}  // namespace nemra::network
