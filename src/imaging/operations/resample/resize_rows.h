// Row kernels of resampling. Samples are floats from 0 to 255; pixels have 1 to 4 interleaved
// samples. Rows need `rowSlack` samples of room behind their end, which may be read and written.
#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/operations/resample/reconstruction.h"

namespace kvn::imaging {

inline constexpr std::size_t rowSlack = 16;

// out[i] += the weighted sum of four rows.
void addRows(const std::uint8_t* const rows[4], const float weights[4], int samples, float* out);
void addRows(const float* const rows[4], const float weights[4], int samples, float* out);

// The same, rounded to bytes on the way out; `sum` may be null, for nothing yet.
void addRowsToBytes(const float* const rows[4], const float weights[4], int samples,
                    const float* sum, std::uint8_t* out);

// The weights an axis must be padded to for pixels of that many channels.
int tapPadding(int channels);
// Resamples one row to `columns.first.size()` pixels.
void filterRow(const float* in, const AxisWeights& columns, int channels, float* out);

void bytesToFloats(const std::uint8_t* in, int samples, float* out);
// Rounded to nearest, clamped.
void floatsToBytes(const float* in, int samples, std::uint8_t* out);

} // namespace kvn::imaging
