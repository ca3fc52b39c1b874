/// From a password to keys.
#pragma once

#include "engine/network/network.h"

namespace nemra::network {

Keys deriveKeysOf(std::string_view password);

/// The key pair of every worker's port, which is no secret: with it a client gets as far as to the door (door.h), where it has to
/// show its own. A key that came from the password would keep others out before, but unseen, as often as they try; and it would
/// open what somebody has recorded of a greeting, so that passwords could be tried against that.
struct PortKeys {
    Key publicKey, secretKey;
};
const PortKeys& portKeys();

/// Keyed BLAKE2b (RFC 7693) of a challenge.
Hash proofOf(const Key& key, const Hash& challenge);

}  // namespace nemra::network
