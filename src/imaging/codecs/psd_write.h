// A picture as a PSD file.
#pragma once

#include "imaging/byte_io.h"
#include "imaging/picture.h"
#include "imaging/task.h"

namespace kvn::imaging {

// Bitmap, grey, indexed or RGB, packed. RGB with alpha is one layer, which keeps its colours as
// they are where alpha is low; the merged picture beside it has them blended with white, as
// programs expect it that read no layers. Grey has its alpha as one more channel and no layer,
// since readers fail at grey layers. A palette with one clear colour stays; any other palette with
// alpha becomes RGB, a bitmap in colours indexed. Throws invalidCall for a side above 30,000.
void writePsd(const Page& page, ByteSink& sink, Task& task);

} // namespace kvn::imaging
