// A row of pixels laid over one colour, in one pass from memory to memory.
#pragma once

#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {

// v' = (v * alpha + under * (255 - alpha)) / 255, rounded to nearest. The row to read has alpha (2
// or 4 channels); the one to write is grey without alpha, 24-bit, or of 4 channels with alpha as it
// was. Only grey becomes grey.
void flattenRow(const PixelRow& row, const Rgba& under);

} // namespace kvn::imaging
