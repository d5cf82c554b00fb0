// Means over the square window around a pixel, channel by channel. Palette and 1-bit pictures
// become 24-bit, 32-bit with alpha; the other types stay. Edge pixels are repeated outwards. Even
// sizes count as the next odd one; 1 changes nothing. Colours count by their alpha, and alpha gets
// its arithmetic mean; where alpha is ignored, all colours count alike and it stays. n values v.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.ArithmeticMean(filter size 1..255, ignore alpha): sum v / n.
extern const Operation arithmeticMeanOperation;

// Effects.GeometricMean(filter size 1..101, ignore alpha): (product v)^(1/n); one 0 makes it 0.
// Keeps more detail than the arithmetic mean.
extern const Operation geometricMeanOperation;

// Effects.HarmonicMean(filter size 1..101, ignore alpha): n / sum (1/v); one 0 makes it 0. Removes
// bright specks.
extern const Operation harmonicMeanOperation;

// Effects.YpMean(filter size 1..101, remove positive outliers, ignore alpha): the power mean
// (sum v^p / n)^(1/p) with p = -2, which removes bright specks, or else p = 2, which removes dark
// ones. (I. Pitas and A. Venetsanopoulos, Nonlinear digital filters, 1990.)
extern const Operation ypMeanOperation;

} // namespace kvn::imaging
