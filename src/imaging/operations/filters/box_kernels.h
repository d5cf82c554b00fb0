// Row kernels of the box filters: sums over a square window, kept per column and slid downwards,
// then summed along the row. Integers, so that no order of the additions changes a result.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn::imaging {

// column[i] += add[i] - drop[i].
void slideBytes(std::uint16_t* column, const std::uint8_t* add, const std::uint8_t* drop,
                std::size_t count);
void slideSums(std::uint32_t* column, const std::uint32_t* add, const std::uint32_t* drop,
               std::size_t count);
void slideSums(std::uint64_t* column, const std::uint64_t* add, const std::uint64_t* drop,
               std::size_t count);

// sums[i] = row[i] + row[i + step] + ... + row[i + (size - 1) * step], for i below count. `row` has
// count + (size - 1) * step entries and is used as scratch memory.
void sumAlong(std::uint16_t* row, std::uint16_t* sums, std::size_t count, int size, int step);
void sumAlong(std::uint32_t* row, std::uint32_t* sums, std::size_t count, int size, int step);
void sumAlong(std::uint64_t* row, std::uint64_t* sums, std::size_t count, int size, int step);

// out[i] = pixels[i] * keep + sums[i] * gain, rounded and clamped to 0..255.
void blendSums(const std::uint8_t* pixels, const std::uint16_t* sums, std::uint8_t* out,
               std::size_t count, float keep, float gain);
void blendSums(const std::uint8_t* pixels, const std::uint32_t* sums, std::uint8_t* out,
               std::size_t count, float keep, float gain);

} // namespace kvn::imaging
