/// What reading anything must come to: a scene that can be written, or one error and nothing changed.
#pragma once

#include <gtest/gtest.h>

#include <string_view>

#include "engine/node/encoding/encode.h"
#include "engine/node/read_scene.h"
#include "tests/engine/scene/messages.h"
#include "tests/engine/scene/small_scene.h"

namespace nemra::test {

/// Reads over a scene with a mark. True if it was read and can be written; else checks that there is one error and that the mark
/// still stands.
inline bool readOrExplain(std::string_view bytes, node::Scene& scene) {
    Messages messages;
    scene.name = "mark";
    scene.searchPaths = {"kept"};
    const bool read = node::readScene(bytes, "test", scene);
    EXPECT_EQ(messages.errors(), read ? 0 : 1) << messages.text();
    if (!read) {
        EXPECT_EQ(scene.name, "mark");
        EXPECT_EQ(scene.searchPaths.size(), 1U);
        return false;
    }
    node::Scene again;
    EXPECT_TRUE(node::readScene(node::encode(scene, node::Format::svbin).bytes(), "again", again)) << messages.text();
    EXPECT_EQ(svxmlOf(again), svxmlOf(scene));
    return true;
}

}  // namespace nemra::test
