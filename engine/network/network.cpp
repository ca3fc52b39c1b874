#include "engine/network/network.h"

#include <sodium.h>

#include <array>
#include <cstdlib>

#include "engine/network/keys.h"
#include "engine/network/link.h"
#include "engine/network/listener.h"

namespace nemra::network {

namespace {

class ZeroMqNetwork final : public Network {
public:
    Keys deriveKeys(std::string_view password) const override { return deriveKeysOf(password); }

    Hash hash(std::span<const char> bytes) const override {
        Hash hash{};
        crypto_generichash(hash.data(), hash.size(), reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), nullptr,
                           0);
        return hash;
    }

    std::string randomPassword() const override {
        std::array<unsigned char, 32> bytes{};
        randombytes_buf(bytes.data(), bytes.size());
        std::array<char, 2 * bytes.size() + 1> text{};
        return sodium_bin2hex(text.data(), text.size(), bytes.data(), bytes.size());
    }

    std::unique_ptr<Link> connect(const std::string& host, int port, const Keys& keys, int wakeDescriptor,
                                  std::string& why) const override {
        return connectTo(host, port, keys, wakeDescriptor, why);
    }

    std::unique_ptr<Listener> listen(bool thisMachineOnly, int port, const Keys& keys, int wakeDescriptor,
                                     std::string& why) const override {
        return listenOn(thisMachineOnly, port, keys, wakeDescriptor, why);
    }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) const Network* nemraNetworkEntry2() {
    if (sodium_init() < 0) return nullptr;
    static const auto* const network = new ZeroMqNetwork;  // for the whole process
    return network;
}

}  // namespace nemra::network
