// A formula as a table of bytes.
#pragma once

#include <algorithm>
#include <cmath>

#include "imaging/operations/support/byte_table.h"

namespace kvn::imaging {

// The curve at 0..255, rounded to nearest and clamped.
template <typename Curve>
ByteTable tableOf(Curve curve) {
    ByteTable table;
    for (int v = 0; v < 256; ++v)
        table[static_cast<std::size_t>(v)] = static_cast<std::uint8_t>(
            std::lround(std::clamp(static_cast<double>(curve(v)), 0.0, 255.0)));
    return table;
}

} // namespace kvn::imaging
