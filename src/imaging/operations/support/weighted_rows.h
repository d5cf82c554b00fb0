// Rows of pixels whose colours are weighted by alpha, on the way into a filter and out of it.
// Samples are floats from 0 to 255; pixels have 2 or 4 of them, alpha last.
#pragma once

#include <cstdint>

namespace kvn::imaging {

// Colours times alpha / 255.
void premultiplyRow(const std::uint8_t* in, int pixels, int channels, float* out);

// And back, rounded to nearest and clamped. Where alpha comes to less than half a level the colour
// is that of `instead`, or 0 if that is null.
void unmultiplyRow(const float* in, int pixels, int channels, std::uint8_t* out,
                   const std::uint8_t* instead = nullptr);

} // namespace kvn::imaging
