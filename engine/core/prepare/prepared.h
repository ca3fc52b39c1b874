/// A translated scene with everything that its kernels point to.
#pragma once

#include <mutex>
#include <vector>

#include "engine/core/geometry/trace_scene.h"
#include "engine/core/instrument/camera.h"
#include "engine/core/light/light_list.h"
#include "engine/core/render.h"
#include "engine/core/sensor/wavelengths.h"
#include "engine/core/setup/setup.h"

namespace nemra::core {

/// Choices that a test or a benchmark makes; a render takes the defaults.
struct PrepareOptions {
    std::size_t flatLimit = kFlatLimit;
    RenderBatch kernel = nullptr;    ///< null: the best that runs here
    Libraries* libraries = nullptr;  ///< where names are looked up that the scene doesn't have; null: nowhere
    bool isRenderedHere = true;
};

class Prepared final : public PreparedScene {
public:
    /// Throws SceneFault.
    Prepared(const node::Scene& scene, const std::string& setupName, const PrepareOptions& options);
    ~Prepared() override;
    Prepared(const Prepared&) = delete;
    Prepared& operator=(const Prepared&) = delete;

    int width() const noexcept override { return camera_.width; }
    int height() const noexcept override { return camera_.height; }
    QuantityFactors quantities() const noexcept override;
    double offAxis(int x, int y) const noexcept override;
    std::shared_ptr<const node::Node> instrument() const noexcept override { return setup_.instrument; }
    std::size_t memory() const noexcept override;
    using PreparedScene::makeFilm;
    std::unique_ptr<Film> makeFilm(Tile tile) const override;
    Counts render(Film& film, Tile tile, std::uint32_t first, std::uint32_t count,
                  const std::atomic<bool>& cancel) const override;

    const KernelScene& kernelScene() const noexcept { return kernel_; }
    const World& world() const noexcept { return world_; }
    const LightList& lights() const noexcept { return lights_; }

private:
    void checkSize() const;
    /// Environment and surfaces on the sensor's grid; returns the environment's table or -1.
    int translateSurfaces(Translation& translation);
    void bakeSensor();
    void bakeWavelengths(int environment);
    void placeCamera();
    void chooseRounding(int environment);
    Workspace* borrowWorkspace() const;
    void returnWorkspace(Workspace* workspace) const noexcept;

    SetupModel setup_;
    CameraModel camera_;
    Sensor sensor_;
    std::unique_ptr<SpectralTables> tables_;
    World world_;
    LightList lights_;
    std::unique_ptr<TraceScenes> traced_;  ///< null for a scene that others render
    std::vector<SpectralCell> lambdaSteps_;
    std::vector<float> responses_;
    std::vector<std::uint16_t> boxOf_;
    KernelScene kernel_;
    RenderBatch renderBatch_ = nullptr;

    mutable std::mutex spareMutex_;
    mutable std::vector<Workspace*> spare_;
};

}  // namespace nemra::core
