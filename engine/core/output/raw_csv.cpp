#include "engine/core/output/raw_csv.h"

#include <charconv>
#include <cmath>
#include <string_view>

namespace nemra::core {

namespace {

class Row {
public:
    explicit Row(Buffer& out) : out_(out) {}

    void text(std::string_view words) {
        begin();
        if (words.find_first_of("\"\r\n,") == std::string_view::npos) {
            out_ += words;
            return;
        }
        out_ += '"';
        for (const char c : words) {
            if (c == '"') out_ += '"';
            out_ += c;
        }
        out_ += '"';
    }
    template <class Number>
    void number(Number value) {
        begin();
        constexpr std::size_t room = 32;
        char* const first = out_.room(room);
        out_.grow(static_cast<std::size_t>(std::to_chars(first, first + room, value).ptr - first));
    }
    void end() {
        out_ += '\n';
        first_ = true;
    }

private:
    void begin() {
        if (!first_) out_ += ',';
        first_ = false;
    }

    Buffer& out_;
    bool first_ = true;
};

}  // namespace

Buffer writeRawCsv(const Raw& raw) {
    const auto film = raw.film();
    const auto view = raw.view();
    const bool withSampling = raw.spp() > 1.0 && view->metaChannels > 0;
    Buffer out;
    Row row(out);
    row.text("x");
    row.text("y");
    for (const Channel& channel : film->channels) row.text(channel.name + " [" + channel.unit + "]");
    if (withSampling) {
        const int reference = referenceChannel(*film);
        const Channel& leading = film->channels[reference >= 0 ? static_cast<std::size_t>(reference) : 0];
        row.text("samples");
        row.text("standard error of " + (reference >= 0 ? leading.name : "mean") + " [" + leading.unit + "]");
    }
    row.end();
    const auto& variances = view->meta[static_cast<std::size_t>(MetaChannel::variance)];
    const auto channels = static_cast<std::size_t>(view->channels);
    for (int y = 0; y < view->height; ++y) {
        for (int x = 0; x < view->width; ++x) {
            const std::size_t pixel = film->pixel(x, y);
            const double* const values = view->values.data() + pixel * channels;
            row.number(x);
            row.number(y);
            for (std::size_t c = 0; c < channels; ++c) row.number(static_cast<float>(values[c]));
            if (withSampling) {
                const std::uint32_t samples = film->samples[pixel];
                row.number(samples);
                row.number(samples > 0 ? static_cast<float>(std::sqrt(variances[pixel] / samples)) : 0.0F);
            }
            row.end();
        }
    }
    return out;
}

}  // namespace nemra::core
