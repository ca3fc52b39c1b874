// Drago, Myszkowski, Annen, Chiba, "Adaptive Logarithmic Mapping For Displaying High Contrast Scenes", Computer Graphics Forum
// 22(3), 2003, equation 4: with L and Lmax over the log-average luminance, bias b and the display's white Ldmax in cd/m2,
//   Ld = 0.01 Ldmax / log10(Lmax + 1) * ln(L + 1) / ln(2 + 8 (L / Lmax)^(ln b / ln 0.5))
// so that Lmax becomes white on a display of 100 cd/m2.
#include "engine/core/output/tone.h"

namespace nemra::core {
namespace {

void filterDrago(const node::Node& node, Picture& picture) {
    const double average = logAverage(picture.image);
    if (!(average > 0.0)) return;
    const double largest = largestLuminance(picture.image) / average;
    const double exponent = std::log(node.real("bias")) / std::log(0.5);
    const double scale = 0.01 * node.real("display_luminance") / std::log10(largest + 1.0);
    mapLuminance(picture.image, [&](double luminance) {
        const double level = luminance / average;
        return scale * std::log1p(level) / std::log(2.0 + 8.0 * std::pow(level / largest, exponent));
    });
}

const bool kKnown = filterClasses().add("drago", filterDrago);

}  // namespace
}  // namespace nemra::core
