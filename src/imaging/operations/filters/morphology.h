// Effects.Morphology: growing and shrinking of what is bright.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.Morphology(kernel, operation): the kernel's entries other than 0 are the neighbours that
// count, whatever their value; its middle (right and below of the middle for even sides) lies on
// the pixel. Sides of 1 to 99; a kernel of zeros changes nothing. Operations, clamped to 0..4:
//   0 dilation   the greatest of the neighbours, the kernel turned upside down
//   1 erosion    the least of the neighbours
//   2 open       erosion, then dilation: bright specks go
//   3 close      dilation, then erosion: dark specks go
//   4 top hat    the picture minus its opening: what opening removes, on black
// Channel by channel. Palette and 1-bit pictures become 24-bit, 32-bit with alpha; the other types
// stay. Alpha stays, and clear pixels count in the colour of visible ones beside them. Edge pixels
// are repeated outwards. Throws RuntimeError(invalidCall) for a larger kernel. (J. Serra, Image
// analysis and mathematical morphology, 1982.)
extern const Operation morphologyOperation;

} // namespace kvn::imaging
