// The blur of a straight motion: the mean over a line through every pixel, at a cost that grows
// with the square root of its length only.
#pragma once

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// The mean over `length` pixels along the direction (across, down), a unit vector; half of them on
// either side. Parts of pixels count as such, and between rows or columns the line is read
// linearly. The edge pixels are repeated outwards. Colours count by their alpha; where nothing is
// visible they stay. Not for palette types. Below 1.01 pixels along the longer axis nothing moves.
Raster streaked(const Raster& source, double length, double across, double down, Task& task);

} // namespace kvn::imaging
