// Row kernels of the Gaussian filters: weighted sums of rows and along rows, in floats, and the
// change between a fine and a coarse grid.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn::imaging {

// out[i] = sum of weights[k] * rows[k][i]; the weights are symmetric about the middle one, `taps`
// is odd.
void sumRows(const std::uint8_t* const* rows, const float* weights, int taps, float* out,
             std::size_t count);
void sumRows(const float* const* rows, const float* weights, int taps, float* out,
             std::size_t count);
// The same for any four weights.
void sumFourRows(const float* const* rows, const float* weights, float* out, std::size_t count);

// out[i] = sum of weights[k] * in[i + k * step], symmetric weights, `taps` odd.
void sumEntries(const float* in, const float* weights, int taps, int step, float* out,
                std::size_t count);

// The same two sums in 1/128 of a level, at half the cost and with errors below a tenth of a level.
// weights: the middle one and those beside it up to `radius`, in 1/65536. Whole vectors are read
// and written behind the ends of the rows.
void sumRowsFixed(const std::uint8_t* const* rows, const std::uint16_t* weights, int radius,
                  std::uint16_t* out, std::size_t count);
void sumEntriesFixed(const std::uint16_t* in, const std::uint16_t* weights, int radius, int step,
                     std::uint16_t* out, std::size_t count);
void levelsOfFixed(const std::uint16_t* in, float* out, std::size_t count);
void roundFixed(const std::uint16_t* in, std::uint8_t* out, std::size_t count);

// out[i * channels + c] = sum over k of weights[k] * in[(i * factor + k) * channels + c]. Both rows
// are followed by 4 entries that may be read or overwritten.
void toCoarse(const float* in, const float* weights, int taps, int factor, int channels, float* out,
              int count);
// Pixel i * factor + phase of `out` is the sum over k below 4 of
// weights[phase * 4 + k] * in[(i + k) * channels + c]; the rows as above.
void toFine(const float* in, const float* weights, int factor, int channels, float* out, int count);

// Rounded and clamped to 0..255.
void roundLevels(const float* in, std::uint8_t* out, std::size_t count);

// out[i] = pixels[i] + (pixels[i] - blurred[i]) * gain where the difference is at least
// `threshold`, else pixels[i]; rounded and clamped.
void addDetail(const std::uint8_t* pixels, const float* blurred, float gain, float threshold,
               std::uint8_t* out, std::size_t count);
// The same for blurred values in 1/128 of a level and gains up to 7; right to 1/16 of a level.
void addDetailFixed(const std::uint8_t* pixels, const std::uint16_t* blurred, float gain,
                    float threshold, std::uint8_t* out, std::size_t count);
// out[i] = in[i] + bias, rounded and clamped.
void addBias(const float* in, float bias, std::uint8_t* out, std::size_t count);
// out[i] = base + pixels[i] - blurred[i], rounded and clamped.
void detailAround(float base, const std::uint8_t* pixels, const float* blurred, std::uint8_t* out,
                  std::size_t count);

} // namespace kvn::imaging
