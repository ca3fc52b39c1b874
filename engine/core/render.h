/// The renderer proper, as a render job drives it: a scene translated once into flat arrays, and samples traced tile by tile.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "engine/core/film/film.h"
#include "engine/node/scene.h"

namespace nemra::core {

class Libraries;

/// How sensor values become the light quantities of a result. What a sensor measures is a radiance (a luminance) unless its
/// instrument says otherwise.
struct QuantityFactors {
    double sensorIrradiance = 0.0;  ///< multiplies scene radiance on axis: pi / (4 N^2); 0 if the instrument has none
    double sensorPower = 0.0;    ///< m2, multiplies scene radiance on axis: sensorIrradiance times pixel area; 0 if there is none
    double exposureTime = 0.0;   ///< s
    double sceneRadiance = 1.0;  ///< 0 for an instrument that doesn't measure it
    double sceneIrradiance = 0.0;  ///< 1 for an instrument whose values are irradiances (illuminances) of surfaces
    double bsdf = 0.0;             ///< 1 for an instrument whose values are BSDF, 1/sr
};

/// A scene made ready for rendering. Immutable: any number of threads may render from it.
class PreparedScene {
public:
    virtual ~PreparedScene() = default;
    virtual int width() const noexcept = 0;
    virtual int height() const noexcept = 0;
    virtual QuantityFactors quantities() const noexcept = 0;
    /// What the sensor's quantities lose off the axis at the middle of a pixel, in (0, 1]: the fourth power of the cosine of the
    /// field angle.
    virtual double offAxis(int, int) const { return 1.0; }
    /// The nodes that a result carries on: the instrument, and the outputs that it lists.
    virtual std::shared_ptr<const node::Node> instrument() const noexcept = 0;
    /// Bytes that this scene keeps in memory for rendering.
    virtual std::size_t memory() const noexcept = 0;

    struct Tile {
        int x0, y0, x1, y1;  ///< pixels, ends excluded

        bool operator==(const Tile&) const = default;
    };
    /// An empty film of this scene's channels for that part of the image.
    virtual std::unique_ptr<Film> makeFilm(Tile tile) const = 0;
    std::unique_ptr<Film> makeFilm() const { return makeFilm({0, 0, width(), height()}); }

    struct Counts {
        std::uint64_t samples = 0;  ///< paths traced
        std::uint64_t wrong = 0;    ///< of these, dropped since a value wasn't finite
    };
    /// Traces samples [first, first + count) of each pixel of the tile into the film, which has the whole image or a part of it
    /// with all of the tile. The value of a sample depends on the scene,
    /// the seed, the pixel and the sample's index alone. Tiles that don't overlap may be rendered at the same time.
    /// Returns early, with whole samples only, when `cancel` becomes true; what it did by then is in the film.
    virtual Counts render(Film& film, Tile tile, std::uint32_t first, std::uint32_t count,
                          const std::atomic<bool>& cancel) const = 0;
};

/// Translates a scene. `setupName` chooses among its setups: "" takes the active one, else the only one.
/// Named nodes that the scene doesn't have come from `libraries`, which may be null and isn't kept. A scene that others render
/// (`isRenderedHere` false) is looked through in the same way, but what tracing needs isn't made or kept: render() gives no
/// samples. On failure one error message with the node concerned, and null. Messages go to nemra::log.
std::shared_ptr<const PreparedScene> prepareScene(const node::Scene& scene, const std::string& setupName,
                                                  Libraries* libraries = nullptr, bool isRenderedHere = true);

/// Bytes that one buffer of an image may take at most; larger resolutions are refused before anything is allocated.
inline constexpr std::uint64_t kMaxBufferBytes = std::uint64_t{1} << 31;

}  // namespace nemra::core
