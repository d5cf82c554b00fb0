// The fast path of the inverse mapping driver: runs of pixels that lie well inside the picture.
#pragma once

#include "imaging/operations/support/warp_rows.h"

namespace kvn::imaging {

// Each pixel is the mean of that many samples across and down its area, 1 to mostRunSamples.
using WarpRun = void (*)(const WarpRow& row, int begin, int end, int across, int down);
inline constexpr int mostRunSamples = 2;

// Bicubic samples of bytes of that many channels, not weighted by alpha, for processors with
// 256-bit vectors. Null where there is none.
WarpRun vectorRun(int channels);

} // namespace kvn::imaging
