// Row kernels of the filters that choose a value by its rank: least, greatest, middle.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn::imaging {

enum class Extreme { Least, Greatest };

// out[i] = the extreme of rows[k][i] over k below n.
void extremeOfRows(Extreme which, const std::uint8_t* const* rows, int n, std::uint8_t* out,
                   std::size_t count);
// Row j of `out` (j below count, at most size; `stride` bytes apart) = the extreme of rows[j] to
// rows[j + size - 1]: the end of the first `size` rows and the beginning of those behind them,
// three comparisons a value whatever the size (M. van Herk 1992, J. Gil and M. Werman 1993). size:
// up to 255. Up to 64 bytes behind the rows are read and written.
void extremeOfColumns(Extreme which, const std::uint8_t* const* rows, int size, int count,
                      std::uint8_t* out, std::size_t stride, std::size_t length);
// out[i] = the extreme of row[i + k * step] over k below size. `row` has count + (size - 1) * step
// entries and is used as scratch memory.
void extremeAlong(Extreme which, std::uint8_t* row, std::uint8_t* out, std::size_t count, int size,
                  int step);

// out[i] = the median of rows[k][i + j * step] over k and j below size. size: 3, 5, ... 15.
void medianOfWindow(const std::uint8_t* const* rows, int size, int step, std::uint8_t* out,
                    std::size_t count);

} // namespace kvn::imaging
