// Colours multiplied by their alpha, as bytes: the form in which neighbours may be averaged
// whatever their transparency.
#pragma once

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// For the types with alpha: c * a / 255, rounded.
Raster multiplied(const Raster& source, Task& task);
// Back to straight colours; where nothing is visible, those of `source`.
Raster straightened(Raster mixed, const Raster& source, Task& task);

} // namespace kvn::imaging
