// Rows of samples as 32-bit pixels of the screen, 0xAARRGGBB, premultiplied.
#pragma once

#include <cstdint>

#include "imaging/view/samples.h"

namespace kvn::imaging {

constexpr std::uint32_t opaque(Rgba color) {
    return 0xFF000000u | static_cast<std::uint32_t>(color.r) << 16 |
           static_cast<std::uint32_t>(color.g) << 8 | color.b;
}

void packRow(SampleForm form, const std::uint8_t* samples, int count, std::uint32_t* out);

// Turns pixels of four bytes, red first, into screen pixels in place and sets the bits `fixed`.
void packFours(std::uint32_t* pixels, int count, std::uint32_t fixed);

// `below` are opaque pixels, and so is what comes out. `out` may be `below`.
void layOver(const std::uint32_t* above, const std::uint32_t* below, int count, std::uint32_t* out);

} // namespace kvn::imaging
