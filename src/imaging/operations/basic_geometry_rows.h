// Row kernels of the operations that move pixels.
#pragma once

#include <cstdint>

namespace kvn::imaging {

// `width` pixels of `step` bytes (1 to 4) in reversed order. The rows may not overlap.
void reversePixels(const std::uint8_t* from, std::uint8_t* to, int width, int step);

} // namespace kvn::imaging
