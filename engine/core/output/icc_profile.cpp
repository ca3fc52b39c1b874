#include "engine/core/output/icc_profile.h"

#include <lcms2.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <type_traits>

namespace nemra::core {

namespace {

struct FreeCurve {
    void operator()(cmsToneCurve* curve) const noexcept { cmsFreeToneCurve(curve); }
};
struct CloseProfile {
    void operator()(void* profile) const noexcept { cmsCloseProfile(profile); }
};
struct FreeText {
    void operator()(cmsMLU* text) const noexcept { cmsMLUfree(text); }
};
using Curve = std::unique_ptr<cmsToneCurve, FreeCurve>;
using Profile = std::unique_ptr<void, CloseProfile>;

/// From code values to light: linear below a threshold, a power law above (ICC.1:2010, function type 4 of table 65).
struct PowerLaw {
    double gamma, scale, shift, slope, threshold;
};

PowerLaw powerLawOf(const ColorSpace& space, double gamma) {
    if (gamma > 0.0) return {gamma, 1.0, 0.0, 0.0, 0.0};
    switch (space.curve) {
        case ColorSpace::Curve::srgb:
            return {2.4, 1.0 / 1.055, 0.055 / 1.055, 1.0 / 12.92, 0.04045};
        case ColorSpace::Curve::rec2020: {
            constexpr double alpha = 1.09929682680944;
            constexpr double beta = 0.018053968510807;
            return {1.0 / 0.45, 1.0 / alpha, (alpha - 1.0) / alpha, 1.0 / 4.5, 4.5 * beta};
        }
        case ColorSpace::Curve::linear:
            break;
    }
    return {1.0, 1.0, 0.0, 0.0, 0.0};
}

Curve curveOf(const ColorSpace& space, const DisplayCurve& curve) {
    if (!curve.lights.empty()) {
        std::vector<cmsUInt16Number> table;
        for (const double light : curve.lights) {
            table.push_back(static_cast<cmsUInt16Number>(std::lround(65535.0 * std::clamp(light, 0.0, 1.0))));
        }
        return Curve(cmsBuildTabulatedToneCurve16(nullptr, static_cast<cmsUInt32Number>(table.size()), table.data()));
    }
    const PowerLaw law = powerLawOf(space, curve.gamma);
    if (curve.black <= 0.0 && law.threshold <= 0.0) return Curve(cmsBuildGamma(nullptr, law.gamma));
    if (curve.black <= 0.0) {
        const cmsFloat64Number plain[] = {law.gamma, law.scale, law.shift, law.slope, law.threshold};
        return Curve(cmsBuildParametricToneCurve(nullptr, 4, plain));
    }
    const double range = 1.0 - curve.black;
    const double stretch = std::pow(range, 1.0 / law.gamma);
    const cmsFloat64Number raised[] = {law.gamma,     law.scale * stretch, law.shift * stretch, law.slope * range,
                                       law.threshold, curve.black,         curve.black};
    return Curve(cmsBuildParametricToneCurve(nullptr, 5, raised));
}

const char* nameOf(const ColorSpace& space, const DisplayCurve& curve) {
    if (!curve.lights.empty() || curve.black > 0.0) return "RGB of a measured display";
    if (curve.gamma > 0.0) return "RGB with a power law";
    switch (space.curve) {
        case ColorSpace::Curve::srgb:
            return "sRGB";
        case ColorSpace::Curve::rec2020:
            return "Rec. 2020";
        case ColorSpace::Curve::linear:
            break;
    }
    return "Linear light";
}

bool setText(cmsHPROFILE profile, cmsTagSignature tag, const char* words) {
    const std::unique_ptr<cmsMLU, FreeText> text(cmsMLUalloc(nullptr, 1));
    return text && cmsMLUsetASCII(text.get(), "en", "US", words) && cmsWriteTag(profile, tag, text.get());
}

cmsCIExyY toLcms(Chromaticity c) { return {c.x, c.y, 1.0}; }

/// The header says when a profile was made, to the second. One of the same contents should have the same bytes.
void fixDate(std::vector<char>& profile) {
    constexpr std::size_t kDate = 24;
    constexpr char date[12] = {0x07, static_cast<char>(0xEA), 0, 1, 0, 1, 0, 0, 0, 0, 0, 0};  // 2026-01-01
    if (profile.size() >= kDate + sizeof date) std::copy(std::begin(date), std::end(date), profile.begin() + kDate);
}

}  // namespace

std::vector<char> iccProfile(const ColorSpace& space, const DisplayCurve& display) {
    const auto failed = [] { return std::runtime_error("the ICC profile can't be made"); };
    const Curve curve = curveOf(space, display);
    if (!curve) throw failed();
    const cmsCIExyY white = toLcms(space.white);
    const cmsCIExyYTRIPLE primaries{toLcms(space.red), toLcms(space.green), toLcms(space.blue)};
    cmsToneCurve* curves[] = {curve.get(), curve.get(), curve.get()};
    const Profile profile(cmsCreateRGBProfile(&white, &primaries, curves));
    if (!profile || !setText(profile.get(), cmsSigProfileDescriptionTag, nameOf(space, display)) ||
        !setText(profile.get(), cmsSigCopyrightTag, "No copyright")) {
        throw failed();
    }
    cmsUInt32Number size = 0;
    if (!cmsSaveProfileToMem(profile.get(), nullptr, &size)) throw failed();
    std::vector<char> bytes(size);
    if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size)) throw failed();
    fixDate(bytes);
    return bytes;
}

std::vector<char> profileOf(const DisplayImage& image) {
    if (!image.hasProfile) return {};
    return iccProfile(image.space(), {image.gamma, image.black, image.lights});
}

}  // namespace nemra::core
