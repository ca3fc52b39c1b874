#include "engine/core/result/raw.h"

#include <algorithm>
#include <numeric>

#include "engine/core/film/cut_out.h"

namespace nemra::core {

namespace {

std::vector<std::shared_ptr<const node::Node>> outputsOf(const std::shared_ptr<const node::Node>& instrument) {
    std::vector<std::shared_ptr<const node::Node>> outputs;
    if (instrument) {
        for (auto& child : instrument->list()) {
            if (child && child->family() == "output") outputs.push_back(std::move(child));
        }
    }
    if (outputs.empty()) {
        if (const node::NodeClass* const picture = node::findClass("output", "rgbimage")) {
            outputs.push_back(std::make_shared<node::Node>(*picture, "rgbimage"));
        }
    }
    return outputs;
}

std::vector<nemra_quantity_t> quantitiesOf(const QuantityTable& factors) {
    std::vector<nemra_quantity_t> quantities;
    for (int quantity = NEMRA_QUANTITY_RAW; quantity < kQuantityCount; ++quantity) {
        if (factors[static_cast<std::size_t>(quantity)] != 0.0) quantities.push_back(static_cast<nemra_quantity_t>(quantity));
    }
    return quantities;
}

bool sameChannels(const std::vector<Channel>& a, const std::vector<Channel>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Channel& x, const Channel& y) {
        return x.name == y.name && x.kind == y.kind && x.wavelength == y.wavelength && x.bandwidth == y.bandwidth &&
               x.unit == y.unit;
    });
}

/// Only where a quantity needs it, since it takes as much memory as the sample counts.
std::shared_ptr<const std::vector<float>> offAxisOf(const Film& film, const PreparedScene& scene) {
    if (!(scene.quantities().sensorIrradiance > 0.0)) return nullptr;
    auto factors = std::make_shared<std::vector<float>>(film.samples.size());
    for (int x = 0; x < film.width; ++x) {
        for (int y = 0; y < film.height; ++y) (*factors)[film.pixel(x, y)] = static_cast<float>(scene.offAxis(x, y));
    }
    return factors;
}

template <class Number>
void addTo(std::vector<Number>& sums, const std::vector<Number>& others) {
    std::transform(sums.begin(), sums.end(), others.begin(), sums.begin(), std::plus<>());
}

}  // namespace

QuantityTable quantityTable(const QuantityFactors& factors) {
    QuantityTable table{};
    table[NEMRA_QUANTITY_RAW] = 1.0;
    table[NEMRA_QUANTITY_SENSOR_IRRADIANCE] = factors.sensorIrradiance;
    table[NEMRA_QUANTITY_SCENE_RADIANCE] = factors.sceneRadiance;
    table[NEMRA_QUANTITY_SCENE_IRRADIANCE] = factors.sceneIrradiance;
    table[NEMRA_QUANTITY_SENSOR_POWER] = factors.sensorPower;
    table[NEMRA_QUANTITY_SENSOR_EXPOSURE] = factors.sensorIrradiance * factors.exposureTime;
    table[NEMRA_QUANTITY_COMPUTED_BSDF] = factors.bsdf;
    return table;
}

Raw::Raw(RawParts parts)
    : width_(parts.film->width),
      height_(parts.film->height),
      quantities_(quantitiesOf(parts.factors)),
      parts_(std::move(parts)),
      outputs_(outputsOf(parts_.instrument)) {
    if (!parts_.output && !outputs_.empty()) parts_.output = outputs_.front();
}

Raw::Raw(std::shared_ptr<const Film> film, const PreparedScene& scene, const RenderCounts& counts)
    : Raw(RawParts{.film = film,
                   .counts = counts,
                   .factors = quantityTable(scene.quantities()),
                   .offAxis = offAxisOf(*film, scene),
                   .instrument = scene.instrument(),
                   .output = nullptr}) {}

Raw::Raw(const Raw& other) : width_(other.width_), height_(other.height_), quantities_(other.quantities_) {
    const std::lock_guard lock(other.mutex_);
    parts_ = other.parts_;
    outputs_ = other.outputs_;
    view_ = other.view_;
}

RawParts Raw::parts() const {
    const std::lock_guard lock(mutex_);
    return parts_;
}

std::shared_ptr<const Film> Raw::film() const {
    const std::lock_guard lock(mutex_);
    return parts_.film;
}

RenderCounts Raw::counts() const {
    const std::lock_guard lock(mutex_);
    return parts_.counts;
}

double Raw::spp() const {
    const auto film = this->film();
    if (film->samples.empty()) return 0.0;
    const auto sum = std::accumulate(film->samples.begin(), film->samples.end(), std::uint64_t{0});
    return static_cast<double>(sum) / static_cast<double>(film->samples.size());
}

std::shared_ptr<const LightView> Raw::view() const {
    const std::lock_guard lock(mutex_);
    if (!view_) {
        auto view = std::make_shared<LightView>(makeLightView(*parts_.film, parts_.hasSnr));
        view->factors = parts_.factors;
        if (parts_.offAxis) view->offAxis = *parts_.offAxis;
        view_ = std::move(view);
    }
    return view_;
}

int Raw::channelIndex(std::string_view name) const {
    const auto film = this->film();
    for (std::size_t i = 0; i < film->channels.size(); ++i) {
        if (film->channels[i].name == name) return static_cast<int>(i);
    }
    for (int meta = 0; meta < kMetaChannelCount; ++meta) {
        if (kMetaChannelNames[static_cast<std::size_t>(meta)] == name && hasMetaChannel(name)) {
            return static_cast<int>(film->channels.size()) + meta;
        }
    }
    return -1;
}

bool Raw::hasMetaChannel(std::string_view name) const {
    const std::lock_guard lock(mutex_);
    if (parts_.film->channels.empty()) return false;
    const auto found = std::find(kMetaChannelNames.begin(), kMetaChannelNames.end(), name);
    if (found == kMetaChannelNames.end()) return false;
    return parts_.hasSnr || found - kMetaChannelNames.begin() != static_cast<int>(MetaChannel::snr);
}

void Raw::generateSnr() {
    const std::lock_guard lock(mutex_);
    if (parts_.hasSnr || parts_.film->channels.empty()) return;
    parts_.hasSnr = true;
    view_.reset();
}

void Raw::removeChannels() {
    const std::lock_guard lock(mutex_);
    auto bare = std::make_shared<Film>();
    bare->width = parts_.film->width;
    bare->height = parts_.film->height;
    bare->samples = parts_.film->samples;  // the sample count is metadata
    parts_.film = std::move(bare);
    view_.reset();
    parts_.hasSnr = false;
}

double Raw::autoRangeValue() const {
    const auto film = this->film();
    const auto view = this->view();
    const auto channels = static_cast<std::size_t>(view->channels);
    if (channels == 0 || view->values.empty()) return 0.0;
    const int reference = referenceChannel(*film);
    std::vector<double> levels(view->values.size() / channels);
    for (std::size_t pixel = 0; pixel < levels.size(); ++pixel) {
        const double* const values = view->values.data() + pixel * channels;
        levels[pixel] = reference >= 0 ? values[reference] : std::accumulate(values, values + channels, 0.0) / double(channels);
    }
    const auto rank = levels.begin() + static_cast<std::ptrdiff_t>((levels.size() - 1) * 99 / 100);
    std::nth_element(levels.begin(), rank, levels.end());
    return *rank;
}

std::shared_ptr<const node::Node> Raw::instrument() const {
    const std::lock_guard lock(mutex_);
    return parts_.instrument;
}

void Raw::setInstrument(std::shared_ptr<const node::Node> instrument) {
    auto presets = outputsOf(instrument);
    const std::lock_guard lock(mutex_);
    parts_.instrument = std::move(instrument);
    outputs_ = std::move(presets);
}

std::vector<std::shared_ptr<const node::Node>> Raw::outputs() const {
    const std::lock_guard lock(mutex_);
    return outputs_;
}

std::shared_ptr<const node::Node> Raw::output() const {
    const std::lock_guard lock(mutex_);
    return parts_.output;
}

void Raw::setOutput(std::shared_ptr<const node::Node> output) {
    const std::lock_guard lock(mutex_);
    parts_.output = std::move(output);
}

bool Raw::isDraft() const {
    const std::lock_guard lock(mutex_);
    return parts_.draft;
}

void Raw::setDraft(bool draft) {
    const std::lock_guard lock(mutex_);
    parts_.draft = draft;
}

bool Raw::isCompatible(const Raw& other) const {
    if (width_ != other.width_ || height_ != other.height_) return false;
    return sameChannels(film()->channels, other.film()->channels);
}

bool Raw::add(const Raw& other) {
    if (!isCompatible(other)) return false;
    const auto theirs = other.film();
    const RenderCounts more = other.counts();
    const std::lock_guard lock(mutex_);
    auto sum = std::make_shared<Film>(*parts_.film);
    if (!sum->channels.empty()) {
        addCutOut(*sum, *theirs);
    } else {
        addTo(sum->samples, theirs->samples);
    }
    parts_.film = std::move(sum);
    parts_.counts.time += more.time;
    parts_.counts.samples += more.samples;
    parts_.counts.wrong += more.wrong;
    view_.reset();
    return true;
}

}  // namespace nemra::core
