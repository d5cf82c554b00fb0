// Effects.Halftone: the picture as printed dots.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.Halftone(max dot size 0..64 px, smooth dots): each colour channel becomes dots of its ink
// on white, in a square screen whose cells are twice the size wide. Red gives the cyan ink at 15
// degrees, green magenta at 75, blue yellow at 45, as far apart as three can be; grey pictures have
// one black screen at 45. None lies on the grid of the pixels, so dots grow evenly. A dot
// covers the share 1 - v / 255 of its cell, growing from the middle as the level lines of cos x +
// cos y do: round, square at the half, round gaps at the end; brightness is kept. Each pixel
// obeys its own v, so detail finer than the screen stays. Dots are hard, or have an edge one pixel
// soft. Size 0 changes nothing.
//
// Palette and 1-bit pictures become 24-bit, 32-bit with alpha; the other types stay. Alpha stays.
// (R. Ulichney, Digital halftoning, 1987.)
extern const Operation halftoneOperation;

} // namespace kvn::imaging
