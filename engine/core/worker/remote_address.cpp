#include "engine/core/worker/remote_address.h"

#include <charconv>

namespace nemra::core::worker {

std::string RemoteAddress::text() const {
    const bool isVersion6 = host.find(':') != std::string::npos;
    return (isVersion6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

std::optional<RemoteAddress> parseAddress(std::string_view text) {
    RemoteAddress address;
    std::string_view rest;
    if (text.starts_with('[')) {
        const auto end = text.find(']');
        if (end == std::string_view::npos) return std::nullopt;
        address.host = text.substr(1, end - 1);
        rest = text.substr(end + 1);
    } else {
        const auto colon = text.find(':');
        if (colon != text.rfind(':')) return std::nullopt;  // IPv6 takes brackets, or its end could be a port
        address.host = text.substr(0, colon);
        if (colon != std::string_view::npos) rest = text.substr(colon);
    }
    if (address.host.empty()) return std::nullopt;
    if (rest.empty()) return address;
    if (!rest.starts_with(':')) return std::nullopt;
    rest.remove_prefix(1);
    const auto [end, fault] = std::from_chars(rest.data(), rest.data() + rest.size(), address.port);
    if (fault != std::errc() || end != rest.data() + rest.size() || address.port < 1 || address.port > 65535) return std::nullopt;
    return address;
}

}  // namespace nemra::core::worker
