/// Parts of a film: copied, and added to the whole.
#pragma once

#include "engine/core/film/film.h"

namespace nemra::core {

/// Adds the sums of a film that shows all or a part of what `whole` shows, and has the same channels. Exact in any order.
void addCutOut(Film& whole, const Film& part);

/// Copies the pixels from (x0, y0) to before (x1, y1), counted in the image, from one film to another of the same size.
void copyPixels(const Film& from, Film& to, int x0, int y0, int x1, int y1);

}  // namespace nemra::core
