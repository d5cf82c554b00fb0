// A picture as a BMP file.
#pragma once

#include "imaging/byte_io.h"
#include "imaging/picture.h"
#include "imaging/task.h"

namespace kvn::imaging {

// 1 bit, 8 bits with palette (grey as a ramp), 24 bits, or, for every type with alpha, 32 bits
// with masks. `rle` packs the 8-bit forms. A colour profile is embedded. Throws invalidCall for a
// picture beyond the 4 GB that the size fields hold.
void writeBmp(const Page& page, bool rle, ByteSink& sink, Task& task);

} // namespace kvn::imaging
