#include "engine/core/output/channel_values.h"

#include <algorithm>
#include <array>

#include "engine/common/log.h"
#include "engine/core/output/spectral_weights.h"
#include "engine/core/result/quantity_unit.h"

namespace nemra::core {

namespace {

struct QuantityName {
    const char* option;
    nemra_quantity_t quantity;
};
constexpr std::array<QuantityName, kQuantityCount> kQuantities{{
    {"raw", NEMRA_QUANTITY_RAW},
    {"scene_radiance", NEMRA_QUANTITY_SCENE_RADIANCE},
    {"scene_irradiance", NEMRA_QUANTITY_SCENE_IRRADIANCE},
    {"sensor_irradiance", NEMRA_QUANTITY_SENSOR_IRRADIANCE},
    {"sensor_power", NEMRA_QUANTITY_SENSOR_POWER},
    {"sensor_exposure", NEMRA_QUANTITY_SENSOR_EXPOSURE},
    {"bsdf", NEMRA_QUANTITY_COMPUTED_BSDF},
}};

nemra_quantity_t quantityOf(const Raw& raw, const node::Node& output, const std::string& option) {
    const auto found =
        std::find_if(kQuantities.begin(), kQuantities.end(), [&](const QuantityName& name) { return name.option == option; });
    const auto& provided = raw.quantities();
    if (found != kQuantities.end() && std::find(provided.begin(), provided.end(), found->quantity) != provided.end()) {
        return found->quantity;
    }
    log::warning(output.label(), "this result has no " + option + "; its raw values are taken");
    return NEMRA_QUANTITY_RAW;
}

std::vector<float> valuesOf(const LightView& view, int channel, int quantity) {
    std::vector<float> values;
    values.reserve(std::size_t(view.width) * std::size_t(view.height));
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) values.push_back(static_cast<float>(view.at(channel, x, y, quantity)));
    }
    return values;
}

/// The picture in another quantity, which differs from the raw values by a factor for each pixel.
void convert(XyzImage& image, const LightView& view, nemra_quantity_t quantity) {
    if (quantity == NEMRA_QUANTITY_RAW) return;
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) {
            const std::size_t pixel = std::size_t(x) * std::size_t(view.height) + std::size_t(y);
            const bool onSensor = quantity >= NEMRA_QUANTITY_SENSOR_POWER || quantity == NEMRA_QUANTITY_SENSOR_IRRADIANCE;
            double factor = view.factors[std::size_t(quantity)];
            if (onSensor && quantity != NEMRA_QUANTITY_COMPUTED_BSDF && !view.offAxis.empty()) factor *= view.offAxis[pixel];
            float* const xyz = image.values.data() + 3 * (std::size_t(y) * std::size_t(view.width) + std::size_t(x));
            for (int c = 0; c < 3; ++c) xyz[c] = static_cast<float>(xyz[c] * factor);
        }
    }
}

Plane component(const XyzImage& image, std::size_t c, const std::string& unit) {
    Plane plane{std::string(1, "XYZ"[c]), unit, {}};
    for (std::size_t i = c; i < image.values.size(); i += 3) plane.values.push_back(image.values[i]);
    return plane;
}

}  // namespace

const Plane* ChannelValues::find(std::string_view name) const noexcept {
    const auto named = [&](std::string_view wanted) -> const Plane* {
        const auto found =
            std::find_if(channels.begin(), channels.end(), [&](const Plane& plane) { return plane.name == wanted; });
        return found == channels.end() ? nullptr : &*found;
    };
    if (!name.empty()) return named(name);
    for (const char* const usual : {"Y", "E"}) {
        if (const Plane* const plane = named(usual)) return plane;
    }
    return channels.empty() ? nullptr : &channels.front();
}

ChannelValues channelValues(const Raw& raw, const node::Node& output, const ChannelChoice& choice, bool fast) {
    const auto film = raw.film();
    const auto view = raw.view();
    const nemra_quantity_t quantity = quantityOf(raw, output, choice.quantity);
    const bool isFiltered = !output.list().empty();
    const std::string luminous = unitOf(Channel{"Y", ChannelKind::luminous, 0.0, 0.0, "cd.m^-2"}, quantity);

    std::vector<Plane> planes;
    for (int i = 0; i < view->channels; ++i) {
        const Channel& channel = film->channels[std::size_t(i)];
        planes.push_back({channel.name, unitOf(channel, quantity), valuesOf(*view, i, quantity)});
    }
    const auto image = [&] {
        XyzImage xyz = toXyz(*film, *view, "cie1931_2deg");
        convert(xyz, *view, quantity);
        return xyz;
    };
    if (!isFiltered) {
        if (choice.withLuminance && hasSpectralChannels(*film)) planes.push_back(component(image(), 1, luminous));
        for (int i = 0; choice.withMeta && i < view->metaChannels; ++i) {
            planes.push_back({kMetaChannelNames[std::size_t(i)], i == int(MetaChannel::depth) ? "m" : "",
                              valuesOf(*view, view->channels + i, NEMRA_QUANTITY_RAW)});
        }
        return {view->width, view->height, std::move(planes)};
    }
    Picture picture{*film, *view, image(), fast, std::move(planes), &raw};
    runFilters(output, picture);
    // The picture's own X, Y, Z take the place of the sensor's.
    std::erase_if(picture.planes, [](const Plane& plane) { return plane.name == "X" || plane.name == "Y" || plane.name == "Z"; });
    for (std::size_t c = 0; c < 3; ++c) picture.planes.push_back(component(picture.image, c, ""));
    return {picture.image.width, picture.image.height, std::move(picture.planes)};
}

}  // namespace nemra::core
