#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include "engine/core/image/jpeg_faults.h"
#include "engine/core/output/encode.h"
#include "engine/core/output/icc_profile.h"

namespace nemra::core {

namespace {

constexpr int kQuality = 95;

void ignoreMessage(j_common_ptr, int) {}

bool write(jpeg_compress_struct& jpeg, JpegFaults& errors, const DisplayImage& image, const std::vector<char>& profile,
           unsigned char** bytes, unsigned long* size) {
    if (setjmp(errors.jump)) return false;
    jpeg_create_compress(&jpeg);
    jpeg_mem_dest(&jpeg, bytes, size);
    jpeg.image_width = static_cast<JDIMENSION>(image.width);
    jpeg.image_height = static_cast<JDIMENSION>(image.height);
    jpeg.input_components = 3;
    jpeg.in_color_space = JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, kQuality, TRUE);
    // Coloured edges stay where they are: no chroma subsampling.
    for (int i = 0; i < jpeg.num_components; ++i) jpeg.comp_info[i].h_samp_factor = jpeg.comp_info[i].v_samp_factor = 1;
    jpeg_start_compress(&jpeg, TRUE);
    if (!profile.empty()) {
        jpeg_write_icc_profile(&jpeg, reinterpret_cast<const JOCTET*>(profile.data()), static_cast<unsigned>(profile.size()));
    }
    while (jpeg.next_scanline < jpeg.image_height) {
        const std::size_t at = 3 * static_cast<std::size_t>(image.width) * jpeg.next_scanline;
        JSAMPROW row = const_cast<JSAMPROW>(image.bytes.data() + at);
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    return true;
}

}  // namespace

std::vector<char> encodeJpeg(const DisplayImage& image) {
    if (image.width > JPEG_MAX_DIMENSION || image.height > JPEG_MAX_DIMENSION) {
        throw std::runtime_error("the format takes at most " + std::to_string(JPEG_MAX_DIMENSION) + " pixels a side");
    }
    const std::vector<char> profile = profileOf(image);
    jpeg_compress_struct jpeg{};
    JpegFaults errors{};
    jpeg.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = leaveJpeg;
    errors.manager.emit_message = ignoreMessage;
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    const bool done = write(jpeg, errors, image, profile, &bytes, &size);
    jpeg_destroy_compress(&jpeg);
    struct Free {
        void operator()(unsigned char* block) const noexcept { std::free(block); }
    };
    const std::unique_ptr<unsigned char, Free> owner(bytes);
    if (!done) throw std::runtime_error(errors.text);
    return {bytes, bytes + size};
}

}  // namespace nemra::core
