// The pixels of a BMP file whose headers have been read.
#pragma once

#include <string>
#include <vector>

#include "imaging/codecs/bmp_header.h"
#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// The picture's form. 32 bits without masks have alpha if any fourth byte is not 0; with masks,
// if the header gives alpha one. 8 bits with the palette 0, 1, ... 255 are grey.
ImageType bmpImageType(const BmpHeader& header);

// Not for an embedded JPEG or PNG. Rows that are missing are black, and a warning says so.
Raster readBmpPixels(const BmpHeader& header, ImageType type, Task& task,
                     std::vector<std::string>& warnings);

} // namespace kvn::imaging
