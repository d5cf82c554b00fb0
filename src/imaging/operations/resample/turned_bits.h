// Turning 1-bit pictures by small angles.
#pragma once

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// The picture turned counterclockwise by `degrees` (below 45 to either side) about its middle, in
// its own size; each pixel the nearest one of the source, `outside` (0 or 1) where there is none.
Raster turnedBits(const Raster& source, double degrees, int outside, Task& task);

} // namespace kvn::imaging
