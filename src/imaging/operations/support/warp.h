// Inverse mapping: the one driver behind rotations and distortions. For every pixel of the result
// a map tells where in the source it comes from; the driver samples there and looks after types,
// edges, alpha, threads and pictures that shrink.
#pragma once

#include <functional>

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// The places of the pixels x0 .. x0 + count - 1 of row y. Pixel centres lie at whole numbers. Is
// called for one column and one row beyond the result too. Numbers may lie anywhere; what is no
// number counts as far outside.
using WarpMap = std::function<void(int y, int x0, int count, float* sourceX, float* sourceY)>;

struct WarpSettings {
    Size size;
    // Beyond its edges the picture goes on as its own mirror image for ever, or, where `bordered`,
    // there is the background, and the picture's edge is antialiased.
    bool bordered = false;
    Rgba background = {};
    // Bicubic sampling (R. Keys 1981, a = -1/2), and, where the map shrinks the picture, the mean
    // of several samples over the area of a pixel. Otherwise the nearest pixel.
    bool smooth = true;
    // Neighbours in the result are neighbours in the source. False switches the area means off.
    bool continuous = true;
    // Where anything moves; the rest of the picture is copied, or, where `bordered`, is background.
    // Empty: everywhere. Copies are for results of the source's size only.
    Rect active = {};
};

// 1-bit and palette pictures are promoted first, grey ones where a coloured background demands
// it. Colours are weighted by alpha.
Raster warped(const Raster& source, const WarpSettings& settings, Task& task, const WarpMap& map);

} // namespace kvn::imaging
