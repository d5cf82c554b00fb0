// The colours of clear pixels. Nobody sees them, and files keep black, white or the rest of some
// other picture there. A filter that reads them draws a fringe or an edge that isn't there round
// everything that was cut out, so filters that do not weigh by alpha read these pictures instead.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// The picture with every clear pixel in the colour of visible ones near to it: the mean of those
// in the least block of 2, 4, 8 ... pixels, counted from the top left, that holds any. Alpha stays.
// Palette pictures are promoted. A picture with no clear pixel, or with no other, is returned.
Raster withoutHiddenColors(const Raster& source, Task& task);

// Runs an operation over that picture. One that changes nothing returns the source.
template <Raster (*Run)(const Raster&, const Arguments&, Task&)>
Raster overVisibleColors(const Raster& source, const Arguments& arguments, Task& task) {
    const Raster seen = withoutHiddenColors(source, task);
    Raster result = Run(seen, arguments, task);
    return result.sharesPixelsWith(seen) ? source : result;
}

} // namespace kvn::imaging
