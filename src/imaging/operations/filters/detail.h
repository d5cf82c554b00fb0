// Filters that compare a picture with its Gaussian blur. Palette and 1-bit pictures become 24-bit,
// 32-bit with alpha; the other types stay. Alpha stays, and colours count by it in the blur. Edge
// pixels are repeated outwards.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.UnsharpMask(level 0..255, strength 0..100, radius 0..1000 px): v' = v + strength * (v -
// b) where |v - b| is at least the level, b being the blur with the radius as its standard
// deviation. Strength 0 and radius 0 change nothing.
extern const Operation unsharpMaskOperation;

// Effects.HighPass(radius 0..1000 px): v' = 128 + v - b; radii below 0.1 count as 0.1. Flat areas
// become mid grey, and detail finer than the radius stays.
extern const Operation highPassOperation;

} // namespace kvn::imaging
