/// Sources of glare in a picture.
#pragma once

#include "engine/core/glare/position_index.h"
#include "engine/core/glare/visual_field.h"
#include "engine/node/node.h"

namespace nemra::core {

/// How sources are found and rated. docs/glare.md tells the rule.
struct GlareSearch {
    enum class Background { withoutSources, whole, given };
    double luminance = 2000.0;                                   ///< cd/m2, least of a source, if `factor` is 0
    double factor = 0.0;                                         ///< least luminance over the mean one
    std::optional<Vec3> task;                                    ///< direction of the task's middle; the mean is that about it
    double taskRadius = 0.0;                                     ///< radians
    double mergeAngle = 0.0;                                     ///< radians; bright pixels nearer than this belong to one source
    bool byTable = true;                                         ///< position index from the table, else from the formulas
    double minimumSolidAngle = 0.0003, maximumSolidAngle = 0.1;  ///< sr, where the method ends
    Background background = Background::withoutSources;
    double backgroundLuminance = 0.0;  ///< cd/m2, if it is given
};

/// As an output of one of the glare classes says. `raw` tells where the task lies in the view; a task that can't be seen gives a
/// warning, and the mean is that of the whole picture.
GlareSearch glareSearchOf(const node::Node& output, const Raw& raw);

/// Pixels, ends excluded.
struct PixelRange {
    int x0, y0, x1, y1;
};

struct GlareSource {
    std::size_t pixels = 0;
    /// cd/m2, mean over the pixels whose eight neighbours belong to the source too: those at its edge mix it with what is behind.
    /// The mean over all of its pixels if there are no others.
    double luminance = 0.0;
    double solidAngle = 0.0;                  ///< sr; times `luminance` it gives the light of all pixels
    double largestLuminance = 0.0;            ///< cd/m2
    double illuminance = 0.0;                 ///< lx, at the eye across the line of sight
    Vec3 direction{};                         ///< of the middle, weighed by luminance and solid angle
    double x = 0.0, y = 0.0;                  ///< the middle in the image, pixels, weighed alike
    PositionIndex index;                      ///< as the search asks
    PositionIndex formula;                    ///< by the closed forms
    bool isResolved = false;                  ///< has pixels that aren't at its edge
    bool tooSmall = false, tooLarge = false;  ///< outside of what the method is meant for; rated all the same
};

inline constexpr int kNoSource = -1;
inline constexpr int kOutsideRange = -2;  ///< bright, but not in the range that was asked for

struct GlareSources {
    double threshold = 0.0;            ///< cd/m2
    std::vector<GlareSource> sources;  ///< those first that weigh most; excluded ones last
    std::vector<int> source;           ///< per pixel its place in `sources`, kNoSource or kOutsideRange
};

/// Pixels at or above the threshold, joined to their eight neighbours and to others within the merge angle. Pixels out of the
/// range belong to no source, nor to the background.
GlareSources findGlareSources(const VisualField& field, const GlareSearch& search, const PixelRange& range);

}  // namespace nemra::core
