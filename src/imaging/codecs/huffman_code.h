// Prefix codes as deflate wants them: lengths from frequencies, and the codes that follow from
// the lengths.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace kvn::imaging {

// Lengths of an optimal prefix code that is at most `limit` bits long, 0 for symbols that do not
// occur. A single symbol gets length 1.
void huffmanLengths(std::span<const std::uint32_t> frequencies, int limit,
                    std::span<std::uint8_t> lengths);

// The canonical code of each symbol, its first bit lowest, for the given lengths (up to 15).
void huffmanCodes(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> codes);

} // namespace kvn::imaging
