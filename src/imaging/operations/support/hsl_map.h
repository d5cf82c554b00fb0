// Changing hue, saturation and luminance of a picture: a factor and an offset each, in the one HSL
// model of imaging/rgba.h, computed without rounding in between.
#pragma once

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// value' = value * factor + offset, in the scale 0..255; hue wraps, the others are clamped.
struct HslChange {
    float hueFactor = 1, hueOffset = 0;
    float saturationFactor = 1, saturationOffset = 0;
    float luminanceFactor = 1, luminanceOffset = 0;
    // Grey has no hue of its own and stays grey, unless a hue is given to it.
    bool colorsGray = false;
};

// Alpha stays. Palette pictures get their palette mapped; grey ones become colour ones where grey
// is coloured.
Raster mapHsl(const Raster& source, const HslChange& change, Task& task);

} // namespace kvn::imaging
