#include "engine/core/sensor/wavelengths.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace nemra::core {

namespace {

constexpr int kSegments = 1024;
constexpr double kDefensive = 0.15;
constexpr float kWidest = 1.5F;  // cells; a step that reaches further is cut

/// Where on the grid the cumulative distribution takes a value.
class Inverse {
public:
    explicit Inverse(const std::vector<double>& density) : below_(density.size() + 1) {
        for (std::size_t i = 0; i < density.size(); ++i) below_[i + 1] = below_[i] + density[i];
    }
    float operator()(double target) const {
        const double u = target * below_.back();
        const auto above = std::upper_bound(below_.begin() + 1, below_.end() - 1, u);
        const auto cell = static_cast<std::size_t>(above - below_.begin()) - 1;
        const double width = below_[cell + 1] - below_[cell];
        return static_cast<float>(cell + (width > 0.0 ? std::clamp((u - below_[cell]) / width, 0.0, 1.0) : 0.0));
    }

private:
    std::vector<double> below_;
};

void normalize(std::vector<double>& values) {
    const double sum = std::accumulate(values.begin(), values.end(), 0.0);
    for (double& v : values) v = sum > 0.0 ? v / sum : 1.0 / static_cast<double>(values.size());
}

/// Calls body(first cell, response by cell) for each channel.
template <class Body>
void forChannels(const Sensor& sensor, Body&& body) {
    if (sensor.cellsPerBox > 0) {
        for (int first = 0; first < sensor.grid.cells; first += sensor.cellsPerBox)
            body(first, std::vector<double>(sensor.cellsPerBox, 1.0));
        return;
    }
    for (const SpectralCurve& response : sensor.responses) {
        std::vector<double> cells(sensor.grid.cells);
        for (int i = 0; i < sensor.grid.cells; ++i) {
            cells[i] = std::abs(integrate(response, sensor.grid.border(i), sensor.grid.border(i + 1)));
        }
        body(0, std::move(cells));
    }
}

/// The density that makes the sum of the channels' relative variances least, would all paths return light like the lights': the
/// root of the sum of squares of the channels' shares. A part ignores the lights, so that no wavelength is starved.
std::vector<double> densityByCell(const Sensor& sensor, const std::vector<double>& shone) {
    std::vector<double> density(sensor.grid.cells, 0.0);
    forChannels(sensor, [&](int first, std::vector<double> plain) {
        std::vector<double> product = plain;
        for (std::size_t i = 0; i < product.size(); ++i) product[i] *= shone[first + i];
        normalize(plain);
        if (std::accumulate(product.begin(), product.end(), 0.0) > 0.0) {
            normalize(product);
        } else {
            product = plain;
        }
        for (std::size_t i = 0; i < product.size(); ++i) {
            const double share = kDefensive * plain[i] + (1.0 - kDefensive) * product[i];
            density[first + i] += share * share;
        }
    });
    for (double& d : density) d = std::sqrt(d);
    normalize(density);
    return density;
}

}  // namespace

WavelengthSampling makeWavelengthSampling(const Sensor& sensor, const std::vector<double>& light) {
    const std::size_t cells = sensor.grid.cells;
    std::vector<double> shone(cells, 1.0);
    for (std::size_t i = 0; i < std::min(cells, light.size()); ++i) shone[i] = std::max(0.0, light[i]);
    const std::vector<double> density = densityByCell(sensor, shone);
    // With box sensors a step ends on each box border, so that the shares are even to the last bit.
    const int boxes = sensor.cellsPerBox > 0 ? static_cast<int>(cells) / sensor.cellsPerBox : 1;
    const int count = boxes * std::max(1, kSegments / boxes);
    const Inverse inverse(density);
    const auto place = [&](int step, int part) {
        if (part == 0 && step % (count / boxes) == 0) {
            return sensor.cellsPerBox > 0 ? static_cast<float>(step / (count / boxes) * sensor.cellsPerBox)
                                          : static_cast<float>(step == 0 ? 0 : cells);
        }
        return inverse((step + static_cast<double>(part) / kSubSteps) / count);
    };
    WavelengthSampling sampling;
    sampling.stepCount = count;
    sampling.steps.resize(count);
    for (int i = 0; i < count; ++i) {
        const float start = place(i, 0);
        const float end = place(i + 1, 0);
        if (end - start <= kWidest) {
            sampling.steps[i] = {start, std::max(0.0F, end - start)};
            continue;
        }
        sampling.steps[i] = {static_cast<float>(sampling.steps.size()), -1.0F};
        float from = start;
        for (int part = 1; part <= kSubSteps; ++part) {
            const float to = part == kSubSteps ? end : std::clamp(place(i, part), from, end);
            sampling.steps.push_back({from, to - from});
            from = to;
        }
    }
    return sampling;
}

}  // namespace nemra::core
