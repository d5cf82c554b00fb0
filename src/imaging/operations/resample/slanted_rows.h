// Slanting pictures whose pixels are opaque: every row moved along itself, or every column along
// itself, by a little more than the one before. Slants below 3 to 4; steeper ones are no matter of
// single rows any more.
#pragma once

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

struct Slant {
    bool vertical = false; // columns move down, otherwise rows to the right
    double first = 0;      // how far the first one moves, pixels; not below 0
    double step = 0;       // how much further each next one; none moves by less than 0
    bool smooth = true;    // bicubic (R. Keys 1981, a = -1/2), otherwise by whole pixels
    Rgba background = {};
};

// `source` has no palette and, if the background is not grey, is a colour picture. What is not
// covered is the background; the slanted edges of the picture are antialiased where it is smooth.
Raster slanted(const Raster& source, Size size, const Slant& slant, Task& task);

} // namespace kvn::imaging
