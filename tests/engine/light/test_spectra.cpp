#include <gtest/gtest.h>

#include "engine/core/sensor/wavelengths.h"
#include "engine/core/spectrum/dispersion.h"
#include "engine/core/spectrum/grid.h"
#include "engine/core/spectrum/observer.h"
#include "engine/core/spectrum/planck.h"
#include "tests/engine/light/render_scene.h"

namespace nemra::lighttest {
namespace {

using core::SpectralCurve;

SpectralCurve curveOf(const NodeHandle& node) {
    const node::Scene empty;
    core::Translation translation(empty);
    return core::makeSpectrum(node, translation);
}

TEST(Blackbody, RadianceLuminanceAndColour) {
    struct Row {
        double temperature, at555, luminance, x, y, peak;
    };
    for (const Row& row : {Row{2041.4, 6.907521, 596454.5, 0.52219, 0.41393, 1419.502},
                           {2856, 258.4769, 1.974973e7, 0.44754, 0.40743, 1014.626},
                           {6504, 42813.19, 3.080221e9, 0.31346, 0.32357, 445.5369},
                           {10000, 182972.2, 1.326045e10, 0.28063, 0.28829, 289.7772}}) {
        const SpectralCurve curve = curveOf(make("spectrum", "blackbody", {{"temperature", number(row.temperature)}}));
        EXPECT_NEAR(curve(555.0) / row.at555, 1.0, 1.0e-5);
        const auto xyz = core::curveXyz(curve, core::Observer::cie1931);
        const double sum = xyz[0] + xyz[1] + xyz[2];
        EXPECT_NEAR(xyz[1] / row.luminance, 1.0, 5.0e-4);
        EXPECT_NEAR(xyz[0] / sum, row.x, 2.0e-4);
        EXPECT_NEAR(xyz[1] / sum, row.y, 2.0e-4);
        EXPECT_NEAR(core::planckPeak(row.temperature), row.peak, 1.0e-3);
    }
    const auto lit =
        curveOf(make("spectrum", "blackbody",
                     {{"temperature", number(2856)}, {"normalization", text("luminance")}, {"luminance", number(1000)}}));
    EXPECT_NEAR(core::curveLuminance(lit), 1000.0, 1.0e-3);
    const auto peaked = curveOf(make("spectrum", "blackbody", {{"temperature", number(6504)}, {"normalization", text("peak")}}));
    EXPECT_NEAR(peaked(445.5369), 1.0, 1.0e-9);
}

TEST(Dispersion, AbbeNumberIsATwoTermCauchy) {
    const core::Cauchy n = core::cauchyFromAbbe(1.5168, 64.17);
    EXPECT_NEAR(n.a, 1.5045838, 1.0e-6);
    EXPECT_NEAR(n.b, 4217.3773, 1.0e-3);
    EXPECT_NEAR(n(400.0), 1.5309424, 1.0e-6);
    EXPECT_NEAR(n(550.0), 1.5185256, 1.0e-6);
    EXPECT_NEAR(n(700.0), 1.5131907, 1.0e-6);
    const SpectralCurve glass = curveOf(make("spectrum", "abbenumber"));
    EXPECT_NEAR((glass(587.5618) - 1.0) / (glass(486.1327) - glass(656.2725)), 64.17, 1.0e-6);
}

TEST(Observer, EqualEnergySpectrum) {
    const auto xyz = core::curveXyz(core::constantCurve(1.0), core::Observer::cie1931);
    // The published sums count each row as 1 nm, also the two at the ends.
    EXPECT_NEAR(xyz[0] / 72989.116, 1.0, 1.0e-5);
    EXPECT_NEAR(xyz[1] / 72983.274, 1.0, 1.0e-5);
    EXPECT_NEAR(xyz[2] / 73007.408, 1.0, 1.0e-5);
}

/// A band far narrower than the grid must weigh as it does under the observer, once the grid is cut for it.
TEST(SpectralGrid, NarrowBandsKeepTheirLuminance) {
    const core::SpectralGrid coarse;
    const core::SpectralGrid grid = coarse.refined(8);
    const double observed[][2] = {{450, 25.954},  {500, 220.609}, {550, 679.55092}, {555, 683.0},
                                  {600, 430.973}, {650, 73.081},  {700, 2.801666}};
    for (const auto& [lambda, luminance] : observed) {
        for (const double width : {0.1, 0.01}) {
            const SpectralCurve line = curveOf(make("spectrum", "square",
                                                    {{"minimum", number(lambda - width / 2)},
                                                     {"maximum", number(lambda + width / 2)},
                                                     {"value", number(1.0 / width)}}));
            core::SpectralTables first(coarse);
            first.add(line);
            EXPECT_TRUE(first.tooCoarse());
            core::SpectralTables tables(grid);
            const int table = tables.add(line);
            const int observer = tables.add(core::matchingFunction(core::Observer::cie1931, 1));
            double sum = 0.0;
            double total = 0.0;
            for (int i = 0; i < grid.cells; ++i) {
                const auto a = tables.table(table)[i];
                const auto b = tables.table(observer)[i];
                total += a.value + 0.5 * a.rise;
                sum += double(a.value) * b.value + 0.5 * (double(a.value) * b.rise + double(a.rise) * b.value) +
                       double(a.rise) * b.rise / 3.0;
            }
            EXPECT_NEAR(total * grid.step, 1.0, 1.0e-5) << lambda;
            EXPECT_NEAR(sum * grid.step * 683.0 / luminance, 1.0, 1.0e-4) << lambda;
        }
    }
}

TEST(SpectralGrid, LinesBetweenBordersAndEdgesOnBordersAreExact) {
    const core::SpectralGrid grid;
    core::SpectralTables tables(grid);
    const int ramp =
        tables.add(curveOf(make("spectrum", "triangle", {{"center", number(550)}, {"width", number(40)}, {"peak", number(2)}})));
    const int box = tables.add(curveOf(make("spectrum", "square", {{"minimum", number(500)}, {"maximum", number(600)}})));
    for (int i = 0; i < grid.cells; ++i) {
        const double left = grid.border(i);
        EXPECT_NEAR(tables.table(ramp)[i].value, 2.0 * std::max(0.0, 1.0 - std::abs(left - 550.0) / 40.0), 1.0e-6);
        EXPECT_EQ(tables.table(box)[i].value, left >= 500.0 && left < 600.0 ? 1.0F : 0.0F) << left;
    }
    EXPECT_EQ(tables.add(curveOf(make("spectrum", "square", {{"minimum", number(500)}, {"maximum", number(600)}}))), box);
}

TEST(Tabulated, InterpolatesExtrapolatesAndMendsInput) {
    const auto table = samples({{600, 3.0}, {500, 1.0}, {550, 1.0}, {620, 0.0}});
    Messages messages;
    const SpectralCurve linear = curveOf(make("spectrum", "tabulated", {{"samples", table}, {"scale", number(2.0)}}));
    EXPECT_TRUE(messages.mention("sorted"));
    EXPECT_DOUBLE_EQ(linear(575.0), 4.0);
    EXPECT_DOUBLE_EQ(linear(499.0), 0.0);
    const SpectralCurve held = curveOf(make("spectrum", "tabulated", {{"samples", table}, {"extrapolation", text("hold")}}));
    EXPECT_DOUBLE_EQ(held(100.0), 1.0);
    const SpectralCurve nearest =
        curveOf(make("spectrum", "tabulated", {{"samples", table}, {"interpolation", text("nearest")}}));
    EXPECT_DOUBLE_EQ(nearest(574.0), 1.0);
    EXPECT_DOUBLE_EQ(nearest(576.0), 3.0);
    const SpectralCurve cubic = curveOf(make("spectrum", "tabulated", {{"samples", table}, {"interpolation", text("cubic")}}));
    for (double lambda = 500.0; lambda <= 620.0; lambda += 0.5) {
        EXPECT_GE(cubic(lambda), 0.0);
        EXPECT_LE(cubic(lambda), 3.0);  // never beyond the samples
    }
    EXPECT_DOUBLE_EQ(cubic(600.0), 3.0);
}

TEST(Colours, SmoothSpectraHaveTheColourAskedFor) {
    const auto flat = core::curveXyz(core::constantCurve(1.0), core::Observer::cie1931);
    for (const std::array<double, 3>& wanted :
         {std::array{0.95, 1.0, 1.09}, {0.4, 0.2, 0.02}, {0.2, 0.1, 0.9}, {1.0, 1.0, 1.0}}) {
        const SpectralCurve curve =
            curveOf(make("spectrum", "cie-xyz", {{"x", number(wanted[0])}, {"y", number(wanted[1])}, {"z", number(wanted[2])}}));
        const auto got = core::curveXyz(curve, core::Observer::cie1931);
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(got[c] / flat[c], wanted[c], 1.0e-3);
        for (double lambda = 360.0; lambda <= 830.0; lambda += 1.0) EXPECT_GE(curve(lambda), 0.0);
    }
    const SpectralCurve grey = curveOf(make("spectrum", "rgb", {{"color", {node::Color{"linear_srgb", {0.25F, 0.25F, 0.25F}}}}}));
    for (double lambda = 365.0; lambda < 830.0; lambda += 7.0) EXPECT_NEAR(grey(lambda), 0.25, 1.0e-5);
    const SpectralCurve red = curveOf(make("spectrum", "rgb", {{"color", {node::Color{"linear_srgb", {1.0F, 0.0F, 0.0F}}}}}));
    EXPECT_GT(red(650.0), 0.9);
    EXPECT_LT(red(500.0), 0.1);
}

/// The density that weights a wavelength must be that with which it is drawn, or every spectrum is wrong.
TEST(Wavelengths, DensityBelongsToTheDraw) {
    const node::Scene empty;
    core::Translation translation(empty);
    for (const NodeHandle& node : {colorSensor(), energySensor(), make("sensor", "spectralbox"), twoResponses()}) {
        const core::Sensor sensor = core::makeSensor(node, translation);
        std::vector<double> light(sensor.grid.cells, 0.0);
        light[sensor.grid.cells / 2] = 1.0;  // a line, and darkness elsewhere
        for (const auto& lit : {std::vector<double>{}, light}) {
            const core::WavelengthSampling sampling = core::makeWavelengthSampling(sensor, lit);
            // All steps and parts, one after the other, cover the grid once.
            float reached = 0.0F;
            for (int i = 0; i < sampling.stepCount; ++i) {
                const auto& step = sampling.steps[i];
                const std::size_t begin = step.rise < 0.0F ? static_cast<std::size_t>(step.value) : i;
                for (std::size_t k = begin; k < begin + (step.rise < 0.0F ? core::kSubSteps : 1); ++k) {
                    EXPECT_NEAR(sampling.steps[k].value, reached, 1.0e-4);
                    EXPECT_GE(sampling.steps[k].rise, 0.0F);
                    reached = sampling.steps[k].value + sampling.steps[k].rise;
                }
                if (sensor.cellsPerBox == 0) continue;
                const int each = sampling.stepCount / static_cast<int>(sensor.channels.size());
                if ((i + 1) % each != 0) continue;
                EXPECT_NEAR(reached, (i + 1) / each * sensor.cellsPerBox, 1.0e-4);  // even shares
            }
            EXPECT_NEAR(reached, sensor.grid.cells, 1.0e-3);
        }
    }
}

}  // namespace
}  // namespace nemra::lighttest
