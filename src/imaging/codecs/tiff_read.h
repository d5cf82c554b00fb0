// A TIFF file as a picture of all its pages.
#pragma once

#include "imaging/codecs/codec.h"

namespace kvn::imaging {

// The pages of the main chain in their order, upright. Those that hang off a page (thumbnails,
// reduced copies) are left out. A page that cannot be read is left out with a warning, unless it
// is the only one.
Picture readTiff(std::span<const std::uint8_t> file, ReadLimits limits, Task& task);
std::vector<PageFacts> tiffFacts(std::span<const std::uint8_t> file, ReadLimits limits);

} // namespace kvn::imaging
