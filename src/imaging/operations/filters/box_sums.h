// Sums over a square window around every pixel, at a cost that does not grow with the window.
// The edge pixels are repeated outwards. It knows nothing of what is summed or made of the sums.
#pragma once

#include <cstdint>
#include <functional>

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// Filter sizes as the operations take them: clamped to 1..largest, even ones count as the next
// odd one, so that the window has a middle.
int oddSize(int size, int largest);

template <class Sum>
struct BoxRows {
    // What is summed of a row of pixels: one entry a byte.
    std::function<void(const std::uint8_t* row, Sum* terms)> terms;
    // Takes the sums of row y; called from several threads.
    std::function<void(int y, const Sum* sums)> finish;
};

// `size` is odd. The sums of size * size terms have to fit into Sum (uint32_t or uint64_t).
template <class Sum>
void boxSums(const ConstView& view, int size, Task& task, const BoxRows<Sum>& rows);

// The same for the bytes themselves; size up to 15.
void boxSums16(const ConstView& view, int size, Task& task,
               const std::function<void(int y, const std::uint16_t* sums)>& finish);

} // namespace kvn::imaging
