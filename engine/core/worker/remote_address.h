/// Where a worker is.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nemra::core::worker {

inline constexpr int kDefaultPort = 8977;

struct RemoteAddress {
    std::string host;
    int port = kDefaultPort;

    std::string text() const;
};

/// "host", "host:port" or "[ipv6]:port". Nothing for anything else.
std::optional<RemoteAddress> parseAddress(std::string_view text);

}  // namespace nemra::core::worker
