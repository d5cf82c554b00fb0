// Rows of pixels from one form to another: the inner loops of every conversion. The types that
// store colours directly go through convertRow, those with a palette through RowReader.
#pragma once

#include <array>
#include <cstdint>

#include "imaging/raster.h"

namespace kvn::imaging {

// `width` pixels between any two of Gray8, GrayAlpha16, Rgb24 and Rgba32. Grey is luma, missing
// alpha is 255. Reads and writes nothing beyond the pixels; the two rows may not overlap.
void convertRow(ImageType from, ImageType to, const std::uint8_t* source, std::uint8_t* target,
                int width);

// Bits, most significant first, to a byte each: 0 or 1.
void expandBits(const std::uint8_t* bits, std::uint8_t* bytes, int width);
// Bytes, of which only 0 and 1 may occur, to bits; unused bits of the last byte are 0.
void packBits(const std::uint8_t* bytes, std::uint8_t* bits, int width);

// The rows of any picture in one form that stores colours directly. Palette colours of a type
// without alpha are opaque. Only reads: any number of threads may use one.
class RowReader {
  public:
    // The picture must outlive the reader. `form`: Gray8, GrayAlpha16, Rgb24 or Rgba32.
    RowReader(const Raster& source, ImageType form);

    void read(int y, std::uint8_t* target) const;

  private:
    void expand(const std::uint8_t* indices, std::uint8_t* target, int width) const;

    ConstView view_;
    ImageType form_;
    std::array<std::array<std::uint8_t, 4>, 256> table_{}; // by index, in the form
};

// A colour as one number: red in the low byte, then green, blue, alpha, whatever the machine.
constexpr std::uint32_t packed(Rgba color) {
    return color.r | color.g << 8 | color.b << 16 | std::uint32_t{color.a} << 24;
}
constexpr Rgba unpacked(std::uint32_t color) {
    return {static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8),
            static_cast<std::uint8_t>(color >> 16), static_cast<std::uint8_t>(color >> 24)};
}

} // namespace kvn::imaging
