// Rows of pixels whose channels change places, in one pass from memory to memory.
#pragma once

#include <array>

#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {

// Red, green, blue and alpha of the row take the channels named, 0..3 for red to alpha. Grey has
// r = g = b, and what has no alpha the one given; grey to be written takes red's place.
void swizzleRow(const PixelRow& row, const std::array<int, 4>& from, std::uint8_t alpha = 255);

} // namespace kvn::imaging
