// Moves every pixel towards the mean of its square window, or away from it.
#pragma once

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

enum class BoxAlpha {
    Mixed,   // colours count by their alpha, and alpha is filtered as well
    Kept,    // colours count by their alpha, which stays
    Ignored, // colours count alike, alpha stays
};

// v' = v + (mean - v) * share, rounded and clamped; size is odd, up to 255. Palette pictures are
// promoted. Share 0 or size 1 gives the picture itself.
Raster boxBlend(const Raster& source, int size, double share, BoxAlpha alpha, Task& task);

} // namespace kvn::imaging
