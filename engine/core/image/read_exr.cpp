#include "engine/core/image/read_exr.h"

#include <ImfChannelList.h>
#include <ImfChromaticitiesAttribute.h>
#include <ImfFloatAttribute.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfInputPart.h>
#include <ImfMultiPartInputFile.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <set>

#include "engine/common/log.h"
#include "engine/core/image/exr_chunk.h"
#include "engine/core/image/exr_head.h"
#include "engine/core/image/exr_tiles.h"
#include "engine/core/image/picture_film.h"
#include "engine/core/image/spectral_layout.h"
#include "engine/core/output/parallel_rows.h"
#include "engine/core/result/in_strips.h"
#include "engine/node/encoding/utf8.h"

namespace nemra::core {

namespace {

constexpr int kMaxSide = 65536;
constexpr std::size_t kMaxChannels = 4096;

class MemoryStream final : public Imf::IStream {
public:
    explicit MemoryStream(std::span<const char> bytes) : IStream("memory"), bytes_(bytes) {}
    bool read(char out[], int count) override {
        if (count < 0 || place_ > bytes_.size() || static_cast<std::size_t>(count) > bytes_.size() - place_) {
            throw PictureFault("the file is cut short");
        }
        std::memcpy(out, bytes_.data() + place_, static_cast<std::size_t>(count));
        place_ += static_cast<std::size_t>(count);
        return place_ < bytes_.size();
    }
    std::uint64_t tellg() override { return place_; }
    void seekg(std::uint64_t place) override { place_ = static_cast<std::size_t>(place); }

private:
    std::span<const char> bytes_;
    std::size_t place_ = 0;
};

/// A channel of the file and what becomes of it.
struct Source {
    std::string name;
    Channel channel;
};

/// Rows as the library gives them, a plane for each source.
struct Planes {
    int first;
    int rows;
    std::vector<std::unique_ptr<float[]>> values;
};

/// From R, G, B to X, Y, Z.
struct ToLight {
    const ColorSpace& space;
    double luminanceOfWhite;

    void turn(double* values, std::size_t sources) const noexcept {
        const bool grey = sources == 1;
        const auto xyz = space.toXyz(values[0], values[grey ? 0 : 1], values[grey ? 0 : 2]);
        for (std::size_t c = 0; c < 3; ++c) values[c] = luminanceOfWhite * xyz[c];
    }
};

std::string textOf(const Imf::Header& header, const char* name) {
    const auto* const attribute = header.findTypedAttribute<Imf::StringAttribute>(name);
    return attribute ? attribute->value() : "";
}

/// Rows that the file packs together.
int rowsOfChunk(const Imf::Header& header) {
    if (header.hasTileDescription()) return static_cast<int>(std::min(header.tileDescription().ySize, unsigned{kMaxSide}));
    switch (header.compression()) {
        case Imf::ZIP_COMPRESSION:
        case Imf::PXR24_COMPRESSION:
            return 16;
        case Imf::PIZ_COMPRESSION:
        case Imf::B44_COMPRESSION:
        case Imf::B44A_COMPRESSION:
        case Imf::DWAA_COMPRESSION:
            return 32;
        case Imf::DWAB_COMPRESSION:
            return 256;
        default:
            return 1;
    }
}

class File {
public:
    /// The first part of the file. Its headers are looked at before the library makes buffers for what they claim.
    File(std::span<const char> bytes, const std::string& origin)
        : bytes_(bytes),
          tables_(checkExrHead(bytes)),
          origin_(origin),
          stream_(bytes),
          parts_(stream_, 0, false),
          header_(parts_.header(0)),
          window_(header_.dataWindow()) {
        for (auto i = header_.channels().begin(); i != header_.channels().end(); ++i) {
            names_.emplace_back(i.name());
            if (has(i.name())) bytesPerPixel_ += i.channel().type == Imf::HALF ? 2 : 4;
            if (names_.size() > kMaxChannels) throw PictureFault("more than " + std::to_string(kMaxChannels) + " channels");
        }
        checkSize(1);
        // The library would look for tiles elsewhere than the file says.
        if (header_.hasTileDescription() && !parts_.partComplete(0)) throw PictureFault("the places of some tiles are missing");
    }

    const Imf::Header& header() const { return header_; }
    const std::vector<std::string>& names() const noexcept { return names_; }

    /// A channel at full resolution.
    bool has(const std::string& name) const {
        const auto* const channel = header_.channels().findChannel(name);
        return channel && channel->xSampling == 1 && channel->ySampling == 1;
    }

    /// `light` turns R, G, B, the first three channels or one that stands for all three, into X, Y, Z.
    std::shared_ptr<Film> read(const std::vector<Source>& sources, const ExrMapping& mapping, const ToLight* light = nullptr) {
        checkSize(sources.size());
        std::vector<Channel> channels;
        for (const Source& source : sources) channels.push_back(source.channel);
        if (light && channels.size() == 1) channels = tristimulusChannels();
        auto film = makePictureFilm(static_cast<int>(width()), static_cast<int>(height()), std::move(channels));
        const PictureWriter writer(*film);

        // Rows that are unpacked at once by one thread: whole chunks, and so many that opening the file once more is little work.
        constexpr long long kLeastPixels = 1 << 17;
        const int chunk = rowsOfChunk(header_);
        const auto least = std::min<long long>(height(), kLeastPixels / width() + 1);
        const int rows = chunk * static_cast<int>((least + chunk - 1) / chunk);
        std::mutex mutex;  // for `fault`
        std::exception_ptr fault;
        parallelRows((film->height + rows - 1) / rows,
                     [&](int i) {
                         try {
                             const int first = i * rows;
                             const Planes planes = readRows(*film, sources, first, std::min(rows, film->height - first));
                             put(planes, *film, writer, mapping, light);
                         } catch (...) {
                             const std::lock_guard lock(mutex);
                             fault = std::current_exception();
                         }
                     },
                     1);
        if (fault) std::rethrow_exception(fault);
        return film;
    }

    /// Says once what wasn't taken.
    void reportOthers(const std::vector<Source>& taken, bool previewIsExpected) const {
        std::string others;
        for (const std::string& name : names_) {
            if (previewIsExpected && (name == "R" || name == "G" || name == "B")) continue;
            if (std::any_of(taken.begin(), taken.end(), [&](const Source& source) { return source.name == name; })) continue;
            if (others.size() > 200) {
                others += ", ...";
                break;
            }
            others += (others.empty() ? "" : ", ") + name;
        }
        if (!others.empty()) log::info(origin_, "channels that are left out: " + others);
    }

private:
    long long width() const noexcept { return static_cast<long long>(window_.max.x) - window_.min.x + 1; }
    long long height() const noexcept { return static_cast<long long>(window_.max.y) - window_.min.y + 1; }
    /// What stands for more than deflate can shrink is a picture of one value, large and by DWA, or a fraud.
    void checkSize(std::size_t channels) const {
        constexpr std::uint64_t deflate = 1032;  // bytes that one stands for at most: 258 in two bits
        checkPictureSize(width(), height(), channels, bytes_.size() * deflate / std::max(bytesPerPixel_, std::uint64_t{1}));
    }

    void demandWhole(const Imath::Box2i& pixels, const char* packed, int size) const {
        if (size < 0 || !isWholeExrChunk(header_, pixels, {packed, static_cast<std::size_t>(size)})) {
            throw PictureFault("the rows from " + std::to_string(pixels.min.y - window_.min.y) + " on aren't whole");
        }
    }
    void checkChunks(Imf::InputPart& part, const Imath::Box2i& rows) const {
        const int together = rowsOfChunk(header_);
        for (int y = rows.min.y; y <= rows.max.y; y += together) {
            const char* packed = nullptr;
            int size = 0;
            part.rawPixelData(y, packed, size);
            demandWhole({{rows.min.x, y}, {rows.max.x, std::min(y + together - 1, rows.max.y)}}, packed, size);
        }
    }

    /// From a stream of its own, so that several threads can at the same time.
    Planes readRows(const Film& film, const std::vector<Source>& sources, int first, int rows) const {
        MemoryStream stream(bytes_);
        Imf::MultiPartInputFile parts(stream, 0, false);
        Imf::InputPart part(parts, 0);
        const auto w = static_cast<std::size_t>(film.width);
        const Imath::Box2i window({window_.min.x, window_.min.y + first}, {window_.max.x, window_.min.y + first + rows - 1});
        Planes planes{first, rows, {}};
        Imf::FrameBuffer frame;
        for (const Source& source : sources) {
            planes.values.push_back(std::make_unique<float[]>(w * static_cast<std::size_t>(rows)));
            frame.insert(source.name,
                         Imf::Slice::Make(Imf::FLOAT, planes.values.back().get(), window, sizeof(float), sizeof(float) * w));
        }
        if (header_.hasTileDescription()) {
            checkExrTiles(header_, bytes_, tables_, window.min.y, window.max.y);
        } else {
            checkChunks(part, window);
        }
        part.setFrameBuffer(frame);
        part.readPixels(window.min.y, window.max.y);
        return planes;
    }

    /// Tiles of a few columns: read along the rows and written along the columns while the cache has them.
    static void put(const Planes& planes, const Film& film, const PictureWriter& writer, const ExrMapping& mapping,
                    const ToLight* light) {
        const std::size_t sources = planes.values.size();
        const std::size_t channels = film.channels.size();
        const auto w = static_cast<std::size_t>(film.width);
        constexpr std::size_t tileNumbers = 4096;
        const int together = std::clamp(static_cast<int>(tileNumbers / (kStripColumns * channels)), 1, planes.rows);
        std::vector<double> tile(kStripColumns * channels * static_cast<std::size_t>(together));
        for (int x0 = 0; x0 < film.width; x0 += kStripColumns) {
            const int columns = std::min(kStripColumns, film.width - x0);
            for (int y0 = 0; y0 < planes.rows; y0 += together) {
                const int rows = std::min(together, planes.rows - y0);
                const std::size_t columnNumbers = channels * static_cast<std::size_t>(rows);
                for (int y = 0; y < rows; ++y) {
                    const std::size_t from = static_cast<std::size_t>(y0 + y) * w + static_cast<std::size_t>(x0);
                    double* out = tile.data() + channels * static_cast<std::size_t>(mapping.flipped ? rows - 1 - y : y);
                    for (std::size_t x = 0; x < static_cast<std::size_t>(columns); ++x, out += columnNumbers) {
                        for (std::size_t c = 0; c < sources; ++c) {
                            const float value = planes.values[c][from + x];
                            out[c] = std::isfinite(value) ? static_cast<double>(value) : 0.0;
                        }
                        if (light) light->turn(out, sources);
                        for (std::size_t c = 0; c < channels; ++c) out[c] *= mapping.scale;
                    }
                }
                const int top = mapping.flipped ? film.height - (planes.first + y0 + rows) : planes.first + y0;
                for (int x = 0; x < columns; ++x) {
                    writer.put(x0 + x, top, rows, tile.data() + columnNumbers * static_cast<std::size_t>(x));
                }
            }
        }
    }

    std::span<const char> bytes_;
    std::size_t tables_;               ///< where those of places begin
    std::uint64_t bytesPerPixel_ = 0;  ///< of the channels at full resolution
    const std::string& origin_;
    MemoryStream stream_;
    Imf::MultiPartInputFile parts_;
    const Imf::Header& header_;
    Imath::Box2i window_;
    std::vector<std::string> names_;
};

std::vector<Source> bandSources(const File& file, LayoutChannel::Kind kind) {
    std::vector<std::pair<double, std::string>> bands;
    for (const std::string& name : file.names()) {
        const auto parsed = parseLayoutChannel(name);
        if (parsed && parsed->kind == kind && file.has(name)) bands.emplace_back(parsed->wavelength, name);
    }
    // The file's order is that of texts, in which 1000 nm comes before 400 nm.
    std::sort(bands.begin(), bands.end());
    std::vector<double> centres;
    for (const auto& [wavelength, name] : bands) centres.push_back(wavelength);
    std::vector<double> widths = bandwidthsBetween(centres);
    const auto limits = parseBandLimits(textOf(file.header(), "sarvo:bandLimits"));
    for (std::size_t i = 0; i < centres.size(); ++i) {
        for (const BandLimits& band : limits) {
            if (std::abs((band.first + band.last) / 2.0 - centres[i]) < 2.0e-15) widths[i] = band.last - band.first;
        }
    }
    std::string unit = textOf(file.header(), "sarvo:valueUnit");
    if (unit.empty()) unit = kind == LayoutChannel::Kind::emissive ? "W.m^-2.sr^-1.nm^-1" : "1";
    std::vector<Source> sources;
    for (std::size_t i = 0; i < bands.size(); ++i) {
        sources.push_back({bands[i].second, bandChannel(centres[i], widths[i], unit)});
    }
    return sources;
}

Chromaticity toChromaticity(const Imath::V2f& v) { return {v.x, v.y}; }

/// The primaries that the file states, if they can be used.
std::optional<ColorSpace> colorsOf(const Imf::Header& header) {
    if (!Imf::hasChromaticities(header)) return std::nullopt;
    const Imf::Chromaticities c = Imf::chromaticities(header);
    const ColorSpace space =
        linearColorSpace(toChromaticity(c.red), toChromaticity(c.green), toChromaticity(c.blue), toChromaticity(c.white));
    const auto usable = [](const auto& matrix) {
        return std::all_of(matrix.begin(), matrix.end(), [](double entry) { return std::isfinite(entry); });
    };
    return usable(space.fromXyz) && usable(space.toXyzRows) ? std::optional(space) : std::nullopt;
}

double luminanceOfWhite(const Imf::Header& header) {
    const double stated = Imf::hasWhiteLuminance(header) ? static_cast<double>(Imf::whiteLuminance(header)) : 1.0;
    return stated > 0.0 && std::isfinite(stated) ? stated : 1.0;
}

std::vector<Source> threeSources(const char* const (&names)[3]) {
    const auto channels = tristimulusChannels();
    return {{names[0], channels[0]}, {names[1], channels[1]}, {names[2], channels[2]}};
}

/// What our own files tell of a sensor's own channels: kind, unit and name in a line for each.
std::vector<Source> statedSources(const File& file) {
    const std::string lines = textOf(file.header(), "sarvo:channels");
    std::vector<Source> sources;
    std::set<std::string> seen;
    for (std::size_t from = 0; from < lines.size();) {
        const std::size_t end = std::min(lines.find('\n', from), lines.size());
        const std::string line = lines.substr(from, end - from);
        from = end + 1;
        const std::size_t unit = line.find(' ');
        const std::size_t name = unit == std::string::npos ? unit : line.find(' ', unit + 1);
        if (name == std::string::npos) return {};
        const std::string kind = line.substr(0, unit);
        const std::string named = line.substr(name + 1);
        if (!file.has(named) || !seen.insert(named).second || node::firstNotText(line) != line.size()) return {};
        sources.push_back({named,
                           {named,
                            kind == "luminous" ? ChannelKind::luminous
                            : kind == "energy" ? ChannelKind::energy
                                               : ChannelKind::unknown,
                            0.0, 0.0, line.substr(unit + 1, name - unit - 1)}});
    }
    return sources;
}

std::vector<Source> unknownSources(const File& file) {
    std::vector<Source> sources;
    for (const std::string& name : file.names()) {
        if (file.has(name) && node::firstNotText(name) == name.size()) {
            sources.push_back({name, {name, ChannelKind::unknown, 0.0, 0.0, "1"}});
        }
    }
    return sources;
}

/// `light`: the values are radiances or luminances.
std::shared_ptr<Film> filmOf(File& file, const ExrMapping& mapping, bool& light) {
    const Imf::Header& header = file.header();
    const std::string quantity = textOf(header, "sarvo:quantity");
    light = quantity.empty() || quantity.ends_with("radiance") || quantity == "luminance";
    const auto take = [&](const std::vector<Source>& sources, bool previewIsExpected = false, const ToLight* toLight = nullptr) {
        file.reportOthers(sources, previewIsExpected);
        return file.read(sources, mapping, toLight);
    };
    if (const auto stated = statedSources(file); !stated.empty()) return take(stated, true);
    auto bands = bandSources(file, LayoutChannel::Kind::emissive);
    if (bands.empty()) {
        bands = bandSources(file, LayoutChannel::Kind::reflective);
        light = light && bands.empty();
    }
    if (!bands.empty()) return take(bands, true);
    if (file.has("X") && file.has("Y") && file.has("Z")) return take(threeSources({"X", "Y", "Z"}), true);
    if (file.has("E") && !quantity.empty()) {
        return take({{"E", {"E", ChannelKind::energy, 0.0, 0.0, textOf(header, "sarvo:valueUnit")}}}, true);
    }
    const std::optional<ColorSpace> stated = colorsOf(header);
    const ToLight toLight{mapping.colors ? *mapping.colors : stated ? *stated : colorSpace("srgb"), luminanceOfWhite(header)};
    if (file.has("R") && file.has("G") && file.has("B")) {
        auto sources = threeSources({"R", "G", "B"});
        if (file.has("A")) sources.push_back({"A", alphaChannel()});
        return take(sources, false, &toLight);
    }
    if (file.has("Y")) return take({{"Y", {"Y", ChannelKind::luminous, 0.0, 0.0, "cd.m^-2"}}}, false, &toLight);
    light = false;
    const auto sources = unknownSources(file);
    if (sources.empty()) throw PictureFault("the file has no channel that can be read");
    return take(sources);
}

}  // namespace

std::shared_ptr<Raw> readExr(std::span<const char> bytes, const std::string& origin, const ExrMapping& mapping) {
    // The library would allocate by what a header claims before we see it.
    static const bool limited = (Imf::Header::setMaxImageSize(kMaxSide, kMaxSide), true);
    static_cast<void>(limited);
    try {
        File file(bytes, origin);
        RawParts parts;
        bool light = false;
        parts.film = filmOf(file, mapping, light);
        if (light) parts.factors[NEMRA_QUANTITY_SCENE_RADIANCE] = 1.0;
        if (const auto* const time = file.header().findTypedAttribute<Imf::FloatAttribute>("renderTimeSeconds")) {
            if (time->value() > 0.0F && std::isfinite(time->value())) parts.counts.time = time->value();
        }
        return std::make_shared<Raw>(std::move(parts));
    } catch (const PictureFault&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& e) {
        throw PictureFault(e.what());
    }
}

}  // namespace nemra::core
