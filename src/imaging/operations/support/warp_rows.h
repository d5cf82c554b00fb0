// The samplers of the inverse mapping driver, a row at a time.
#pragma once

#include <cstdint>

#include "imaging/raster.h"

namespace kvn::imaging {

struct WarpRow {
    ConstView source;
    // Places of the row's pixels and of one more, and the same for the row below.
    const float *x, *y, *belowX, *belowY;
    int count;
    bool bordered;       // beyond the picture lies the background; otherwise its last pixel repeats
    bool continuous;     // steps from pixel to pixel tell how the picture shrinks
    float background[4]; // colours times alpha/255 where the sampler is a weighted one
    std::uint8_t* out;
    std::uint8_t* kinds; // room for a byte a pixel
};

using WarpSampler = void (*)(const WarpRow& row);

// For pictures of 1 to 4 channels; `weighted` (2 and 4 channels) multiplies colours by alpha.
WarpSampler bicubicSampler(int channels, bool weighted);
void sampleNearest(const WarpRow& row);

} // namespace kvn::imaging
