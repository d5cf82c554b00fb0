// Icons and pointers of OS/2, alone or in arrays: the largest picture is read.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "imaging/codecs/codec.h"

namespace kvn::imaging {

bool isOs2Icon(std::span<const std::uint8_t> file);

// Rgba32; what the mask leaves open, and what would invert the screen, is clear. Throws
// RuntimeError: invalidPicture, outOfMemory.
Raster readOs2Icon(std::span<const std::uint8_t> file, ReadLimits limits, Task& task,
                   std::vector<std::string>& warnings);
// Without the pixels.
PageFacts os2IconFacts(std::span<const std::uint8_t> file, ReadLimits limits);

} // namespace kvn::imaging
