// The least or greatest values of square windows, at a cost that hardly grows with them.
#pragma once

#include "imaging/operations/filters/rank_kernels.h"
#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// `size` is odd, 3 to 255; edge pixels repeat outwards. Palette and 1-bit pictures are promoted.
Raster extremeOfWindows(Extreme which, const Raster& picture, int size, bool keepAlpha, Task& task);

} // namespace kvn::imaging
