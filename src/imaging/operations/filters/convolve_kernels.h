// Row kernels of the filters with a small window of their own coefficients.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn::imaging {

// out[i] = sum over k of c[3k] * rows[k][i] + c[3k + 1] * rows[k][i + step] + c[3k + 2] *
// rows[k][i + 2 * step].
void correlate(const std::uint8_t* const* rows, const float* coefficients, int height, int step,
               float* out, std::size_t count);

// out[i] = gain times the length of the Sobel gradient at the middle of rows[0..2][i .. i + 2 *
// step], clamped to 255.
void sobelLength(const std::uint8_t* const* rows, int step, float gain, std::uint8_t* out,
                 std::size_t count);

// The two parts of the Sobel gradient of grey rows[0..2][i .. i + 2], and the sum of their squares.
void sobelParts(const std::uint8_t* const* rows, std::int16_t* across, std::int16_t* down,
                std::int32_t* square, std::size_t count);

// The middle of the window, brought between the second least and the second greatest of the eight
// around it.
void limitByNeighbours(const std::uint8_t* const* rows, int step, std::uint8_t* out,
                       std::size_t count);

} // namespace kvn::imaging
