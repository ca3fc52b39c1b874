#include "engine/core/glare/visual_field.h"

#include <algorithm>
#include <cmath>

#include "engine/core/output/parallel_rows.h"
#include "engine/core/output/picture.h"
#include "engine/core/output/spectral_weights.h"

namespace nemra::core {

VisualField makeVisualField(const Projection& projection, int width, int height, std::vector<float> luminance) {
    VisualField field{width, height, std::move(luminance), {}, {}};
    field.solidAngle.resize(field.luminance.size());
    field.direction.resize(field.luminance.size());
    parallelRows(height, [&](int y) {
        for (int x = 0; x < width; ++x) {
            const std::size_t pixel = field.pixel(x, y);
            float& value = field.luminance[pixel];
            if (!(value > 0.0F) || !std::isfinite(value)) value = 0.0F;
            const auto direction = projection.direction(x + 0.5, y + 0.5);
            if (!direction || !((*direction)[2] > 0.0)) continue;
            field.solidAngle[pixel] = static_cast<float>(solidAngle(projection, x, y));
            for (std::size_t i = 0; i < 3; ++i) field.direction[pixel][i] = static_cast<float>((*direction)[i]);
        }
    });
    return field;
}

std::optional<VisualField> makeVisualField(const Raw& raw, std::string& why) {
    const auto film = raw.film();
    const auto view = raw.view();
    if (film->channels.empty() || view->values.empty()) {
        why = "the result has no channels";
        return std::nullopt;
    }
    const int reference = referenceChannel(*film);
    if (reference >= 0 && film->channels[std::size_t(reference)].kind == ChannelKind::energy) {
        why = "the sensor measures energy, not luminance";
        return std::nullopt;
    }
    const bool isLuminance = reference >= 0 && film->channels[std::size_t(reference)].kind == ChannelKind::luminous;
    if (!isLuminance && !hasSpectralChannels(*film)) {
        why = "luminances need spectral channels or the channel Y";
        return std::nullopt;
    }
    const auto instrument = raw.instrument();
    const auto projection = projectionOf(raw);
    if (!projection) {
        why = instrument ? "the pixels of this instrument have no directions" : "the result has no instrument";
        return std::nullopt;
    }
    const auto& provided = raw.quantities();
    if (std::find(provided.begin(), provided.end(), NEMRA_QUANTITY_SCENE_RADIANCE) == provided.end()) {
        why = "the pixels don't hold luminances";
        return std::nullopt;
    }
    const XyzImage xyz = toXyz(*film, *view, "cie1931_2deg");
    std::vector<float> luminance(xyz.values.size() / 3);
    for (std::size_t i = 0; i < luminance.size(); ++i) luminance[i] = xyz.values[3 * i + 1];
    return makeVisualField(*projection, xyz.width, xyz.height, std::move(luminance));
}

}  // namespace nemra::core
