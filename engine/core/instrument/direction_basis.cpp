#include "engine/core/instrument/direction_basis.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace nemra::core {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kDegree = kPi / 180.0;

class Rings final : public DirectionBasis {
public:
    explicit Rings(std::vector<PatchRing> rings) : rings_(std::move(rings)) {
        for (const PatchRing& ring : rings_) {
            first_.push_back(count_);
            count_ += ring.patches;
        }
    }
    int count() const noexcept override { return count_; }
    DirectionPatch patch(int index) const noexcept override {
        const auto above = std::upper_bound(first_.begin(), first_.end(), index);
        const auto r = static_cast<std::size_t>(above - first_.begin()) - 1;
        const PatchRing& ring = rings_[r];
        const double lower = r > 0 ? std::sin(rings_[r - 1].upper * kDegree) : 0.0;
        const double upper = std::sin(ring.upper * kDegree);
        return {ring.middle * kDegree, 2.0 * kPi * (index - first_[r]) / ring.patches,
                kPi * (upper - lower) * (upper + lower) / ring.patches};
    }
    int find(double theta, double phi) const noexcept override {
        const auto ring =
            std::find_if(rings_.begin(), rings_.end() - 1, [&](const PatchRing& r) { return theta < r.upper * kDegree; });
        const double turn = phi / (2.0 * kPi) * ring->patches + 0.5;
        const double place = turn - std::floor(turn / ring->patches) * ring->patches;
        return first_[static_cast<std::size_t>(ring - rings_.begin())] +
               std::clamp(static_cast<int>(place), 0, ring->patches - 1);
    }

private:
    std::vector<PatchRing> rings_;
    std::vector<int> first_;  ///< patch of each ring
    int count_ = 0;
};

class EqualArea final : public DirectionBasis {
public:
    explicit EqualArea(int side) : side_(side) {}
    int count() const noexcept override { return side_ * side_; }
    DirectionPatch patch(int index) const noexcept override {
        const double a = (2.0 * (index % side_) + 1.0) / side_ - 1.0;
        const double b = (2.0 * (index / side_) + 1.0) / side_ - 1.0;
        const double projected = kPi / (static_cast<double>(side_) * side_);
        // Concentric squares become circles; along each, azimuth follows the way round.
        if (a == 0.0 && b == 0.0) return {0.0, 0.0, projected};
        const bool alongA = std::abs(a) > std::abs(b);
        const double radius = alongA ? a : b;  // negative: the other side
        double phi = alongA ? 0.25 * kPi * (b / a) : 0.5 * kPi - 0.25 * kPi * (a / b);
        if (radius < 0.0) phi += kPi;
        if (phi < 0.0) phi += 2.0 * kPi;
        return {std::asin(std::min(1.0, std::abs(radius))), phi, projected};
    }
    int find(double theta, double phi) const noexcept override {
        const double radius = std::sin(std::clamp(theta, 0.0, 0.5 * kPi));
        // Quarters of the disc about the directions of +a, +b, -a, -b.
        const double turn = phi / (0.5 * kPi) + 0.5;
        const double quarter = std::floor(turn);
        const double across = radius * (2.0 * (turn - quarter) - 1.0);
        const int side = static_cast<int>(quarter - 4.0 * std::floor(quarter / 4.0));
        const double a = side == 0 ? radius : side == 2 ? -radius : side == 1 ? -across : across;
        const double b = side == 1 ? radius : side == 3 ? -radius : side == 0 ? across : -across;
        return cell(b) * side_ + cell(a);
    }

private:
    int cell(double place) const noexcept { return std::clamp(static_cast<int>(0.5 * (place + 1.0) * side_), 0, side_ - 1); }

    int side_;
};

}  // namespace

const std::vector<PatchRing>& klemsRings(std::string_view resolution) {
    static const std::vector<PatchRing> full{{0, 5, 1},    {10, 15, 8},  {20, 25, 16}, {30, 35, 20},  {40, 45, 24},
                                             {50, 55, 24}, {60, 65, 24}, {70, 75, 16}, {82.5, 90, 12}};
    static const std::vector<PatchRing> half{{0, 6.5, 1},    {13, 19.5, 8},  {26, 32.5, 12}, {39, 45.5, 16},
                                             {52, 58.5, 20}, {65, 71.5, 12}, {80.75, 90, 8}};
    static const std::vector<PatchRing> quarter{{0, 9, 1}, {18, 27, 8}, {36, 45, 12}, {54, 63, 12}, {76.5, 90, 8}};
    return resolution == "half" ? half : resolution == "quarter" ? quarter : full;
}

std::unique_ptr<DirectionBasis> ringBasis(std::vector<PatchRing> rings) { return std::make_unique<Rings>(std::move(rings)); }

std::unique_ptr<DirectionBasis> beamGrid(int thetas, int phis) {
    const double step = 90.0 / thetas;
    std::vector<PatchRing> rings;
    for (int i = 0; i < thetas; ++i) rings.push_back({i * step, i + 1 < thetas ? (i + 0.5) * step : 90.0, phis});
    return ringBasis(std::move(rings));
}

std::unique_ptr<DirectionBasis> cellGrid(int thetas, int phis) {
    const double step = 90.0 / thetas;
    std::vector<PatchRing> rings;
    for (int i = 0; i < thetas; ++i) rings.push_back({(i + 0.5) * step, i + 1 < thetas ? (i + 1) * step : 90.0, phis});
    return ringBasis(std::move(rings));
}

std::unique_ptr<DirectionBasis> equalAreaBasis(int side) { return std::make_unique<EqualArea>(side); }

}  // namespace nemra::core
