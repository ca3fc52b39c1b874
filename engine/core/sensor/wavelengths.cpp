#include "engine/core/sensor/wavelengths.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace nemra::core {

namespace {

constexpr int kSegments = 1024;
constexpr double kDefensive = 0.2;

void normalize(std::vector<double>& values, std::size_t from, std::size_t to) {
    const double sum = std::accumulate(values.begin() + from, values.begin() + to, 0.0);
    for (std::size_t i = from; i < to; ++i) values[i] = sum > 0.0 ? values[i] / sum : 1.0 / static_cast<double>(to - from);
}

/// Response of all channels together, each counting alike.
std::vector<double> responseByCell(const Sensor& sensor) {
    std::vector<double> total(sensor.grid.cells, 0.0);
    for (const SpectralCurve& response : sensor.responses) {
        std::vector<double> one(sensor.grid.cells);
        for (int i = 0; i < sensor.grid.cells; ++i) {
            one[i] = std::abs(integrate(response, sensor.grid.border(i), sensor.grid.border(i + 1)));
        }
        normalize(one, 0, one.size());
        for (std::size_t i = 0; i < one.size(); ++i) total[i] += one[i];
    }
    return total;
}

}  // namespace

WavelengthSampling makeWavelengthSampling(const Sensor& sensor, const std::vector<double>& light) {
    const std::size_t cells = sensor.grid.cells;
    std::vector<double> density;
    std::vector<double> shone(cells, 1.0);
    for (std::size_t i = 0; i < std::min(cells, light.size()); ++i) shone[i] = std::max(0.0, light[i]);
    const std::size_t block = sensor.cellsPerBox > 0 ? sensor.cellsPerBox : cells;
    density = sensor.cellsPerBox > 0 ? std::vector<double>(cells, 1.0) : responseByCell(sensor);
    // Each box of a box sensor gets an even share; within it, and for other sensors over all, the lights have their say.
    for (std::size_t from = 0; from < cells; from += block) {
        std::vector<double> product(density.begin() + from, density.begin() + from + block);
        std::vector<double> plain = product;
        for (std::size_t i = 0; i < block; ++i) product[i] *= shone[from + i];
        const bool dark = std::accumulate(product.begin(), product.end(), 0.0) <= 0.0;
        normalize(plain, 0, block);
        normalize(product, 0, block);
        for (std::size_t i = 0; i < block; ++i) {
            density[from + i] = dark ? plain[i] : kDefensive * plain[i] + (1.0 - kDefensive) * product[i];
        }
    }
    normalize(density, 0, cells);

    WavelengthSampling sampling;
    // With box sensors a knot falls on each box border, so that the shares are even to the last bit.
    const int boxes = sensor.cellsPerBox > 0 ? static_cast<int>(cells) / sensor.cellsPerBox : 1;
    const int segments = boxes * std::max(1, kSegments / boxes);
    sampling.knots.resize(segments + 1);
    std::size_t cell = 0;
    double below = 0.0;  // of the cells before `cell`
    for (int i = 0; i < segments; ++i) {
        const double target = static_cast<double>(i) / segments;
        while (cell + 1 < cells && (below + density[cell] <= target - 1.0e-13 || density[cell] <= 0.0)) below += density[cell++];
        const double inside = density[cell] > 0.0 ? (target - below) / density[cell] : 0.0;
        sampling.knots[i] = static_cast<float>(cell + std::clamp(inside, 0.0, 1.0));
    }
    sampling.knots[0] = 0.0F;
    sampling.knots[segments] = static_cast<float>(cells);
    for (int i = 1; i <= segments; ++i) sampling.knots[i] = std::max(sampling.knots[i], sampling.knots[i - 1]);
    if (sensor.cellsPerBox > 0) {
        for (int b = 0; b <= boxes; ++b) sampling.knots[b * (segments / boxes)] = static_cast<float>(b * sensor.cellsPerBox);
    }
    return sampling;
}

}  // namespace nemra::core
