// Replacing every byte by its entry in a table: the kernel behind most point operations, as fast
// as memory allows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kvn::imaging {

using ByteTable = std::array<std::uint8_t, 256>;

ByteTable identityTable();

// out[i] = table[in[i]]. `in` and `out` may be the same.
void lookUp(const std::uint8_t* in, std::uint8_t* out, std::size_t count, const ByteTable& table);

// out[i] = tables[i % channels][in[i]], for pixels of 2, 3 or 4 bytes. `pixels` counts pixels.
void lookUpChannels(const std::uint8_t* in, std::uint8_t* out, std::size_t pixels,
                    const ByteTable* const* tables, int channels);

} // namespace kvn::imaging
