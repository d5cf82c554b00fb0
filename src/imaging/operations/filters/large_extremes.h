// The least or greatest values of large square windows, at a cost that does not grow with them.
#pragma once

#include "imaging/operations/filters/rank_kernels.h"
#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// `size` is odd, edge pixels repeat outwards. The rows are cut into blocks of `size`; a window is
// the end of one block and the beginning of the next, whose extremes are at hand: three comparisons
// a value, whatever the size (M. van Herk 1992, J. Gil and M. Werman 1993). Palette and 1-bit
// pictures are promoted.
Raster extremeOfLargeWindows(Extreme which, const Raster& picture, int size, bool keepAlpha,
                             Task& task);

} // namespace kvn::imaging
