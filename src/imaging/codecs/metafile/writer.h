// A picture as a metafile that holds it as one bitmap.
#pragma once

#include "imaging/byte_io.h"
#include "imaging/picture.h"
#include "imaging/task.h"

namespace kvn::imaging::metafile {

// 1 bit, 8 bits with palette or 24 bits. WMF has no alpha: colours are taken without it. In EMF
// the types with alpha become 32 bits with the colours multiplied by it. The size follows from
// the resolution, 96 dpi if there is none. Both throw RuntimeError(invalidCall) for what the
// fields cannot hold. Without the placeable header a WMF says nothing of its size in inches.
void writeWmf(const Page& page, bool placeable, ByteSink& sink, Task& task);
void writeEmf(const Page& page, ByteSink& sink, Task& task);

} // namespace kvn::imaging::metafile
