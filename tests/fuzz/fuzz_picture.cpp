// Target: the readers of picture files, told from the first bytes: PNG, JPEG, OpenEXR, Radiance HDR.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "engine/common/log.h"
#include "engine/core/image/image_node.h"
#include "engine/core/image/picture_film.h"

using namespace nemra;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const log::Capture silence([](const log::Message&) {});
    try {
        const auto raw = core::rawFromPictureFile({reinterpret_cast<const char*>(data), size}, "fuzz", "auto", 1.0, false);
        for (const double value : raw->film()->high) {
            if (!std::isfinite(value)) std::abort();
        }
    } catch (const core::PictureFault&) {
        // refused
    }
    return 0;
}
