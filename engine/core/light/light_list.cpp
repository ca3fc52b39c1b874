#include "engine/core/light/light_list.h"

#include <algorithm>
#include <bit>
#include <numbers>
#include <numeric>

namespace nemra::core {

namespace {

double tableMean(const SpectralTables& tables, std::int32_t firstCell) {
    const int index = firstCell / tables.grid().cells;
    double sum = 0.0;
    for (int i = 0; i < tables.grid().cells; ++i) sum += tables.mean(index, i);
    return sum / tables.grid().cells;
}

std::vector<AliasEntry> makeAlias(const std::vector<double>& chances) {
    const std::size_t n = chances.size();
    std::vector<AliasEntry> table(n);
    std::vector<double> share(n);
    std::vector<std::size_t> small, large;
    for (std::size_t i = 0; i < n; ++i) {
        share[i] = chances[i] * static_cast<double>(n);
        (share[i] < 1.0 ? small : large).push_back(i);
    }
    while (!small.empty() && !large.empty()) {
        const std::size_t s = small.back();
        const std::size_t l = large.back();
        small.pop_back();
        table[s] = {static_cast<float>(share[s]), static_cast<std::int32_t>(l)};
        share[l] -= 1.0 - share[s];
        if (share[l] < 1.0) {
            large.pop_back();
            small.push_back(l);
        }
    }
    for (const auto* rest : {&small, &large}) {
        for (const std::size_t i : *rest) table[i] = {2.0F, static_cast<std::int32_t>(i)};
    }
    return table;
}

}  // namespace

LightList makeLightList(World& world, const SpectralTables& tables) {
    LightList list;
    std::vector<double> weight;
    std::vector<std::uint32_t> triangleOf;  // none for the rare ones
    std::vector<double> areas;
    std::vector<double> meanOf(world.surfaces.size(), 0.0);
    for (std::size_t i = 0; i < world.surfaces.size(); ++i) {
        const SurfaceRecord& s = world.surfaces[i];
        if (s.emits) meanOf[i] = tableMean(tables, s.emission) * s.emissionScale;
        list.peakRadiance = std::max(list.peakRadiance, meanOf[i]);
    }
    const auto add = [&](std::uint32_t surface, double area, const LightRecord& shape, std::uint32_t triangle) {
        const SurfaceRecord& s = world.surfaces[surface];
        if (!s.emits || !(meanOf[surface] > 0.0) || !(area > 0.0)) return;
        LightRecord light = shape;
        light.emission = s.emission;
        light.scale = s.emissionScale;
        light.emits = s.emits;
        list.lights.push_back(light);
        list.rare = list.rare || light.curved >= 0 || light.instance >= 0;
        triangleOf.push_back(triangle);
        areas.push_back(area);
        weight.push_back(meanOf[surface] * area * std::popcount(s.emits));
    };
    for (std::size_t i = 0; i < world.triangles.size(); ++i) {
        const TriangleRecord& t = world.triangles[i];
        if (!world.surfaces[t.surface].emits) continue;
        LightRecord light{};
        light.offset = t.offset;
        std::copy(t.v0, t.v0 + 3, light.v0);
        std::copy(t.e1, t.e1 + 3, light.e1);
        std::copy(t.e2, t.e2 + 3, light.e2);
        std::copy(t.ng, t.ng + 3, light.n);
        add(t.surface, areaOf(t), light, static_cast<std::uint32_t>(i));
    }
    for (std::size_t i = 0; i < world.curved.size(); ++i) {
        const CurvedRecord& c = world.curved[i];
        LightRecord light{};
        light.offset = c.offset;
        light.curved = static_cast<std::int32_t>(i);
        add(c.surface, c.area, light, 0);
    }
    for (std::size_t i = 0; i < world.instances.size(); ++i) {
        const InstanceRecord& instance = world.instances[i];
        LightRecord light{};
        light.offset = instance.offset;
        light.instance = static_cast<std::int32_t>(i);
        add(instance.surface, instance.area, light, 0);
    }
    const auto setChance = [&](std::size_t i, double chance) {
        LightRecord& light = list.lights[i];
        light.pick = static_cast<float>(chance);
        if (light.curved >= 0) {
            world.curved[light.curved].light = static_cast<std::int32_t>(i);
            world.curved[light.curved].pick = chance;
        } else if (light.instance >= 0) {
            world.instances[light.instance].pick = chance;
        } else {
            light.pdf = world.triangles[triangleOf[i]].lightPdf = static_cast<float>(chance / areas[i]);
        }
    };
    const double total = std::accumulate(weight.begin(), weight.end(), 0.0);
    list.power = total * std::numbers::pi * tables.grid().step * tables.grid().cells;
    std::vector<double> chances(weight.size());
    double sum = 0.0;
    list.below.push_back(0.0F);
    for (std::size_t i = 0; i < weight.size(); ++i) {
        chances[i] = weight[i] / total;
        sum += chances[i];
        list.below.push_back(static_cast<float>(sum));
        setChance(i, chances[i]);
    }
    list.below.back() = 1.0F;
    // With a short list the part of a light in [0, 1) must be what the kernel cuts out, to the last bit.
    if (list.lights.size() <= kSearchedLights) {
        for (std::size_t i = 0; i < list.lights.size(); ++i) {
            setChance(i, static_cast<double>(list.below[i + 1]) - list.below[i]);
        }
    } else {
        list.alias = makeAlias(chances);
    }
    return list;
}

std::vector<double> lightByCell(const LightList& lights, const SpectralTables& tables, int environment, double sceneRadius) {
    const int cells = tables.grid().cells;
    std::vector<double> total(cells, 0.0);
    std::vector<double> scaleOf(tables.count(), 0.0);
    for (const LightRecord& light : lights.lights) {
        scaleOf[light.emission / cells] +=
            static_cast<double>(light.pick) / std::max(1.0e-300, tableMean(tables, light.emission));
    }
    // Lights count by their power; an environment by what it would send through the sphere about the scene.
    double lightShare = 1.0;
    if (environment >= 0) {
        const double sky = tableMean(tables, environment * cells) * 4.0 * std::numbers::pi * std::numbers::pi * sceneRadius *
                           sceneRadius * tables.grid().step * cells;
        lightShare = lights.power / (lights.power + sky);
        scaleOf[environment] +=
            (1.0 - lightShare) / std::max(1.0e-300, tableMean(tables, environment * cells)) / std::max(1.0e-300, lightShare);
        if (lightShare <= 0.0) {
            std::fill(scaleOf.begin(), scaleOf.end(), 0.0);
            scaleOf[environment] = 1.0;
        }
    }
    for (int t = 0; t < tables.count(); ++t) {
        if (!(scaleOf[t] > 0.0)) continue;
        for (int i = 0; i < cells; ++i) total[i] += scaleOf[t] * tables.mean(t, i);
    }
    return total;
}

}  // namespace nemra::core
