// The blur of a motion about the middle of the picture: turning, or coming closer.
#pragma once

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// The mean over the way of every pixel while the picture turns by `angle` (radians), half of it
// back and half on; or grows by the factor 1 + `growth`, as much below 1 as above. The edge pixels
// are repeated outwards; alpha is a channel like the others. Not for palette types.
Raster spun(Raster source, double angle, Task& task);
Raster zoomed(Raster source, double growth, Task& task);

} // namespace kvn::imaging
