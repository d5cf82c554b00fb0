// Tiles of pixels turned by a right angle, as fast as memory takes them.
#pragma once

#include "imaging/raster.h"

namespace kvn::imaging {

// The columns x0 to x1 of `in` become rows of `out`: clockwise, column x from the bottom up is row
// x; else, from the top down, row out.height - 1 - x. Not for 1-bit pictures. Up to 16 bytes behind
// the rows of `in` are read, as a raster allows.
void turnColumns(const ConstView& in, const View& out, bool clockwise, int x0, int x1);

} // namespace kvn::imaging
