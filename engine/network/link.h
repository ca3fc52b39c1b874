/// The client's end of a connection to a worker.
#pragma once

#include <memory>
#include <string>

#include "engine/network/network.h"

namespace nemra::network {

std::unique_ptr<Link> connectTo(const std::string& host, int port, const Keys& keys, int wakeDescriptor, std::string& why);

}  // namespace nemra::network
