// Rows of pixels that become others by their luma, in one pass from memory to memory, for mapRows
// with the same type on both sides. L is the one luma of imaging/rgba.h; alpha stays unless said
// otherwise.
#pragma once

#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {

// v' = L
void desaturateRow(const PixelRow& row);

// v' = L + level * (v - L), rounded to nearest and clamped; `level` in 1/2048, 0..20480.
void saturateRow(const PixelRow& row, int level);

// v' = 255 where low <= L <= high, else 0; with `cutsAlpha` alpha by the same rule.
struct LumaRange {
    int low, high;
    bool cutsAlpha;
};
void thresholdRow(const PixelRow& row, const LumaRange& range);

} // namespace kvn::imaging
