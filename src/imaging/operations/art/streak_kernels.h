// Row kernels of the motion blur: weighted sums of places in rows.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn::imaging {

// sums[i] += the sum over k below `taps` of starts[k][i] * weights[k], in 1/256 of a level; weights
// in 1/65536. Levels, or values in 1/256 of a level. Up to 256 entries behind all rows are read,
// and behind the sums written.
void addTaps(const std::uint8_t* const* starts, const std::uint16_t* weights, std::size_t taps,
             std::uint16_t* sums, std::size_t count);
void addTaps(const std::uint16_t* const* starts, const std::uint16_t* weights, std::size_t taps,
             std::uint16_t* sums, std::size_t count);
// The same sums of levels, begun with `start` and rounded. count: a multiple of 256.
void meanOfTaps(const std::uint8_t* const* starts, const std::uint16_t* weights, std::size_t taps,
                std::uint16_t start, std::uint8_t* out, std::size_t count);

} // namespace kvn::imaging
