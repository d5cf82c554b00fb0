// What the headers of a BMP file say, checked and put in order. No pixels.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "imaging/metadata.h"
#include "imaging/palette.h"

namespace kvn::imaging {

enum class BmpPacking { Plain, Rle8, Rle4, Rle24, Jpeg, Png };

struct BmpHeader {
    int width = 0;
    int height = 0;
    bool topDown = false;
    int bits = 0; // 1, 2, 4, 8, 16, 24, 32; 0 for an embedded JPEG or PNG
    BmpPacking packing = BmpPacking::Plain;
    // Red, green, blue, alpha within a pixel of 16 or 32 bits; a zero mask is a missing channel.
    std::array<std::uint32_t, 4> masks{};
    // The masks are the format's own ones, so that the fourth byte may be alpha or nothing.
    bool spareByte = false;
    Palette palette;                      // for up to 8 bits
    std::span<const std::uint8_t> pixels; // from the first row to the end of the file
    std::span<const std::uint8_t> profile;
    double xDpi = 0;
    double yDpi = 0;
};

bool isBmp(std::span<const std::uint8_t> file);

// Throws RuntimeError(invalidPicture) for what cannot be read. Wrong palette sizes and offsets
// are put right as far as the file allows.
BmpHeader readBmpHeader(std::span<const std::uint8_t> file);

// The same for a bitmap inside another file, without the file header. `pixels` is where they
// stand if they do not follow the palette.
BmpHeader readBitmapHeader(std::span<const std::uint8_t> bitmap,
                           std::span<const std::uint8_t> pixels);

} // namespace kvn::imaging
