// One channel for each response of the list: the integral of response times spectral radiance, times an efficacy. The first
// three become X, Y and Z of the picture; a single one, or two, make a grey of the first one.
#include "engine/common/log.h"
#include "engine/core/output/spectral_weights.h"
#include "engine/core/spectrum/response.h"

namespace nemra::core {
namespace {

constexpr double kFirst = 200.0;  // nm; what the engine simulates lies well within
constexpr double kLast = 3000.0;

void toImage(Picture& picture) {
    constexpr double kGreyX = 0.3127 / 0.3290;  // D65
    constexpr double kGreyZ = (1.0 - 0.3127 - 0.3290) / 0.3290;
    const bool isGrey = picture.planes.size() < 3;
    for (std::size_t i = 0; i < picture.planes.front().values.size(); ++i) {
        float* const xyz = picture.image.values.data() + 3 * i;
        for (std::size_t c = 0; c < 3; ++c) xyz[c] = picture.planes[isGrey ? 0 : c].values[i];
        if (!isGrey) continue;
        xyz[0] = static_cast<float>(xyz[0] * kGreyX);
        xyz[2] = static_cast<float>(xyz[2] * kGreyZ);
    }
}

void filterSpecToCustom(const node::Node& node, Picture& picture) {
    const auto responses = node.list();
    if (responses.empty()) return log::warning(node.label(), "it lists no response and is left out");
    if (!hasSpectralChannels(picture.film)) {
        return log::warning(node.label(), "the sensor has no spectral channels; the filter is left out");
    }
    const node::Scene scene;
    Libraries libraries{std::vector<std::string>{}};
    Translation translation(scene, &libraries);
    const double efficacy = node.real("efficacy");
    picture.planes.clear();
    for (const auto& spectrum : responses) {
        const SpectralCurve response = makeSpectrum(spectrum, translation);
        const double norm = responseNorm(node.choice("normalization"), response, kFirst, kLast);
        if (!(norm > 0.0)) log::warning(spectrum->label(), "this response is zero everywhere and can't be normalised");
        std::vector<double> weights = bandWeights(picture.film, response);
        for (double& weight : weights) weight *= norm > 0.0 ? efficacy / norm : 0.0;
        picture.planes.push_back({spectrum->name(), efficacy == 1.0 ? "W.m^-2.sr^-1" : "lm.m^-2.sr^-1",
                                  weighedSum(picture.film, picture.view, weights)});
    }
    picture.image.width = picture.view.width;
    picture.image.height = picture.view.height;
    picture.image.values.resize(3 * picture.planes.front().values.size());
    toImage(picture);
}

const bool kKnown = filterClasses().add("spectocustom", filterSpecToCustom);

}  // namespace
}  // namespace nemra::core
