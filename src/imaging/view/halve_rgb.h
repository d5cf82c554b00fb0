// One row of three-channel pixels at half the size.
#pragma once

#include <cstdint>

namespace kvn::imaging {

// out[i] is the mean of pixels 2i and 2i + 1 of both rows, `bias` (1 or 2) added before the
// division by four. Reads 2 * count pixels of each row.
void halveRgb(const std::uint8_t* upper, const std::uint8_t* lower, int count, int bias,
              std::uint8_t* out);

} // namespace kvn::imaging
