#include "engine/core/result/raw.h"

#include <algorithm>
#include <numeric>

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

std::vector<nemra_quantity_t> quantitiesOf(const QuantityFactors& factors) {
    std::vector<nemra_quantity_t> quantities{NEMRA_QUANTITY_RAW};
    if (factors.sensorIrradiance > 0.0) quantities.push_back(NEMRA_QUANTITY_SENSOR_IRRADIANCE);
    quantities.push_back(NEMRA_QUANTITY_SCENE_RADIANCE);
    if (factors.sensorPower > 0.0) quantities.push_back(NEMRA_QUANTITY_SENSOR_POWER);
    if (factors.sensorIrradiance > 0.0 && factors.exposureTime > 0.0) quantities.push_back(NEMRA_QUANTITY_SENSOR_EXPOSURE);
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

void addFilm(Film& film, const Film& other) {
    addTo(film.high, other.high);
    addTo(film.low, other.low);
    addTo(film.samples, other.samples);
    addTo(film.squares, other.squares);
    addTo(film.depth, other.depth);
    addTo(film.depthSamples, other.depthSamples);
}

Raw::Raw(std::shared_ptr<const Film> film, const PreparedScene& scene, const RenderCounts& counts)
    : width_(film->width),
      height_(film->height),
      factors_(scene.quantities()),
      offAxis_(offAxisOf(*film, scene)),
      instrument_(scene.instrument()),
      outputs_(outputsOf(instrument_)),
      quantities_(quantitiesOf(factors_)),
      film_(std::move(film)),
      counts_(counts),
      output_(outputs_.empty() ? nullptr : outputs_.front()) {}

Raw::Raw(const Raw& other)
    : width_(other.width_),
      height_(other.height_),
      factors_(other.factors_),
      offAxis_(other.offAxis_),
      instrument_(other.instrument_),
      outputs_(other.outputs_),
      quantities_(other.quantities_) {
    const std::lock_guard lock(other.mutex_);
    film_ = other.film_;
    counts_ = other.counts_;
    view_ = other.view_;
    output_ = other.output_;
    hasSnr_ = other.hasSnr_;
    draft_ = other.draft_;
}

std::shared_ptr<const Film> Raw::film() const {
    const std::lock_guard lock(mutex_);
    return film_;
}

RenderCounts Raw::counts() const {
    const std::lock_guard lock(mutex_);
    return counts_;
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
        auto view = std::make_shared<LightView>(makeLightView(*film_, hasSnr_));
        view->factors[NEMRA_QUANTITY_RAW] = 1.0;
        for (const nemra_quantity_t quantity : quantities_) {
            double factor = 1.0;
            if (quantity == NEMRA_QUANTITY_SENSOR_IRRADIANCE) factor = factors_.sensorIrradiance;
            if (quantity == NEMRA_QUANTITY_SENSOR_POWER) factor = factors_.sensorPower;
            if (quantity == NEMRA_QUANTITY_SENSOR_EXPOSURE) factor = factors_.sensorIrradiance * factors_.exposureTime;
            view->factors[static_cast<std::size_t>(quantity)] = factor;
        }
        if (offAxis_) view->offAxis = *offAxis_;
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
    if (film_->channels.empty()) return false;
    const auto found = std::find(kMetaChannelNames.begin(), kMetaChannelNames.end(), name);
    if (found == kMetaChannelNames.end()) return false;
    return hasSnr_ || found - kMetaChannelNames.begin() != static_cast<int>(MetaChannel::snr);
}

void Raw::generateSnr() {
    const std::lock_guard lock(mutex_);
    if (hasSnr_ || film_->channels.empty()) return;
    hasSnr_ = true;
    view_.reset();
}

void Raw::removeChannels() {
    const std::lock_guard lock(mutex_);
    auto bare = std::make_shared<Film>();
    bare->width = film_->width;
    bare->height = film_->height;
    bare->samples = film_->samples;  // the sample count is metadata
    film_ = std::move(bare);
    view_.reset();
    hasSnr_ = false;
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

std::shared_ptr<const node::Node> Raw::output() const {
    const std::lock_guard lock(mutex_);
    return output_;
}

void Raw::setOutput(std::shared_ptr<const node::Node> output) {
    const std::lock_guard lock(mutex_);
    output_ = std::move(output);
}

bool Raw::isDraft() const {
    const std::lock_guard lock(mutex_);
    return draft_;
}

void Raw::setDraft(bool draft) {
    const std::lock_guard lock(mutex_);
    draft_ = draft;
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
    auto sum = std::make_shared<Film>(*film_);
    if (!sum->channels.empty()) {
        addFilm(*sum, *theirs);
    } else {
        addTo(sum->samples, theirs->samples);
    }
    film_ = std::move(sum);
    counts_.time += more.time;
    counts_.samples += more.samples;
    counts_.wrong += more.wrong;
    view_.reset();
    return true;
}

}  // namespace nemra::core
