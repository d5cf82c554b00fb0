// Random numbers that depend on their place only, so that no order of the work changes them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn::imaging {

// out[i] = a number of 0..65535, from i, the row and the seed. (Integer hash by C. Wellons, with
// the least bias found for its form, 2018.)
void randomRow(std::uint32_t seed, std::uint32_t row, std::uint16_t* out, std::size_t count);

} // namespace kvn::imaging
