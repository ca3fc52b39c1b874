#include "engine/core/output/picture.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "engine/common/log.h"
#include "engine/core/output/filters.h"
#include "engine/core/output/parallel_rows.h"
#include "engine/core/output/write_result.h"

namespace nemra::core {

namespace {

using DisplayClasses = std::map<std::string, MakeDisplay, std::less<>>;

DisplayClasses& displayClasses() {
    static DisplayClasses classes;
    return classes;
}

void runFilter(const node::Node& filter, Picture& picture) {
    if (const Filter run = filterClasses().find(filter.type())) {
        run(filter, picture);
    } else {
        log::warning(filter.label(), "this filter isn't available yet and is left out");
    }
}

/// A code from 0 to 1. Returns what is behind it.
unsigned char* putCode(unsigned char* out, double code, int bits) noexcept {
    if (bits == 16) {
        const long wide = std::lround(code * 65535.0);
        *out++ = static_cast<unsigned char>(wide >> 8);
        *out++ = static_cast<unsigned char>(wide & 0xff);
    } else {
        *out++ = static_cast<unsigned char>(std::lround(code * 255.0));
    }
    return out;
}

void runDefault(std::string_view type, Picture& picture) {
    if (const node::NodeClass* const known = node::findClass("filter", type))
        runFilter(node::Node(*known, std::string(type)), picture);
}

}  // namespace

ClassTable<Filter>& filterClasses() {
    static ClassTable<Filter> table("filter");
    return table;
}

bool addDisplayClass(std::string_view type, MakeDisplay make) { return displayClasses().emplace(type, make).second; }

void runFilters(const node::Node& output, Picture& picture) {
    for (const auto& filter : output.list()) {
        if (filter) runFilter(*filter, picture);
    }
}

std::string colorSpaceOf(const node::Node* output) {
    if (!output || !output->findParameter("color_space").spec) return "srgb";
    return output->choice("color_space");
}

DisplayImage encodeDisplay(const XyzImage& image, const std::string& name, double gamma, int bits) {
    DisplayImage display{image.width, image.height, name, gamma, {}, bits};
    const ColorSpace& space = colorSpace(name);
    const auto bytesPerCode = static_cast<std::size_t>(bits / 8);
    const std::size_t rowCodes = 3 * static_cast<std::size_t>(image.width);
    display.bytes.resize(image.values.size() * bytesPerCode);
    parallelRows(image.height, [&](int y) {
        const std::size_t first = static_cast<std::size_t>(y) * rowCodes;
        unsigned char* out = display.bytes.data() + first * bytesPerCode;
        for (std::size_t i = first; i < first + rowCodes; i += 3) {
            const float* const xyz = image.values.data() + i;
            for (const double linear : space.linear(xyz[0], xyz[1], xyz[2])) {
                out =
                    putCode(out, gamma > 0.0 ? std::pow(std::clamp(linear, 0.0, 1.0), 1.0 / gamma) : space.encode(linear), bits);
            }
        }
    });
    return display;
}

void DisplayImage::append(double code) {
    bytes.resize(bytes.size() + static_cast<std::size_t>(bits / 8));
    putCode(bytes.data() + bytes.size() - bits / 8, code, bits);
}

DisplayImage makeDisplayImage(const Raw& raw, bool fast, int bits) {
    const auto output = raw.output();
    if (output) {
        const auto own = displayClasses().find(output->type());
        if (own != displayClasses().end()) return own->second(raw, *output, fast, bits);
        if (!outputClasses().find(output->type())) {
            log::warning(output->label(), "outputs of this class aren't written yet; an rgbimage takes its place");
        }
    }
    const auto film = raw.film();
    const auto view = raw.view();
    Picture picture{*film, *view, toXyz(*film, *view, "cie1931_2deg"), fast};
    picture.raw = &raw;
    if (!output || output->list().empty()) runDefault("averageautogain", picture);
    if (output) runFilters(*output, picture);
    const double gamma = output && output->findParameter("gamma").spec ? output->real("gamma") : 0.0;
    return encodeDisplay(picture.image, colorSpaceOf(output.get()), gamma, bits);
}

}  // namespace nemra::core
