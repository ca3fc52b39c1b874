/// Patches into which a goniophotometer divides the directions of a hemisphere.
///
/// Directions are unit vectors that point away from the sample, to where light comes from or goes to. theta is the angle to the
/// normal of the side on which the direction lies, phi the azimuth from the sample's tangent towards normal x tangent, with the
/// normal of the front on both sides. Both in radians.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

namespace nemra::core {

struct DirectionPatch {
    double theta;                ///< of the patch's middle, 0 to pi / 2
    double phi;                  ///< of its middle, 0 to below 2 pi
    double projectedSolidAngle;  ///< sr; those of all patches of a basis add up to pi
};

class DirectionBasis {
public:
    virtual ~DirectionBasis() = default;
    virtual int count() const noexcept = 0;
    /// `index` from 0 to count() - 1.
    virtual DirectionPatch patch(int index) const noexcept = 0;
    /// The patch in which a direction of the hemisphere lies. Any phi will do.
    virtual int find(double theta, double phi) const noexcept = 0;
};

/// A ring of patches of equal width about the normal; the middle of the first one lies at azimuth 0.
struct PatchRing {
    double middle;  ///< theta, degrees
    double upper;   ///< theta where it ends, degrees; it begins where the one before it ends
    int patches;
};

/// The rings of full, half and quarter resolution: 145, 77 and 41 patches (J. H. Klems, A new method for predicting the solar
/// heat gain of complex fenestration systems, ASHRAE Transactions 100, 1994; the coarse ones as LBNL's WINDOW has them. Radiance
/// had others until July 2022, of which half had 73 patches). Patches count from the normal outwards.
const std::vector<PatchRing>& klemsRings(std::string_view resolution);

/// Rings of any kind; the last one ends at 90 degrees. Patches count along a ring by azimuth, and from ring to ring.
std::unique_ptr<DirectionBasis> ringBasis(std::vector<PatchRing> rings);

/// Single directions at theta = i 90 degrees / thetas, which leaves out the grazing one, and phi = j 360 degrees / phis. Each
/// stands for the patch of what lies nearest to it. Count: i phis + j.
std::unique_ptr<DirectionBasis> beamGrid(int thetas, int phis);
/// Cells of equal steps, theta = (i + 1/2) 90 degrees / thetas and phi = j 360 degrees / phis. Count: i phis + j.
std::unique_ptr<DirectionBasis> cellGrid(int thetas, int phis);

/// Square of side x side cells, laid on the unit disc that is the hemisphere seen along its normal, without changing relations of
/// areas (P. Shirley, K. Chiu, A low distortion map between disk and square, J. Graphics Tools 2(3), 1997). So the projected
/// solid angle of each is pi / side^2. Cell j side + i has the i-th place along the tangent and the j-th along normal x tangent.
std::unique_ptr<DirectionBasis> equalAreaBasis(int side);

}  // namespace nemra::core
