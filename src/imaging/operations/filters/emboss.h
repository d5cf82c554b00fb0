// Effects.Emboss: the picture as a relief under a lamp.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.Emboss(angle in degrees, elevation 0..90 degrees, offset 0..100 px, use image as
// texture): the brightness (Rec. 601 luma) is the height of the ground. Its slope is taken between
// pixels `offset` apart (rounded up to an even distance); a difference of 96 makes a slope of 45
// degrees. The lamp stands at the angle, 0 to the right and 90 above, at the elevation over the
// picture. Each pixel becomes 255 times the cosine between the ground's normal and the lamp; as a
// texture, the picture is multiplied by it, so that flat ground keeps its colour. Offset 0 changes
// nothing.
//
// Palette and 1-bit pictures become 24-bit, 32-bit with alpha; the other types stay. Alpha stays,
// and clear pixels lie as high as visible ones beside them. Edge pixels are repeated outwards. (B.
// T. Phong's diffuse term; J. Schlag, Fast embossing effects on raster image data, Graphics Gems
// IV, 1994.)
extern const Operation embossOperation;

} // namespace kvn::imaging
