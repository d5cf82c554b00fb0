// Any type to any other.
#pragma once

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// The picture in the form `type`.
//
// Towards more colours nothing changes but the form. Towards fewer:
//   grey            luma (Rec. 601); palette types use the palette's colours
//   palette         if the picture has at most 256 colours (with alpha: colours with alpha) they
//                   are kept exactly, in order of first appearance; otherwise the best 256 are
//                   chosen and the picture is dithered. Palettes are taken over as they are;
//                   grey without alpha gets the grey ramp, so that its bytes are the indices
//   1-bit           a picture of two colours keeps them as its palette, darker first; otherwise
//                   black and white by dithered luma
// Alpha: dropped without blending when the target has none (flattening is an operation of its
// own), 255 when the source has none.
// A picture that has the type already is returned as it is, sharing its pixels.
Raster convertType(const Raster& source, ImageType type, Task& task);

} // namespace kvn::imaging
