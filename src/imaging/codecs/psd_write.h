// A picture as a PSD file.
#pragma once

#include "imaging/byte_io.h"
#include "imaging/picture.h"
#include "imaging/task.h"

namespace kvn::imaging {

// Bitmap, grey, indexed or RGB without layers, packed. Alpha is one more channel, straight, with
// the colours as they are, so that nothing is lost where it is low. A palette with one clear
// colour stays; any other palette with alpha becomes RGB, a bitmap in colours indexed. Throws
// invalidCall for a side above 30,000.
void writePsd(const Page& page, ByteSink& sink, Task& task);

} // namespace kvn::imaging
