// Colours that a raster does not have, turned into RGB.
#pragma once

#include <cstdint>

#include "imaging/rgba.h"

namespace kvn::imaging {

// L* 0..100, a* and b* about -128..127, for the white of D50; the result in sRGB, clamped.
Rgba rgbFromLab(float l, float a, float b);

} // namespace kvn::imaging
