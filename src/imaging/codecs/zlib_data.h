// Small zlib streams in memory: texts, profiles.
#pragma once

#include <optional>
#include <span>

#include "imaging/metadata.h"

namespace kvn::imaging {

// Nothing for a damaged stream, or one that would give more than `most` bytes.
std::optional<Bytes> inflateZlib(std::span<const std::uint8_t> stream,
                                 std::size_t most = std::size_t{16} << 20);
Bytes deflateZlib(std::span<const std::uint8_t> data);

} // namespace kvn::imaging
