// The rows of a picture in one of three plain forms, for reduced copies and the screen: what the
// seven image types have in common once palettes are looked up and alpha is multiplied in.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "imaging/raster.h"

namespace kvn::imaging {

// The number is the bytes a pixel. Rgba is premultiplied, so that means are weighted by alpha.
enum class SampleForm { Gray = 1, Rgb = 3, Rgba = 4 };
constexpr int channelCount(SampleForm form) {
    return static_cast<int>(form);
}

// Read from several threads at once.
class SampleReader {
  public:
    SampleReader() = default;
    explicit SampleReader(const Raster& picture);

    // Gray for grey types and palettes of greys, Rgba for types with alpha, else Rgb.
    SampleForm form() const { return form_; }

    // Bytes a buffer needs for rows of `count` pixels.
    static std::size_t scratchBytes(int count) { return static_cast<std::size_t>(count) * 4 + 32; }

    // Columns x..x+count-1 of row y of `picture`, which is the one the reader was made for. The
    // result points into the picture where that has the form already, else into `scratch`.
    const std::uint8_t* row(const ConstView& picture, int y, int x, int count,
                            std::uint8_t* scratch) const;

  private:
    void readPalette(const Palette& palette, bool withAlpha);
    const std::uint8_t* readBits(const std::uint8_t* row, int x, int count,
                                 std::uint8_t* scratch) const;
    void lookUp(const std::uint8_t* row, int count, std::uint8_t* scratch) const;

    SampleForm form_ = SampleForm::Rgb;
    // The samples of each index; one byte, three or four of each entry are in use.
    std::array<std::array<std::uint8_t, 4>, 256> lookup_{};
};

} // namespace kvn::imaging
