// Unpacking the numbers of one TIFF row.
#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/codecs/tiff_layout.h"

namespace kvn::imaging {

// The samples as they are, 1 to 8 bits each.
void unpackTiffIndices(const std::uint8_t* from, std::size_t count, int bits, std::uint8_t* to);

// Samples of up to 8 bits, unsigned, spread over 0..255.
void unpackTiffSamples(const TiffLayout& layout, const std::uint8_t* from, std::size_t count,
                       std::uint8_t* to);
// Any other kind of numbers, spread over 0..65535.
void unpackTiffSamples(const TiffLayout& layout, const std::uint8_t* from, std::size_t count,
                       std::uint16_t* to);

} // namespace kvn::imaging
