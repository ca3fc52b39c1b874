#include "engine/core/output/read_picture.h"

#include <algorithm>

#include "engine/common/log.h"
#include "engine/core/image/image_node.h"

namespace nemra::core {

namespace {

/// Rows from the top; empty for a picture without opacity.
std::vector<float> alphaOf(const Raw& raw) {
    const int channel = raw.channelIndex("A");
    if (channel < 0) return {};
    const auto view = raw.view();
    std::vector<float> alpha;
    for (int y = 0; y < view->height; ++y) {
        for (int x = 0; x < view->width; ++x) alpha.push_back(static_cast<float>(view->at(channel, x, y, NEMRA_QUANTITY_RAW)));
    }
    return alpha;
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
    if (withAlpha) picture.alpha = alphaOf(*raw);
    return picture;
}

}  // namespace nemra::core
