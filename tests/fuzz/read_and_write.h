/// What every fuzz target of a scene encoding demands: what can be read must survive being written and read again.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <stdexcept>

#include "engine/common/log.h"
#include "engine/node/encoding/encode.h"
#include "engine/node/node_class.h"
#include "engine/node/read_scene.h"

namespace nemra::fuzz {

inline void demand(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

/// One run of a target: reads the bytes as a scene, and writes what came out as svxml and as svbin.
inline int readAndWrite(const std::uint8_t* data, std::size_t size) {
    node::registerClasses();
    int errors = 0;
    const log::Capture capture([&](const log::Message& message) { errors += message.level == NEMRA_LOG_ERROR; });
    node::Scene scene;
    const bool read = node::readScene({reinterpret_cast<const char*>(data), size}, "fuzz", scene, node::Unknown::skip);
    demand(errors == (read ? 0 : 1), "a refusal has one error, success none");
    if (!read) return 0;
    try {
        const Buffer text = node::writeSvxml(scene);
        node::Scene again;
        demand(node::readScene(node::writeSvbin(scene).bytes(), "fuzz", again), "svbin that was written can't be read");
        demand(node::writeSvxml(again).text() == text.text(), "svbin lost something");
        demand(node::readScene(text.bytes(), "fuzz", again), "svxml that was written can't be read");
        demand(node::writeSvxml(again).text() == text.text(), "svxml lost something");
    } catch (const std::length_error&) {
        // Nested as deep as one encoding bears and the other doesn't.
    }
    return 0;
}

}  // namespace nemra::fuzz
