// The run lengths of PSD files, row by row.
#pragma once

#include <cstdint>
#include <span>

#include "imaging/metadata.h"

namespace kvn::imaging {

// Unpacks into the row; runs past its end are cut. Returns how many bytes came: fewer than the
// row's if the data end early, and the rest of the row stays as it was.
std::size_t unpackPsdRow(std::span<const std::uint8_t> data, std::span<std::uint8_t> row);

Bytes packPsdRow(std::span<const std::uint8_t> row);

} // namespace kvn::imaging
