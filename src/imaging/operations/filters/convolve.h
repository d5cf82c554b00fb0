// Filters by a small table of coefficients. Palette and 1-bit pictures become 24-bit, 32-bit with
// alpha; the other types stay. Alpha stays, and clear pixels count in the colour of visible ones
// beside them. Edge pixels are repeated outwards.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.ApplyFilter(coefficients, divisor, bias): v' = (sum of coefficient * value) / divisor +
// bias, the table lying on the picture as it is read: first row above, first column left. A table
// without a bias whose coefficients add up to 0 measures differences only, which are laid on the
// picture as a relief: with m the quotient and W half the sum of the coefficients' sizes,
// v' = v + sign(m) * n / (1 + n / 70), n = 8 times |m| less what a difference of 3 levels
// gives (3 W / divisor), at least 0. So large factors paint thick strokes instead of noise. 3
// columns and 1 to 99 rows; the middle row, the lower one of two, lies on the pixel. Divisor 0
// counts as 1. Throws RuntimeError(invalidCall) for a table of another size.
extern const Operation applyFilterOperation;

// Effects.ApplyMatrix(coefficients 3 x 3, divisor, bias, difference, opposed green): m = (sum of
// coefficient * value) / divisor. Plainly v' = m + bias; a table whose coefficients add up to 0
// draws luminous lines on the dark ground of the bias: v' = bias + n / (1 + n / 340), n = 24 |m|.
// Difference: v' = v - m - bias, so the matrix works against the picture. Opposed green: green
// takes m + bias with the other sign, 255 - m - bias plainly, v + m + bias for the difference;
// where that is negative this tints towards purple. Grey pictures then become colour ones.
extern const Operation applyMatrixOperation;

// Effects.EdgeDetection(amount 0..100 %): the length of the Sobel gradient of each channel times
// the amount (a step by h gives 4 h * amount), clamped to 255; edges are bright on black. 0 changes
// nothing. (I. Sobel and G. Feldman, 1968.)
extern const Operation edgeDetectionOperation;

} // namespace kvn::imaging
