// What a damaged file does not tell: black, never old memory.
#pragma once

#include "imaging/raster.h"

namespace kvn::imaging {

// Makes the pixels in `rect` opaque black, or the nearest colour of `palette` to it. For packed
// bits `rect.x` is a multiple of 8 and the right end is that or the picture's.
void blacken(const View& view, const Palette& palette, const Rect& rect);

} // namespace kvn::imaging
