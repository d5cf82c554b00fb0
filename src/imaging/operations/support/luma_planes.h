// The luma of a block of pixels.
#pragma once

#include "imaging/operations/support/color_planes.h"

namespace kvn::imaging {

// The one luma of imaging/rgba.h for every pixel of the block. `out` may be one of the planes.
void lumaOf(const ColorPlanes& planes, std::uint8_t* out);

} // namespace kvn::imaging
