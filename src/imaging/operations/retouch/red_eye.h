// Effects.RedEyeReduction: pupils that a flash has made red become dark again.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.RedEyeReduction(left, top, right, bottom, saturation 0..100, range 0..100): looks for
// pupils in the rectangle (right and bottom excluded): patches of pure red that are about as wide
// as high, filled, and not lying in the middle of skin. Lips are too long, skin is too pale, and
// red cloth is no disc.
//
// How red a pixel is tells (r - max(g, b)) / r: about 0.2 for skin, 0.5 for lips, above 0.6 for
// pupils. The saturation level moves the least value for a pupil from 0.25 to 0.75; the colour
// range tells how far its hue may lie from red, up to 50 degrees. In a pupil red is brought down to
// the mean of green and blue, fully where it is that red and in part at the soft rim, and what is
// still brighter than a pupil is darkened; the glint stays.
//
// A rectangle beside the picture, or one with no pupil, changes nothing. Alpha stays. Palette
// pictures become 24-bit or 32-bit if anything changes; grey ones have no red.
extern const Operation redEyeOperation;

} // namespace kvn::imaging
