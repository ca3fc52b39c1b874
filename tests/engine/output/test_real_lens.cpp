// Directions of the pixels of a realrectcam: lens, shift and distortion, against the formulas the other way round.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "engine/core/output/projection.h"
#include "engine/core/output/radiance_view.h"
#include "tests/engine/output/picture_maker.h"

namespace nemra::outputtest {
namespace {

using core::Vec3;

struct Coefficients {
    double k1, k2, k3, p1, p2;
};

constexpr int kWidth = 96;
constexpr int kHeight = 64;

/// 96 x 64 pixels of 0.25 mm x 0.2 mm behind 16 mm, focused at 0.336 m: the image is 16.8 mm away.
NodeHandle lens(const Coefficients& c, double shiftX = 0.0, double shiftY = 0.0) {
    return make("instrument", "realrectcam",
                {{"width", integer(kWidth)},
                 {"height", integer(kHeight)},
                 {"pixel_pitch_x", number(250)},
                 {"pixel_pitch_y", number(200)},
                 {"focal_length", number(16)},
                 {"focus_distance", number(0.336)},
                 {"shift_x", number(shiftX)},
                 {"shift_y", number(shiftY)},
                 {"distortion", text("brown")},
                 {"k1", number(c.k1)},
                 {"k2", number(c.k2)},
                 {"k3", number(c.k3)},
                 {"p1", number(c.p1)},
                 {"p2", number(c.p2)}});
}

std::unique_ptr<core::Projection> projectionOf(const NodeHandle& camera) {
    return core::projectionOf(*result(film(kWidth, kHeight, xyzChannels(), [](int, int, int) { return 1.0; }), camera));
}

/// Where the camera shows a direction, in pixels from the left upper corner.
std::array<double, 2> pixelOf(const Vec3& direction, const Coefficients& c, double shiftX = 0.0, double shiftY = 0.0) {
    const double x = 16.8 / 16.0 * direction[0] / direction[2];
    const double y = -16.8 / 16.0 * direction[1] / direction[2];
    const double r2 = x * x + y * y;
    const double radial = 1 + c.k1 * r2 + c.k2 * r2 * r2 + c.k3 * r2 * r2 * r2;
    const double mmRight = 16.0 * (x * radial + 2 * c.p1 * x * y + c.p2 * (r2 + 2 * x * x)) - shiftX;
    const double mmDown = 16.0 * (y * radial + c.p1 * (r2 + 2 * y * y) + 2 * c.p2 * x * y) + shiftY;
    return {0.5 * kWidth + mmRight / 0.25, 0.5 * kHeight + mmDown / 0.2};
}

const std::vector<Coefficients> kLenses{{0, 0, 0, 0, 0},        {0.3, 0, 0, 0, 0},
                                        {-0.12, 0, 0, 0, 0},    {-0.25, 0.08, -0.01, 0, 0},
                                        {0, 0, 0, 0.02, -0.03}, {0.1, -0.02, 0.003, -0.01, 0.015}};

TEST(RealLens, DirectionsAreThoseThatTheLensPutsThere) {
    for (const Coefficients& c : kLenses) {
        for (const auto& [shiftX, shiftY] : {std::pair{0.0, 0.0}, std::pair{3.0, -2.0}}) {
            const auto projection = projectionOf(lens(c, shiftX, shiftY));
            ASSERT_TRUE(projection);
            for (double x = 0.0; x <= kWidth; x += 5.3) {
                for (double y = 0.0; y <= kHeight; y += 4.7) {
                    const auto direction = projection->direction(x, y);
                    ASSERT_TRUE(direction) << c.k1 << " at " << x << ", " << y;
                    EXPECT_NEAR(core::length(*direction), 1.0, 1.0e-12);
                    const auto back = pixelOf(*direction, c, shiftX, shiftY);
                    EXPECT_NEAR(back[0], x, 1.0e-6) << c.k1;
                    EXPECT_NEAR(back[1], y, 1.0e-6) << c.k1;
                }
            }
        }
    }
    // The left upper corner of the undistorted view lies to the left and up; a lens shifted to the right looks further right.
    const Vec3 corner = *projectionOf(lens({}))->direction(0, 0);
    EXPECT_NEAR(corner[0] / corner[2], -12.0 / 16.8, 1.0e-12);
    EXPECT_NEAR(corner[1] / corner[2], 6.4 / 16.8, 1.0e-12);
    EXPECT_NEAR((*projectionOf(lens({}, 12.0))->direction(0, 32))[0], 0.0, 1.0e-12);
}

/// Directions strewn evenly: the share that the picture shows is its solid angle.
TEST(RealLens, SolidAnglesOfThePixelsFillTheField) {
    constexpr int kDraws = 1000000;
    for (const Coefficients& c : kLenses) {
        const auto projection = projectionOf(lens(c, 2.0, 1.0));
        double sum = 0.0;
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) sum += core::solidAngle(*projection, x, y);
        }
        std::mt19937_64 random(1966);
        std::uniform_real_distribution<double> even(0.0, 1.0);
        constexpr double kAxis = 0.5;  // cosine of the farthest angle: the picture lies within
        int shown = 0;
        for (int i = 0; i < kDraws; ++i) {
            const double z = kAxis + (1.0 - kAxis) * even(random);
            const double azimuth = 2.0 * std::numbers::pi * even(random);
            const double r = std::sqrt(1.0 - z * z);
            const auto [x, y] = pixelOf({r * std::cos(azimuth), r * std::sin(azimuth), z}, c, 2.0, 1.0);
            shown += x >= 0.0 && x <= kWidth && y >= 0.0 && y <= kHeight;
        }
        const double share = double(shown) / kDraws;
        const double around = 2.0 * std::numbers::pi * (1.0 - kAxis);
        EXPECT_NEAR(sum, share * around, 4.0 * around * std::sqrt(share * (1.0 - share) / kDraws)) << c.k1;
    }
}

// Barrel distortion that folds the image back: r (1 - r2 / 2) is largest, 0.5443, at r = 0.8165.
TEST(RealLens, NothingIsSeenBeyondTheFold) {
    const auto projection = projectionOf(lens({-0.5, 0, 0, 0, 0}));
    const double edge = 0.5443 * 16.0 / 0.25;  // pixels
    EXPECT_TRUE(projection->direction(0.5 * kWidth + 0.97 * edge, 0.5 * kHeight));
    EXPECT_FALSE(projection->direction(0.5 * kWidth + 1.01 * edge, 0.5 * kHeight));
    for (double x = 0.0; x <= kWidth; x += 0.7) {
        const auto direction = projection->direction(x, 0.5 * kHeight);
        if (direction) {
            EXPECT_LE(std::abs((*direction)[0] / (*direction)[2]) * 16.8 / 16.0, 0.8165 + 1.0e-3) << x;
        }
    }
    // Bad values of any kind end, and without a direction that isn't one.
    for (const Coefficients& c :
         {Coefficients{100, -100, 100, 100, -100}, Coefficients{-100, 0, 0, 0, 0}, Coefficients{0, 0, 0, 100, 100}}) {
        const auto odd = projectionOf(lens(c));
        for (int i = 0; i <= kWidth; i += 3) {
            const auto direction = odd->direction(i, 0.3 * i);
            if (direction) EXPECT_NEAR(core::length(*direction), 1.0, 1.0e-9);
        }
    }
}

TEST(RealLens, RadianceIsToldOfShiftsAndNotOfDistortion) {
    const std::string view = core::radianceView(*make("instrument", "realrectcam",
                                                      {{"pixel_pitch_x", number(250)},
                                                       {"pixel_pitch_y", number(200)},
                                                       {"focus_distance", number(0.336)},
                                                       {"shift_x", number(6)},
                                                       {"shift_y", number(-3.2)}}),
                                                kWidth, kHeight);
    // 24 mm x 12.8 mm at 16.8 mm; the middle of the picture is a quarter of it further right and down.
    EXPECT_EQ(view, " -vtv -vp 0 0 0 -vd 0 0 1 -vu 0 1 0 -vh 71.0753556 -vv 41.7089161 -vs 0.25 -vl -0.25");
    EXPECT_EQ(core::radianceView(*lens({0.1, 0, 0, 0, 0}), kWidth, kHeight), "");
}

}  // namespace
}  // namespace nemra::outputtest
