/// The worker's end: a port that lets in those who know the password.
#pragma once

#include <memory>
#include <string>

#include "engine/network/network.h"

namespace nemra::network {

std::unique_ptr<Listener> listenOn(bool thisMachineOnly, int port, const Keys& keys, int wakeDescriptor, std::string& why);

}  // namespace nemra::network
