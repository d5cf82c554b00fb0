// The header and the pixels of a PCX file.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

struct PcxHeader {
    int width = 0;
    int height = 0;
    int bits = 0; // of one plane
    int planes = 0;
    std::size_t lineBytes = 0; // of one plane
    bool packed = true;
    ImageType type = ImageType::Rgb24;
    Palette palette;
    std::span<const std::uint8_t> pixels;
    double xDpi = 0;
    double yDpi = 0;
};

bool isPcx(std::span<const std::uint8_t> file);

// Throws RuntimeError(invalidPicture) for what cannot be read.
//
// Palettes: 8 bits take the one behind the pixels, or are grey without it; fewer bits take the
// header's, unless the version says that it has none. One bit is black and white, unless the
// header names two colours that are no mere start of the standard palette.
PcxHeader readPcxHeader(std::span<const std::uint8_t> file);

// Rows that are missing are black, and a warning says so.
Raster readPcxPixels(const PcxHeader& header, Task& task, std::vector<std::string>& warnings);

} // namespace kvn::imaging
