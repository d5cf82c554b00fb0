// The LZW code of GIF: variable width, least significant bit first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kvn::imaging {

// Bytes that an output buffer must have behind its `count`: strings are copied eight bytes at a
// time.
inline constexpr std::size_t gifLzwSlack = 8;

// Unpacks up to `count` indices into `out` (count + gifLzwSlack bytes), and returns how many it
// has written: fewer if the data end early or hold a code that cannot be. `codeSize` is 1 to 8.
std::size_t unpackGifLzw(std::span<const std::uint8_t> data, int codeSize, std::uint8_t* out,
                         std::size_t count);

} // namespace kvn::imaging
