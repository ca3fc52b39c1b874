/// Ratings of glare from the sources in a visual field.
#pragma once

#include "engine/core/glare/sources.h"

namespace nemra::core {

struct GlareRating {
    double background = 0.0;           ///< cd/m2, of the unified glare rating
    double verticalIlluminance = 0.0;  ///< lx at the eye, across the line of sight
    double covered = 0.0;              ///< share of the visual field (by projected solid angle) that the picture shows
    /// Unified glare rating, CIE 117:1995: 8 lg(0.25 / Lb sum of L^2 omega / p^2). Minus infinity without a source that counts;
    /// not a number without a background.
    double ugr = 0.0;
    /// Daylight glare probability, Wienold and Christoffersen, "Evaluation methods and development of a new glare prediction
    /// model for daylight environments with the use of CCD cameras", Energy and Buildings 38(7), 2006: 5.87e-5 Ev + 9.18e-2 lg(1
    /// + sum of L^2 omega / (Ev^1.87 p^2)) + 0.16, with the closed forms of p, at most 1.
    double dgp = 0.0;
};

/// What the picture doesn't show of the hemisphere before the eye counts with the mean luminance of what it shows, without the
/// sources.
GlareRating rateGlare(const VisualField& field, const GlareSources& found, const GlareSearch& search);

/// The unified glare rating of the sources in a part of the picture, which is clamped to it; as rateGlare gives it, and not a
/// number, after a warning, where the result doesn't allow it. The rule for sources is that of the result's output if it is one
/// of the glare classes, else that of an untouched glarereport.
double unifiedGlareRating(const Raw& raw, const PixelRange& range);

}  // namespace nemra::core
