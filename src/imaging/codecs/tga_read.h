// The headers and the pixels of a TGA file.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

enum class TgaKind { Palette, Color, Gray };

// What the fourth byte of a pixel is. Undecided: alpha if any of them is not 0.
enum class TgaAlpha { None, Undecided, Straight, Premultiplied };

struct TgaHeader {
    int width = 0;
    int height = 0;
    TgaKind kind = TgaKind::Color;
    int bits = 0; // of a pixel
    bool packed = false;
    bool topDown = false;
    bool rightToLeft = false;
    TgaAlpha alpha = TgaAlpha::None;
    Palette palette;
    std::vector<Rgba> manyColors; // of indices of 16 bits, one for each; empty otherwise
    std::span<const std::uint8_t> pixels;
    std::string comment; // UTF-8

    // The form that the pixels are decoded to, before an undecided alpha is looked at.
    ImageType type() const;
};

// The signature of the format's second version at the end, or a header that makes sense.
bool isTga(std::span<const std::uint8_t> file);

// Throws RuntimeError(invalidPicture) for what cannot be read.
//
// Alpha: the extension area says what the fourth byte is, if there is one. Otherwise 32 bits and
// grey with 16 bits have alpha if any such byte is not 0, whatever the header's attribute bits
// say; pixels of 16 bits have a bit for alpha if the attribute bits name it and any is set.
// Palettes have alpha if they have 32 bits and any of it is not 0.
TgaHeader readTgaHeader(std::span<const std::uint8_t> file);

// Rows that are missing are black, and a warning says so.
Raster readTgaPixels(const TgaHeader& header, Task& task, std::vector<std::string>& warnings);

} // namespace kvn::imaging
