// The eight ways in which a camera may have been held, and turning a picture upright.
#pragma once

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// The picture as it is meant to be seen, for an EXIF or TIFF orientation of 1 to 8; any other
// number counts as 1. From 5 on width and height change places. Type and palette stay. An
// orientation of 1 returns the same pixels, shared.
Raster turnedUpright(const Raster& source, int orientation, Task& task);

constexpr bool swapsSides(int orientation) {
    return orientation >= 5 && orientation <= 8;
}

} // namespace kvn::imaging
