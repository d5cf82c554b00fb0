// Turning pictures by whole quarters: pixels move, none changes.
#pragma once

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// Clockwise by `quarters` (0 to 3) times 90 degrees. Every type and palette stays.
Raster quarterTurned(const Raster& source, int quarters, Task& task);

} // namespace kvn::imaging
