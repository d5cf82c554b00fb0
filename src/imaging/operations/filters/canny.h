// Effects.CannyEdge: thin, connected outlines.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.CannyEdge(intensity 0..100 %, low 0..100 %, high 0..100 %): J. Canny, A computational
// approach to edge detection, 1986. The brightness (Rec. 601 luma) is blurred with a standard
// deviation of one pixel; where the Sobel gradient is greater than at both neighbours across the
// edge, it is an edge if it is above `high`, or above `low` and connected to such a place. Both
// are percents of a gradient of 255; the lesser one is taken as low. Edges get 255 * intensity,
// the rest becomes black.
//
// Palette and 1-bit pictures become 24-bit, 32-bit with alpha; the other types stay. Alpha stays,
// and clear pixels count in the colour of visible ones beside them. Edge pixels are repeated
// outwards.
extern const Operation cannyEdgeOperation;

} // namespace kvn::imaging
