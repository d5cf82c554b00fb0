// How often each value occurs in a picture.
#pragma once

#include <array>
#include <cstdint>

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

using Counts = std::array<std::int64_t, 256>;

// Red, green, blue and luma of the visible pixels (alpha above 0); of all, if none is visible.
// Palette pictures count the colours of their pixels.
struct Histogram {
    Counts red{}, green{}, blue{}, luma{};
};

// `withLuma` and `withChannels` switch the parts on; the others stay 0.
Histogram histogramOf(const Raster& source, bool withChannels, bool withLuma, Task& task);

struct ValueRange {
    int low, high; // both belong to it
};
std::int64_t sumWithin(const Counts& counts, ValueRange within);
// The range of the values within the limits, less a share (0..1) of the pixels at each end. The low
// end is above the high one if there are none.
ValueRange rangeOf(const Counts& counts, ValueRange within, double share);

} // namespace kvn::imaging
