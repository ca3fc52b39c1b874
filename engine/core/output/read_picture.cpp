#include "engine/core/output/read_picture.h"

#include <string>

#include "engine/common/log.h"
#include "engine/core/image/image_node.h"

namespace nemra::core {

namespace {

/// The picture as a result, or null with the reason in `why`.
std::shared_ptr<Raw> rawOf(const node::Node& image, std::string& why) {
    const log::Capture capture([&](const log::Message& message) {
        if (message.level == NEMRA_LOG_ERROR) why = message.text;
    });
    return rawFromImage(image);
}

}  // namespace

std::optional<ReadPicture> readPicture(const node::Node& image) {
    const auto refused = [&](const std::string& why) {
        log::warning(image.label(), why + "; the picture is left out");
        return std::nullopt;
    };
    std::string why;
    const auto raw = rawOf(image, why);
    if (!raw) return refused(why);
    const auto film = raw->film();
    const auto view = raw->view();
    const bool hasColors =
        referenceChannel(*film) >= 0 || (!film->channels.empty() && film->channels.front().kind == ChannelKind::spectral);
    if (!hasColors) return refused("its numbers stand for no colours");
    ReadPicture picture{toXyz(*film, *view, "cie1931_2deg"), {}};
    if (const int alpha = raw->channelIndex("A"); alpha >= 0) {
        for (int y = 0; y < view->height; ++y) {
            for (int x = 0; x < view->width; ++x) {
                picture.alpha.push_back(static_cast<float>(view->at(alpha, x, y, NEMRA_QUANTITY_RAW)));
            }
        }
    }
    return picture;
}

}  // namespace nemra::core
