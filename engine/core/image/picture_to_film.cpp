#include "engine/core/image/picture_to_film.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "engine/core/film/pageable.h"
#include "engine/core/output/helpers.h"
#include "engine/core/result/in_strips.h"

namespace nemra::core {

namespace {

/// Some rows as a decoder gave them.
struct RowBlock {
    int first = 0;
    int rows = 0;
    std::unique_ptr<unsigned char[]> bytes;
};

/// What each code stands for: a number from 0 to 1, and by the curve of a space, if there is one.
struct CodeTables {
    std::vector<double> plain;
    std::vector<double> light;

    CodeTables(Samples samples, const ColorSpace* curve) {
        if (samples != Samples::codes8 && samples != Samples::codes16) return;
        const int most = samples == Samples::codes8 ? 255 : 65535;
        for (int code = 0; code <= most; ++code) {
            const float value = static_cast<float>(code) / static_cast<float>(most);
            plain.push_back(value);
            light.push_back(curve ? curve->decode(value) : value);
        }
    }
};

/// 2^(exponent - 136) over the exposure, for the exponent's byte.
std::array<double, 256> mantissaSteps(double exposure) {
    std::array<double, 256> steps{};
    for (int exponent = 1; exponent < 256; ++exponent) {
        steps[static_cast<std::size_t>(exponent)] = std::ldexp(1.0, exponent - 136) / exposure;
    }
    return steps;
}

template <class Number>
Number numberAt(const unsigned char* bytes, std::size_t i) noexcept {
    Number number{};
    std::memcpy(&number, bytes + i * sizeof(Number), sizeof(Number));
    return number;
}

class ToFilm {
public:
    ToFilm(const PictureForm& form, const PictureMapping& mapping, Film& film)
        : form_(form),
          mapping_(mapping),
          film_(film),
          writer_(film),
          curve_(mapping.colors && mapping.encoded ? mapping.colors : nullptr),
          tables_(form.samples, curve_),
          steps_(mantissaSteps(form.exposure)),
          components_(static_cast<std::size_t>(form.channels)),
          order_(mapping.order) {
        for (std::size_t c = order_.size(); c < components_; ++c) order_.push_back(c);
    }

    /// From any thread, different rows at the same time.
    void put(const RowBlock& block) const {
        const auto code = [](auto number, const std::vector<double>& table) {
            return [&table](const unsigned char* pixel, std::size_t c) { return table[numberAt<decltype(number)>(pixel, c)]; };
        };
        switch (form_.samples) {
            case Samples::codes8:
                return putTiles(block, code(std::uint8_t{}, tables_.light), code(std::uint8_t{}, tables_.plain));
            case Samples::codes16:
                return putTiles(block, code(std::uint16_t{}, tables_.light), code(std::uint16_t{}, tables_.plain));
            case Samples::rgbe:
                return putFloats(block, [this](const unsigned char* pixel, std::size_t c) {
                    const double step = steps_[pixel[3]];
                    return static_cast<float>((pixel[c] + 0.5) * step);
                });
            case Samples::floats:
                return putFloats(block, numberAt<float>);
        }
    }

private:
    template <class Value>
    void putFloats(const RowBlock& block, const Value& value) const {
        const auto plain = [&](const unsigned char* pixel, std::size_t c) { return static_cast<double>(value(pixel, c)); };
        if (!curve_) return putTiles(block, plain, plain);
        putTiles(
            block, [&](const unsigned char* pixel, std::size_t c) { return curve_->decode(plain(pixel, c)); }, plain);
    }

    /// Tiles of a few columns: their pixels are read along the rows and written along the columns while the cache has them.
    template <class Light, class Plain>
    void putTiles(const RowBlock& block, const Light& light, const Plain& plain) const {
        constexpr std::size_t tileNumbers = 4096;
        const std::size_t channels = film_.channels.size();
        const int together = std::clamp(static_cast<int>(tileNumbers / (kStripColumns * channels)), 1, block.rows);
        std::vector<double> tile(kStripColumns * channels * static_cast<std::size_t>(together));
        const std::size_t pixelBytes = form_.pixelBytes();
        for (int x0 = 0; x0 < film_.width; x0 += kStripColumns) {
            const int columns = std::min(kStripColumns, film_.width - x0);
            for (int y0 = 0; y0 < block.rows; y0 += together) {
                const int rows = std::min(together, block.rows - y0);
                const auto columnNumbers = channels * static_cast<std::size_t>(rows);
                for (int y = 0; y < rows; ++y) {
                    const unsigned char* pixel = block.bytes.get() + form_.rowBytes() * static_cast<std::size_t>(y0 + y) +
                                                 pixelBytes * static_cast<std::size_t>(x0);
                    double* out = tile.data() + channels * static_cast<std::size_t>(mapping_.flipped ? rows - 1 - y : y);
                    for (int x = 0; x < columns; ++x, pixel += pixelBytes, out += columnNumbers) {
                        convert(pixel, out, light, plain);
                    }
                }
                const int top = mapping_.flipped ? film_.height - (block.first + y0 + rows) : block.first + y0;
                for (int x = 0; x < columns; ++x) {
                    writer_.put(x0 + x, top, rows, tile.data() + columnNumbers * static_cast<std::size_t>(x));
                }
            }
        }
    }

    template <class Light, class Plain>
    [[gnu::always_inline]] void convert(const unsigned char* pixel, double* out, const Light& light, const Plain& plain) const {
        if (!mapping_.colors) {
            for (std::size_t c = 0; c < components_; ++c) out[c] = mapping_.scale * plain(pixel, order_[c]);
            return;
        }
        std::array<double, 3> rgb{};
        if (components_ >= 3) {
            rgb = {light(pixel, 0), light(pixel, 1), light(pixel, 2)};
        } else {
            rgb.fill(light(pixel, 0));
        }
        const auto xyz = mapping_.colors->toXyz(rgb[0], rgb[1], rgb[2]);
        for (std::size_t c = 0; c < 3; ++c) out[c] = mapping_.scale * xyz[c];
        if (components_ % 2 == 0) out[3] = plain(pixel, components_ - 1);
    }

    const PictureForm& form_;
    const PictureMapping& mapping_;
    const Film& film_;
    const PictureWriter writer_;
    const ColorSpace* const curve_;  ///< null: components are proportional to light
    const CodeTables tables_;
    const std::array<double, 256> steps_;
    const std::size_t components_;
    std::vector<std::size_t> order_;
};

/// Rows that go from hand to hand together.
int rowsOfBlock(const PictureForm& form) {
    constexpr std::size_t blockBytes = std::size_t{4} << 20;
    constexpr std::size_t most = 256;
    return static_cast<int>(std::clamp<std::size_t>(blockBytes / form.rowBytes(), 1, most));
}

}  // namespace

std::size_t PictureForm::pixelBytes() const noexcept {
    const auto components = static_cast<std::size_t>(channels);
    switch (samples) {
        case Samples::codes8:
            return components;
        case Samples::codes16:
            return 2 * components;
        case Samples::floats:
            return 4 * components;
        case Samples::rgbe:
            return 4;
    }
    return 0;
}

std::shared_ptr<Film> filmOfPicture(PictureDecoder& decoder, std::vector<Channel> channels, const PictureMapping& mapping) {
    const PictureForm& form = decoder.form();
    const int together = rowsOfBlock(form);
    int next = 0;
    const auto read = [&] {
        RowBlock block{next, std::min(together, form.height - next), nullptr};
        const std::size_t size = form.rowBytes() * static_cast<std::size_t>(block.rows);
        block.bytes.reset(new unsigned char[size]);
        decoder.read({block.bytes.get(), size});
        next += block.rows;
        return block;
    };
    // A file may say that it has more than it has: the film comes when a quarter of it is there.
    constexpr long long fewPixels = 1 << 17;
    const bool isSmall = static_cast<long long>(form.width) * form.height < fewPixels;
    std::vector<RowBlock> early;
    while (!isSmall && next < form.height / 4) early.push_back(read());
    auto film = makePictureFilm(form.width, form.height, std::move(channels));
    const ToFilm toFilm(form, mapping, *film);
    const auto use = [&](const RowBlock& block) { toFilm.put(block); };
    Helpers<RowBlock, decltype(use)> helpers(use, isSmall ? 0 : static_cast<std::size_t>(form.height / together));
    for (RowBlock& block : early) helpers.give(std::move(block));
    while (next < form.height) helpers.give(read());
    decoder.finish();
    helpers.finish();
    return film;
}

std::shared_ptr<Film> tristimulusFilm(PictureDecoder& decoder, PictureMapping mapping) {
    auto channels = tristimulusChannels();
    if (decoder.form().channels % 2 == 0) channels.push_back(alphaChannel());
    return filmOfPicture(decoder, std::move(channels), mapping);
}

}  // namespace nemra::core
