// Reinhard, Stark, Shirley, Ferwerda, "Photographic Tone Reproduction for Digital Images", ACM Transactions on Graphics 21(3),
// 2002, equation 4: with L = key / (log-average luminance) times luminance, and Lwhite scaled alike,
//   Ld = L (1 + L / Lwhite^2) / (1 + L).
#include "engine/core/output/tone.h"

namespace nemra::core {
namespace {

void filterReinhardGlobal(const node::Node& node, Picture& picture) {
    const double average = logAverage(picture.image);
    if (!(average > 0.0)) return;
    const double scale = node.real("key") / average;
    const double white =
        scale * (node.choice("white") == "luminance" ? node.real("white_luminance") : largestLuminance(picture.image));
    mapLuminance(picture.image, [&](double luminance) {
        const double level = scale * luminance;
        return level * (1.0 + level / (white * white)) / (1.0 + level);
    });
}

const bool kKnown = filterClasses().add("reinhardglobal", filterReinhardGlobal);

}  // namespace
}  // namespace nemra::core
