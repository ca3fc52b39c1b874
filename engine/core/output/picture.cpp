#include "engine/core/output/picture.h"

#include <algorithm>
#include <cmath>

#include "engine/common/log.h"
#include "engine/core/output/filters.h"
#include "engine/core/output/write_result.h"

namespace nemra::core {

namespace {

void runFilter(const node::Node& filter, Picture& picture) {
    if (const Filter run = filterClasses().find(filter.type())) {
        run(filter, picture);
    } else {
        log::warning(filter.label(), "this filter isn't available yet and is left out");
    }
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

std::string colorSpaceOf(const node::Node* output) {
    if (!output || !output->findParameter("color_space").spec) return "srgb";
    return output->choice("color_space");
}

DisplayImage makeDisplayImage(const Raw& raw, bool fast, int bits) {
    const auto film = raw.film();
    const auto view = raw.view();
    const auto output = raw.output();
    if (output && !outputClasses().find(output->type())) {
        log::warning(output->label(), "outputs of this class aren't written yet; an rgbimage takes its place");
    }
    Picture picture{*film, *view, toXyz(*film, *view, "cie1931_2deg"), fast};
    const auto filters = output ? output->list() : std::vector<std::shared_ptr<const node::Node>>{};
    if (filters.empty()) runDefault("averageautogain", picture);
    for (const auto& filter : filters) {
        if (filter) runFilter(*filter, picture);
    }

    DisplayImage display{picture.image.width, picture.image.height, colorSpaceOf(output.get()), 0.0, {}, bits};
    if (output && output->findParameter("gamma").spec) display.gamma = output->real("gamma");
    const ColorSpace& space = colorSpace(display.colorSpace);
    display.bytes.resize(picture.image.values.size() * static_cast<std::size_t>(bits / 8));
    for (std::size_t i = 0; i + 2 < picture.image.values.size(); i += 3) {
        const float* const xyz = picture.image.values.data() + i;
        const auto linear = space.linear(xyz[0], xyz[1], xyz[2]);
        for (std::size_t c = 0; c < 3; ++c) {
            const double code =
                display.gamma > 0.0 ? std::pow(std::clamp(linear[c], 0.0, 1.0), 1.0 / display.gamma) : space.encode(linear[c]);
            if (bits == 16) {
                const long wide = std::lround(code * 65535.0);
                display.bytes[2 * (i + c)] = static_cast<unsigned char>(wide >> 8);
                display.bytes[2 * (i + c) + 1] = static_cast<unsigned char>(wide & 0xff);
            } else {
                display.bytes[i + c] = static_cast<unsigned char>(std::lround(code * 255.0));
            }
        }
    }
    return display;
}

}  // namespace nemra::core
