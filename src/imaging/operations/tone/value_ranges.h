// The ranges of a large picture's values, less a share of the pixels at each end: exactly what the
// full histogram would say, for a fraction of its time. Knows nothing of what is done with them.
#pragma once

#include <array>
#include <optional>

#include "imaging/operations/tone/histogram.h"

namespace kvn::imaging {

// For red, green and blue: the least value that more than share (0..1) of the pixels are at or
// below, and the greatest that more of them are at or above. Nothing where the picture is small or
// of another type than 24-bit and 8-bit grey, or where a look at some of the pixels misleads: then
// the histogram has to be counted.
std::optional<std::array<ValueRange, 3>> findRanges(const Raster& source, double share, Task& task);

} // namespace kvn::imaging
