// Image resource blocks, the container that holds IPTC records in JPEG and TIFF files.
#pragma once

#include <span>

#include "imaging/metadata.h"

namespace kvn::imaging {

// The IPTC records inside the blocks; empty if there are none or the blocks are broken before
// them.
Bytes iptcInPhotoshop(std::span<const std::uint8_t> blocks);

// One block that holds the records.
Bytes photoshopFromIptc(std::span<const std::uint8_t> iptc);

} // namespace kvn::imaging
