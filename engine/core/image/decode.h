/// Pictures out of the bytes of their files.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>

#include "engine/core/image/picture_film.h"
#include "engine/core/output/color_space.h"

namespace nemra::core {

/// How a component of a pixel stands in the rows of a decoder.
enum class Samples {
    codes8,   ///< a byte, of which 255 stands for 1
    codes16,  ///< 16 bits of this machine, of which 65535 stands for 1
    floats,   ///< 32 bits
    rgbe      ///< three mantissas and their exponent, a byte each: (mantissa + 0.5) * 2^(exponent - 136), 0 for the exponent 0
};

/// What a picture file says of its pixels.
struct PictureForm {
    int width = 0;
    int height = 0;
    int channels = 0;  ///< 3 for rgbe
    Samples samples = Samples::floats;
    bool encoded = false;              ///< code values of a display in [0, 1], not proportional to light
    std::optional<ColorSpace> colors;  ///< what the file says of R, G, B
    double luminanceOfWhite = 1.0;     ///< cd/m2 of R = G = B = 1
    double exposure = 1.0;             ///< of rgbe: factor that was applied to the pixels

    std::size_t pixelBytes() const noexcept;
    std::size_t rowBytes() const noexcept { return pixelBytes() * static_cast<std::size_t>(width); }
};

/// Gives the rows of a picture as they are decoded, from the top, so that all of them need never be there at once.
class PictureDecoder {
public:
    virtual ~PictureDecoder() = default;

    const PictureForm& form() const noexcept { return form_; }
    /// The next rows, as many as fill the bytes: channels innermost, then pixels from the left. All throw a PictureFault for what
    /// is damaged or cut short, or std::bad_alloc.
    virtual void read(std::span<unsigned char> rows) = 0;
    /// Looks at what follows the last row.
    virtual void finish() {}

protected:
    PictureForm form_;
};

bool isPng(std::span<const char> bytes) noexcept;
bool isJpeg(std::span<const char> bytes) noexcept;
bool isHdr(std::span<const char> bytes) noexcept;
bool isExr(std::span<const char> bytes) noexcept;

// The bytes must outlive the decoder. All throw a PictureFault for a damaged head or a picture that is larger than
// checkPictureSize bears, or std::bad_alloc.

/// 1 to 4 channels: grey or colour, with an alpha or without; palettes and 1 to 16 bits become code values.
std::unique_ptr<PictureDecoder> decodePng(std::span<const char> bytes);
/// 1 or 3 channels, code values.
std::unique_ptr<PictureDecoder> decodeJpeg(std::span<const char> bytes);
/// Radiance picture: luminanceOfWhite is 179 cd/m2. The primaries of the format where the file names no others. Only the usual
/// orientation (-Y +X) and RGBE, not XYZE.
std::unique_ptr<PictureDecoder> decodeHdr(std::span<const char> bytes);

}  // namespace nemra::core
