// Copying stored pixels from one raster into another of the same type, as they are.
#pragma once

#include "imaging/raster.h"

namespace kvn::imaging {

// Puts `source` into `target` with its top left corner at `at`, bit for bit; what lies outside is
// left out. Palettes are not looked at. Both must have one type (invalidCall otherwise).
void copyPixels(Raster& target, const Raster& source, Point at);

} // namespace kvn::imaging
