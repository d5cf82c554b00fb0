// Row kernels of the filters that choose a value by its rank: least, greatest, middle.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn::imaging {

enum class Extreme { Least, Greatest };

// out[i] = the extreme of rows[k][i] over k below n.
void extremeOfRows(Extreme which, const std::uint8_t* const* rows, int n, std::uint8_t* out,
                   std::size_t count);
// out[i] = the extreme of out[i] and row[i].
void mergeExtreme(Extreme which, const std::uint8_t* row, std::uint8_t* out, std::size_t count);
// out[i] = the extreme of row[i + k * step] over k below size. `row` has count + (size - 1) * step
// entries and is used as scratch memory.
void extremeAlong(Extreme which, std::uint8_t* row, std::uint8_t* out, std::size_t count, int size,
                  int step);

// out[i] = the median of rows[k][i + j * step] over k and j below size. size: 3, 5, ... 15.
void medianOfWindow(const std::uint8_t* const* rows, int size, int step, std::uint8_t* out,
                    std::size_t count);

} // namespace kvn::imaging
