// Effects.Noise: random grain.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.Noise(type 0..3, variance 0..65025, monochromatic, ignore alpha): v' = v + n, rounded and
// clamped. n is random with the variance in levels squared (100: a standard deviation of 10) and
// mean 0, so that the picture keeps its brightness:
//   0 Gaussian              bell-shaped
//   1 negative exponential  many dark grains, few bright ones far out
//   2 Rayleigh              the length of a vector with two Gaussian parts; slightly lopsided
//   3 uniform               equally likely between two limits
// Monochromatic: the same n for all channels of a pixel. Alpha gets noise too, unless it is
// ignored. The grain depends on place and channel and a fixed seed only, so the same call gives the
// same picture. Variance 0 changes nothing.
//
// Palette and 1-bit pictures become 24-bit, 32-bit with alpha; the other types stay.
extern const Operation noiseOperation;

} // namespace kvn::imaging
