// The fast path of the inverse mapping driver: runs of pixels that lie well inside the picture
// where it does not shrink.
#pragma once

#include "imaging/operations/support/warp_rows.h"

namespace kvn::imaging {

using WarpRun = void (*)(const WarpRow& row, int begin, int end);

// Bicubic samples of bytes of that many channels, not weighted by alpha, in fixed point for
// processors with 256-bit vectors. Null where there is none.
WarpRun vectorRun(int channels);

} // namespace kvn::imaging
