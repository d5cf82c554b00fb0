// libpng, for files that are interlaced or damaged.
#pragma once

#include <string>

#include "imaging/codecs/png.h"
#include "imaging/pixel_buffer.h"

namespace kvn::imaging {

// The file's rows, unfiltered and deinterlaced, in its own samples.
struct PngRawRows {
    PixelBuffer rows;    // blank where the file gave nothing
    int count = 0;       // rows from the top that the file gave something for
    std::string message; // why it stopped, or what was wrong; empty if nothing
};

// Reads as far as it goes. Throws RuntimeError(outOfMemory); a file of which nothing can be read
// gives a count of 0.
PngRawRows readPngRows(std::span<const std::uint8_t> file, const PngHeader& header, Task& task);

} // namespace kvn::imaging
