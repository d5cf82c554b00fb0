// Alpha values through a table: what constants, offsets and tables of alpha come down to.
#pragma once

#include "imaging/operations/support/byte_table.h"
#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// alpha' = table[alpha]; colours stay. A picture without alpha counts as opaque and gets alpha
// (grey with alpha, 32-bit, or a palette with alpha) if table[255] is not 255.
Raster mapAlpha(const Raster& source, const ByteTable& table, Task& task);

// A block of ColorPlanes: out = table[alpha], all of them 255 where the picture is opaque. `out`
// may be the same.
void lookUpAlpha(const std::uint8_t* alpha, std::uint8_t* out, bool opaque, const ByteTable& table);

} // namespace kvn::imaging
