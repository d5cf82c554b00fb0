// Error diffusion with two colours that are far apart. Which of them is nearer depends on the place
// along the line through both alone, so one number a pixel does for all channels.
#pragma once

#include "imaging/palette.h"
#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// Writes 0 and 1, the entries of a palette of two different colours. Floyd and Steinberg's
// weights, the direction changing with every row; fifteen sixteenths of the error are handed on.
// Pixels of exactly one of the colours get it, and take and give no error.
void diffuseTwoColors(const Raster& source, const Palette& palette, const View& to, Task& task);

} // namespace kvn::imaging
