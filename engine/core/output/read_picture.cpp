#include "engine/core/output/read_picture.h"

#include <algorithm>

#include "engine/common/log.h"
#include "engine/common/workdir.h"
#include "engine/core/image/decode.h"
#include "engine/core/image/image_node.h"
#include "engine/core/result/read_file.h"

namespace nemra::core {

namespace {

/// Opacities of a PNG file; empty for another one, or one that is opaque.
std::vector<float> alphaOf(std::span<const char> bytes, bool flip) {
    if (!isPng(bytes)) return {};
    const Pixels pixels = decodePng(bytes);
    if (pixels.channels != 2 && pixels.channels != 4) return {};
    std::vector<float> alpha;
    for (int y = 0; y < pixels.height; ++y) {
        for (int x = 0; x < pixels.width; ++x) {
            alpha.push_back(pixels.at(x, flip ? pixels.height - 1 - y : y)[pixels.channels - 1]);
        }
    }
    return alpha;
}

std::vector<float> alphaOf(const node::Node& node) {
    if (node.type() == "embedded") {
        const auto* const bytes = std::get_if<std::vector<char>>(&node.rawSlot("data")->data);
        return alphaOf(*bytes, node.boolean("flip_vertically"));
    }
    if (node.type() != "file") return {};
    const auto bytes = readFileWhole(resolvePath(node.text("path")));
    return bytes ? alphaOf(bytes->bytes(), node.boolean("flip_vertically")) : std::vector<float>();
}

}  // namespace

std::optional<ReadPicture> readPicture(const node::Node& node, bool withAlpha) {
    const auto raw = rawFromImage(node);  // says what is wrong, if anything is
    if (!raw) return std::nullopt;
    const auto film = raw->film();
    if (std::all_of(film->channels.begin(), film->channels.end(),
                    [](const Channel& c) { return c.kind == ChannelKind::unknown; })) {
        log::warning(node.label(), "it holds numbers without colours; the picture is left out");
        return std::nullopt;
    }
    ReadPicture picture{toXyz(*film, *raw->view(), "cie1931_2deg"), {}};
    if (withAlpha) picture.alpha = alphaOf(node);
    return picture;
}

}  // namespace nemra::core
