// Geometry.AutoDeskew: a scanned page straightened.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Geometry.AutoDeskew(fine 1..8, coarse 1..8, step 1..10, left, top, width, height): finds by how
// much, up to 15 degrees to either side, the lines of text in the rectangle are turned (see
// skew_angle.h), and turns the whole picture back. The first two numbers are the rows taken
// together in the last and in the first search, fewer on small pictures; the third is the step of
// the first search in tenths of a degree. A rectangle without a pixel of the picture means all of
// it.
//
// The size stays; what comes in from outside is paper, the colour that most pixels have. 1-bit
// pictures stay 1-bit, each pixel the nearest one; other pictures are looked at in black and white
// and sampled bicubically, palettes becoming 24-bit or 32-bit. Turned by less than a fortieth of a
// degree, or with no lines to be found, the picture stays as it is.
extern const Operation autoDeskewOperation;

} // namespace kvn::imaging
