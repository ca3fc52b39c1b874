#include "engine/core/prepare/prepared.h"

#include <pmmintrin.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cmath>

#include "engine/common/log.h"
#include "engine/core/environment/environment.h"
#include "engine/core/film/arrays.h"
#include "engine/core/kernel/workspace.h"
#include "engine/core/output/resolve_links.h"

namespace nemra::core {

namespace {

/// Denormal numbers take a hundred times as long and change nothing that is seen. Restores what the caller had.
class FlushDenormals {
public:
    FlushDenormals() : before_(_mm_getcsr()) {
        _MM_SET_FLUSH_ZERO_MODE(_MM_FLUSH_ZERO_ON);
        _MM_SET_DENORMALS_ZERO_MODE(_MM_DENORMALS_ZERO_ON);
    }
    ~FlushDenormals() { _mm_setcsr(before_); }
    FlushDenormals(const FlushDenormals&) = delete;
    FlushDenormals& operator=(const FlushDenormals&) = delete;

private:
    unsigned before_;
};

void narrow(const Vec3& v, float out[3]) {
    for (int i = 0; i < 3; ++i) out[i] = static_cast<float>(v[i]);
}

/// With spectral lines, cells of the grid are cut into so many.
constexpr int kRefinement = 8;

}  // namespace

Prepared::Prepared(const node::Scene& scene, const std::string& setupName, const PrepareOptions& options) {
    Translation translation(scene, options.libraries);
    setup_ = chooseSetup(setupName, translation);
    camera_ = makeCamera(*setup_.instrument, translation);
    sensor_ = makeSensor(setup_.instrument->child("sensor"), translation);
    checkSize();
    int environment = translateSurfaces(translation);
    if (tables_->tooCoarse()) {
        sensor_.grid = sensor_.grid.refined(kRefinement);
        sensor_.cellsPerBox *= kRefinement;
        environment = translateSurfaces(translation);
    }
    translation.reportUnlit(setup_.node);
    setup_.instrument = withoutLinks(setup_.instrument, translation);
    lights_ = makeLightList(world_, *tables_);
    if (lights_.lights.empty() && environment < 0)
        translation.warn(*setup_.node, "nothing shines in this scene; the result is black");
    translation.finish();
    if (!options.isRenderedHere) {
        world_ = {};
        lights_ = {};
        return;
    }

    traced_ = std::make_unique<TraceScenes>(world_, options.flatLimit);
    kernel_.spectra = tables_->data();
    kernel_.cells = sensor_.grid.cells;
    kernel_.cellWidth = static_cast<float>(sensor_.grid.step);
    traced_->connect(kernel_);
    std::copy(world_.firstTriangle, world_.firstTriangle + kRayKinds, kernel_.firstTriangle);
    std::copy(world_.firstCurved, world_.firstCurved + kRayKinds, kernel_.firstCurved);
    kernel_.triangles = world_.triangles.data();
    kernel_.normals = world_.normals.data();
    kernel_.surfaces = world_.surfaces.data();
    kernel_.curved = world_.curved.data();
    kernel_.instances = world_.instances.data();
    kernel_.lights = lights_.lights.data();
    kernel_.lightBelow = lights_.below.data();
    kernel_.lightAlias = lights_.alias.empty() ? nullptr : lights_.alias.data();
    kernel_.lightCount = static_cast<std::int32_t>(lights_.lights.size());
    kernel_.rareLights = lights_.rare;
    kernel_.environment = environment < 0 ? -1 : environment * sensor_.grid.cells;
    kernel_.seed = setup_.seed;
    kernel_.maxDepth = setup_.maxDepth;
    kernel_.rouletteDepth = setup_.rouletteDepth;
    kernel_.wavelengths = setup_.wavelengths;
    bakeSensor();
    bakeWavelengths(environment);
    placeCamera();
    chooseRounding(environment);
    renderBatch_ = options.kernel ? options.kernel : bestKernel();
}

int Prepared::translateSurfaces(Translation& translation) {
    tables_ = std::make_unique<SpectralTables>(sensor_.grid);
    const int environment = makeEnvironment(setup_.environment, translation, *tables_).radiance;
    world_ = buildWorld(LayerTree(setup_.layers, translation), camera_.position, translation, *tables_);
    return environment;
}

Prepared::~Prepared() {
    for (Workspace* workspace : spare_) freeWorkspace(workspace);
}

void Prepared::checkSize() const {
    const auto pixels = static_cast<std::uint64_t>(camera_.width) * static_cast<std::uint64_t>(camera_.height);
    const std::uint64_t each = std::max<std::uint64_t>(1, sensor_.channels.size()) * sizeof(double);
    if (pixels > kMaxBufferBytes / each) {
        throw SceneFault(setup_.instrument->label(), std::to_string(camera_.width) + " x " + std::to_string(camera_.height) +
                                                         " pixels of " + std::to_string(sensor_.channels.size()) +
                                                         " channels take more than the limit of " +
                                                         std::to_string(kMaxBufferBytes >> 20) + " MiB per buffer");
    }
}

void Prepared::bakeSensor() {
    SensorRecord& record = kernel_.sensor;
    record.channels = static_cast<std::int32_t>(sensor_.channels.size());
    record.leading = sensor_.leading;
    const int cells = sensor_.grid.cells;
    if (sensor_.cellsPerBox > 0) {
        boxOf_.resize(cells);
        for (int i = 0; i < cells; ++i) boxOf_[i] = static_cast<std::uint16_t>(i / sensor_.cellsPerBox);
        record.boxOf = boxOf_.data();
        record.boxWeight = static_cast<float>(1.0 / (sensor_.cellsPerBox * sensor_.grid.step));
        return;
    }
    record.groups = (record.channels + kGroup - 1) / kGroup;
    responses_.assign(static_cast<std::size_t>(cells) * record.groups * 2 * kGroup, 0.0F);
    SpectralTables baked(sensor_.grid);
    for (int c = 0; c < record.channels; ++c) {
        const SpectralCell* table = baked.table(baked.add(sensor_.responses[c]));
        for (int i = 0; i < cells; ++i) {
            float* at =
                responses_.data() + (static_cast<std::size_t>(i) * record.groups + c / kGroup) * (2 * kGroup) + c % kGroup;
            at[0] = table[i].value;
            at[kGroup] = table[i].rise;
        }
    }
    record.responses = responses_.data();
}

void Prepared::bakeWavelengths(int environment) {
    WavelengthSampling sampling = makeWavelengthSampling(sensor_, lightByCell(lights_, *tables_, environment, world_.radius));
    lambdaSteps_ = std::move(sampling.steps);
    kernel_.lambdaSteps = lambdaSteps_.data();
    kernel_.lambdaStepCount = sampling.stepCount;
}

void Prepared::placeCamera() {
    CameraRecord& view = kernel_.view;
    narrow(camera_.position - world_.center, view.position);
    const Vec3 corner = camera_.forward - camera_.right * (0.5 * camera_.extentX) + camera_.up * (0.5 * camera_.extentY);
    narrow(corner, view.corner);
    narrow(camera_.right * (camera_.extentX / camera_.width), view.stepX);
    narrow(camera_.up * (-camera_.extentY / camera_.height), view.stepY);
    narrow(camera_.right, view.right);
    narrow(camera_.up, view.up);
    view.lensRadius = static_cast<float>(camera_.lensRadius);
    view.focusFactor = camera_.lensRadius > 0.0 ? static_cast<float>(camera_.focusDistance) : 1.0F;
    view.width = camera_.width;
    view.height = camera_.height;
}

/// The coarse quantum is 2^-20, the fine one 2^-50 of the brightest light's value. So sums are exact up to 2^33 times that value
/// and 2^24 samples per pixel, and each sample is kept to 2^-51 of it. Of distances, which have 24 digits, one quantum does:
/// 2^-28 of the farthest there can be, at most twice that for being a power of two.
void Prepared::chooseRounding(int environment) {
    double radiance = lights_.peakRadiance;
    if (environment >= 0) radiance = std::max(radiance, tables_->maximum(environment));
    double response = 1.0;
    for (const SpectralCurve& curve : sensor_.responses) {
        response = std::max(response, integrate(curve, sensor_.grid.first, sensor_.grid.last()));
    }
    const double brightest = radiance * response;
    const int exponent = brightest > 0.0 && std::isfinite(brightest) ? std::clamp(std::ilogb(brightest), -900, 900) : 0;
    // Adding 1.5 * 2^52 quanta leaves no bits below one quantum.
    kernel_.sensor.coarse = std::ldexp(1.5, exponent - 20 + 52);
    kernel_.sensor.fine = std::ldexp(1.5, exponent - 50 + 52);
    const double farthest = length(camera_.position - world_.center) + world_.radius + camera_.lensRadius;
    const int reach = farthest > 0.0 && std::isfinite(farthest) ? std::clamp(std::ilogb(farthest) + 1, -900, 900) : 0;
    kernel_.sensor.depth = std::ldexp(1.5, reach - 28 + 52);
}

QuantityFactors Prepared::quantities() const noexcept {
    return {camera_.sensorIrradiance, camera_.sensorIrradiance * camera_.pixelArea, camera_.exposureTime};
}

double Prepared::offAxis(int x, int y) const noexcept {
    const double u = ((x + 0.5) / camera_.width - 0.5) * camera_.extentX;
    const double v = ((y + 0.5) / camera_.height - 0.5) * camera_.extentY;
    const double cosine2 = 1.0 / (1.0 + u * u + v * v);
    return cosine2 * cosine2;
}

std::size_t Prepared::memory() const noexcept {
    return world_.memory() + (traced_ ? traced_->memory() : 0) + tables_->memory() + lights_.lights.size() * sizeof(LightRecord) +
           lights_.alias.size() * sizeof(AliasEntry) + responses_.size() * sizeof(float);
}

std::unique_ptr<Film> Prepared::makeFilm(Tile tile) const {
    auto film = std::make_unique<Film>();
    film->left = tile.x0;
    film->top = tile.y0;
    film->width = tile.x1 - tile.x0;
    film->height = tile.y1 - tile.y0;
    film->channels = sensor_.channels;
    makeArrays(*film);
    return film;
}

Workspace* Prepared::borrowWorkspace() const {
    {
        const std::lock_guard lock(spareMutex_);
        if (!spare_.empty()) {
            Workspace* workspace = spare_.back();
            spare_.pop_back();
            return workspace;
        }
        spare_.reserve(spare_.size() + 64);  // giving back must not fail
    }
    return makeWorkspace(kernel_.wavelengths);
}

void Prepared::returnWorkspace(Workspace* workspace) const noexcept {
    const std::lock_guard lock(spareMutex_);
    if (spare_.size() < spare_.capacity()) {
        spare_.push_back(workspace);
    } else {
        freeWorkspace(workspace);
    }
}

PreparedScene::Counts Prepared::render(Film& film, Tile tile, std::uint32_t first, std::uint32_t count,
                                       const std::atomic<bool>& cancel) const {
    Counts counts;
    tile.x0 = std::max({tile.x0, film.left, 0});
    tile.y0 = std::max({tile.y0, film.top, 0});
    tile.x1 = std::min({tile.x1, film.left + film.width, camera_.width});
    tile.y1 = std::min({tile.y1, film.top + film.height, camera_.height});
    if (!traced_ || tile.x0 >= tile.x1 || tile.y0 >= tile.y1 || count == 0) return counts;
    const FilmRecord record{film.left,
                            film.top,
                            film.height,
                            film.high.data(),
                            film.low.data(),
                            film.samples.data(),
                            film.squares.upper.data(),
                            film.squares.lower.data(),
                            film.squares.part.data(),
                            film.depth.data(),
                            film.depthSamples.data()};
    const FlushDenormals flushed;
    Workspace* const workspace = borrowWorkspace();
    const int tileHeight = tile.y1 - tile.y0;
    const std::int64_t pixels = static_cast<std::int64_t>(tile.x1 - tile.x0) * tileHeight;
    const std::uint32_t deep = std::min<std::uint32_t>(count, kBatchPaths);
    const int pixelsAtOnce = std::max(1, kBatchPaths / static_cast<int>(deep));
    for (std::int64_t pixel = 0; pixel < pixels && !cancel.load(std::memory_order_relaxed); pixel += pixelsAtOnce) {
        const int here = static_cast<int>(std::min<std::int64_t>(pixelsAtOnce, pixels - pixel));
        for (std::uint32_t done = 0; done < count && !cancel.load(std::memory_order_relaxed);) {
            const std::uint32_t samples = std::min(deep, count - done);
            const Batch batch{tile.x0, tile.y0, tileHeight, static_cast<int>(pixel), here, first + done, samples};
            counts.wrong += static_cast<std::uint64_t>(renderBatch_(kernel_, *workspace, batch, record));
            counts.samples += static_cast<std::uint64_t>(here) * samples;
            done += samples;
        }
    }
    returnWorkspace(workspace);
    return counts;
}

std::shared_ptr<const PreparedScene> prepareScene(const node::Scene& scene, const std::string& setupName, Libraries* libraries,
                                                  bool isRenderedHere) {
    try {
        return std::make_shared<const Prepared>(scene, setupName,
                                                PrepareOptions{.libraries = libraries, .isRenderedHere = isRenderedHere});
    } catch (const SceneFault& fault) {
        log::error(fault.source(), fault.what());
    } catch (const std::bad_alloc&) {
        log::error("scene \"" + scene.name + "\"", "there isn't memory enough to prepare it for rendering");
    } catch (const std::exception& fault) {
        log::error("scene \"" + scene.name + "\"", fault.what());
    }
    return nullptr;
}

}  // namespace nemra::core
