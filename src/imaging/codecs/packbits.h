// PackBits, the run lengths of PSD and TIFF, row by row.
#pragma once

#include <cstdint>
#include <span>

#include "imaging/metadata.h"

namespace kvn::imaging {

// Unpacks into the row; runs past its end are cut. Returns how many bytes came: fewer than the
// row's if the data end early, and the rest of the row stays as it was.
std::size_t unpackBits(std::span<const std::uint8_t> data, std::span<std::uint8_t> row);

// Packs the row at the end of `out`, at most one byte in 128 longer than it was.
void appendPackedBits(std::span<const std::uint8_t> row, Bytes& out);

} // namespace kvn::imaging
