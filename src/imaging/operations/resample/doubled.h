// Pictures at twice their size in both directions, whose pixels fall into two phases with the same
// few weights each: whole rows in 16-bit numbers.
#pragma once

#include "imaging/operations/resample/reconstruction.h"
#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// Whether the kernel reaches no further than doubledPicture can see.
bool canDouble(const Reconstruction& reconstruction);

// By the kernel, within 1 of real numbers. Not for palette pictures; alpha is filtered like a
// colour, which is right for opaque pictures only. Edge pixels repeat.
Raster doubledPicture(const Raster& source, const Reconstruction& reconstruction, Task& task);

} // namespace kvn::imaging
