/// A result: what a sensor collected, how it was measured, and how it is to be shown.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "engine/core/film/film.h"
#include "engine/core/render.h"
#include "engine/core/result/light_view.h"
#include "engine/node/node.h"

namespace nemra::core {

/// What a render counted up to the moment of a result.
struct RenderCounts {
    double time = 0.0;  ///< s, pauses left out
    std::uint64_t samples = 0;
    std::uint64_t wrong = 0;  ///< samples dropped since they weren't finite
};

/// A factor for each nemra_quantity_t: the quantity is the sensor's value times it. 0: this result doesn't have the quantity.
using QuantityTable = std::array<double, kQuantityCount>;
QuantityTable quantityTable(const QuantityFactors& factors);

/// All that a result consists of, for those who make, store or send one.
struct RawParts {
    std::shared_ptr<const Film> film;
    RenderCounts counts;
    QuantityTable factors{1.0};
    std::shared_ptr<const std::vector<float>> offAxis;  ///< per pixel, for the sensor's quantities; null counts as 1
    std::shared_ptr<const node::Node> instrument;       ///< null if nothing is known of it
    std::shared_ptr<const node::Node> output;           ///< null: the first preset of the instrument
    bool hasSnr = false;
    bool draft = false;
};

class Raw {
public:
    explicit Raw(RawParts parts);
    Raw(std::shared_ptr<const Film> film, const PreparedScene& scene, const RenderCounts& counts);
    Raw(const Raw& other);  ///< shares the film, which is never changed in place
    Raw& operator=(const Raw&) = delete;

    /// As they are together at this moment.
    RawParts parts() const;

    int width() const noexcept { return width_; }
    int height() const noexcept { return height_; }
    std::shared_ptr<const Film> film() const;
    RenderCounts counts() const;
    /// Samples per pixel, mean over the image.
    double spp() const;

    /// The numbers; made at the first call, shared afterwards.
    std::shared_ptr<const LightView> view() const;
    /// Index of a channel or, behind those, of a meta channel; -1 for neither.
    int channelIndex(std::string_view name) const;
    bool hasMetaChannel(std::string_view name) const;
    /// Adds the meta channel snr.
    void generateSnr();
    void removeChannels();

    /// In the order of their numbers; the raw values come first and are always there.
    const std::vector<nemra_quantity_t>& quantities() const noexcept { return quantities_; }
    /// 99th percentile of luminance, energy or band mean over the image: what to put at the bright end of a scale so that
    /// lamps and stray bright pixels don't decide it. 0 for an empty result.
    double autoRangeValue() const;

    std::shared_ptr<const node::Node> instrument() const;
    /// Says anew with what was measured. The numbers stay as they are, and so does what they mean: quantities and their factors.
    void setInstrument(std::shared_ptr<const node::Node> instrument);
    /// The instrument's presets; a default picture if it lists none.
    std::vector<std::shared_ptr<const node::Node>> outputs() const;
    std::shared_ptr<const node::Node> output() const;
    void setOutput(std::shared_ptr<const node::Node> output);
    bool isDraft() const;
    void setDraft(bool draft);

    /// Same size and same channels.
    bool isCompatible(const Raw& other) const;
    /// Adds the other's samples to this one's, exactly as one render would have. False if they aren't compatible.
    bool add(const Raw& other);

private:
    const int width_;
    const int height_;
    const std::vector<nemra_quantity_t> quantities_;

    mutable std::mutex mutex_;  ///< for what follows
    RawParts parts_;
    std::vector<std::shared_ptr<const node::Node>> outputs_;
    mutable std::shared_ptr<const LightView> view_;
};

}  // namespace nemra::core
