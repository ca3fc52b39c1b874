// Colours.
#include "engine/node/color.h"

#include "engine/common/text.h"
#include "engine/node/api/opaque.h"
#include "engine/node/encoding/utf8.h"
#include "module/flat/nemra_node.h"

using namespace nemra;
using namespace nemra::node;

nemra_color* nemraTriColor_create_name(const char* space, float c0, float c1, float c2) {
    return guarded<nemra_color*>("nemraTriColor_create_name", nullptr, [&] {
        return new nemra_color{Color{readableText(viewOf(space)), {c0, c1, c2}}};
    });
}

std::int32_t nemraTriColor_space(nemra_color* color) { return color ? findColorSpace(color->color.space).value_or(-1) : -1; }

const char* nemraTriColor_spaceToString(std::int32_t space) {
    const auto spaces = colorSpaces();
    // The names are literals, so each ends with a zero.
    return space >= 0 && static_cast<std::size_t>(space) < spaces.size() ? spaces[static_cast<std::size_t>(space)].name.data()
                                                                         : "";
}

const float* nemraTriColor_coords(nemra_color* color) { return color ? color->color.coords.data() : nullptr; }
