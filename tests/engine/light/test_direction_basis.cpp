// Patches of directions: they tile the hemisphere, each with the area that it says.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "engine/core/instrument/direction_basis.h"

namespace nemra::lighttest {
namespace {

constexpr double kPi = std::numbers::pi;

struct Case {
    const char* name;
    std::unique_ptr<core::DirectionBasis> basis;
    int count;
};

std::vector<Case> bases() {
    std::vector<Case> all;
    all.push_back({"full", core::ringBasis(core::klemsRings("full")), 145});
    all.push_back({"half", core::ringBasis(core::klemsRings("half")), 77});
    all.push_back({"quarter", core::ringBasis(core::klemsRings("quarter")), 41});
    all.push_back({"beams", core::beamGrid(10, 6), 60});
    all.push_back({"one beam", core::beamGrid(1, 1), 1});
    all.push_back({"cells", core::cellGrid(7, 12), 84});
    all.push_back({"even square", core::equalAreaBasis(8), 64});
    all.push_back({"odd square", core::equalAreaBasis(5), 25});
    return all;
}

// Points strewn evenly over the unit disc are directions strewn evenly by projected solid angle, whatever the basis.
TEST(DirectionBasis, PatchesHoldAsMuchAsTheySay) {
    for (const Case& given : bases()) {
        const core::DirectionBasis& basis = *given.basis;
        ASSERT_EQ(basis.count(), given.count) << given.name;
        double sum = 0.0;
        for (int i = 0; i < basis.count(); ++i) {
            const core::DirectionPatch patch = basis.patch(i);
            sum += patch.projectedSolidAngle;
            for (const double turn : {0.0, 2.0 * kPi, -4.0 * kPi}) {
                EXPECT_EQ(basis.find(patch.theta, patch.phi + turn), i) << given.name << " at a patch's middle";
            }
        }
        EXPECT_NEAR(sum, kPi, 1.0e-12 * basis.count()) << given.name;

        constexpr int kDraws = 400000;
        std::vector<int> hits(std::size_t(basis.count()), 0);
        std::mt19937_64 random(1994);
        std::uniform_real_distribution<double> even(0.0, 1.0);
        for (int i = 0; i < kDraws; ++i) {
            const int found = basis.find(std::asin(std::sqrt(even(random))), 2.0 * kPi * even(random));
            ASSERT_TRUE(found >= 0 && found < basis.count()) << given.name;
            ++hits[std::size_t(found)];
        }
        double chiSquare = 0.0;
        for (int i = 0; i < basis.count(); ++i) {
            const double expected = kDraws * basis.patch(i).projectedSolidAngle / kPi;
            chiSquare += (hits[std::size_t(i)] - expected) * (hits[std::size_t(i)] - expected) / expected;
        }
        // Five standard deviations of a chi-square distribution with so many degrees of freedom.
        EXPECT_LT(chiSquare, basis.count() + 5.0 * std::sqrt(2.0 * basis.count())) << given.name;
    }
}

// A map of the square may not tear it: neighbours in it are neighbours on the hemisphere, along either axis of the sample.
TEST(DirectionBasis, TheSquareLiesOnTheDiscAsItIs) {
    constexpr int kSide = 16;
    const auto basis = core::equalAreaBasis(kSide);
    const auto place = [&](int i, int j) {
        const core::DirectionPatch patch = basis->patch(j * kSide + i);
        return std::array{std::sin(patch.theta) * std::cos(patch.phi), std::sin(patch.theta) * std::sin(patch.phi)};
    };
    for (int j = 0; j < kSide; ++j) {
        for (int i = 0; i + 1 < kSide; ++i) {
            EXPECT_GT(place(i + 1, j)[0], place(i, j)[0]);
            EXPECT_GT(place(j, i + 1)[1], place(j, i)[1]);
            EXPECT_LT(std::hypot(place(i + 1, j)[0] - place(i, j)[0], place(i + 1, j)[1] - place(i, j)[1]), 3.0 / kSide);
        }
    }
}

}  // namespace
}  // namespace nemra::lighttest
