/// From the rows of a picture to the columns of a film.
#pragma once

#include <memory>
#include <vector>

#include "engine/core/image/decode.h"

namespace nemra::core {

/// What becomes of the components of a pixel.
struct PictureMapping {
    /// The space of grey or coloured pixels, which become X, Y, Z; a second or fourth component is an opacity and stays as it is.
    /// Null: components stand as they are in their channels.
    const ColorSpace* colors = nullptr;
    bool encoded = false;              ///< components are code values of that space's curve
    double scale = 1.0;                ///< of X, Y, Z, or of all channels
    std::vector<std::size_t> order{};  ///< without a space: the component of each channel; empty: in their order
    bool flipped = false;              ///< the first row is the lowest
};

/// The film of a picture, with those channels. Other threads turn rows into columns while the decoder goes on. Throws what the
/// decoder throws; where the file breaks off, no more memory was taken than a few times what came before.
std::shared_ptr<Film> filmOfPicture(PictureDecoder& decoder, std::vector<Channel> channels, const PictureMapping& mapping);

/// X, Y, Z of a picture in that colour space, times `scale`; an opacity becomes A.
std::shared_ptr<Film> tristimulusFilm(PictureDecoder& decoder, PictureMapping mapping);

}  // namespace nemra::core
