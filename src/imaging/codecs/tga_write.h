// A picture as a TGA file.
#pragma once

#include "imaging/byte_io.h"
#include "imaging/picture.h"
#include "imaging/task.h"

namespace kvn::imaging {

// 8 bits with palette (1-bit pictures too), grey, 24 bits, or, for every type with alpha, 32 bits
// of straight alpha; run lengths where they make the file smaller. The top row is the first one,
// which every reader gets right. The comment is kept if it has a place in four lines of Latin-1.
// Throws invalidCall for a side above 65,535.
void writeTga(const Page& page, ByteSink& sink, Task& task);

} // namespace kvn::imaging
