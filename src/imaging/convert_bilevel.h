// Pictures of two colours.
#pragma once

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// As convertType to Bit1 does it: two colours stay as they are, anything else becomes black and
// white by error diffusion on luma.
Raster toBilevel(const Raster& source, Task& task);

} // namespace kvn::imaging
