// From the samples of a TIFF page to the 8-bit channels of a raster, a row at a time.
//
// Scaling: a sample of n bits is a fraction of 2^n - 1 and is rounded to the nearest of 256
// levels. Signed numbers run from the least to the greatest, real ones from 0 to 1, unless the
// file states its own least and greatest values; what lies outside is clamped, NaN is 0.
// Premultiplied colours are divided by their alpha. CMYK is r = (1 - c)(1 - k). Lab is taken for
// D50 and shown in sRGB with Bradford's adaptation.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/codecs/tiff_layout.h"

namespace kvn::imaging {

// Keeps scratch memory: one object a thread.
class TiffRowConverter {
  public:
    explicit TiffRowConverter(const TiffLayout& layout);

    // `planes` are the beginnings of the row in each plane (one for interleaved samples), in the
    // machine's byte order; `to` is the place of the first of `count` pixels in the raster.
    void convert(const std::uint8_t* const* planes, int count, std::uint8_t* to);

    // True if convert() does nothing but copy the row.
    bool copies() const { return fits_ && !layout_.planar; }

  private:
    template <typename T>
    void convertAs(const std::uint8_t* const* planes, int count, std::uint8_t* to);
    void convertPalette(const std::uint8_t* const* planes, int count, std::uint8_t* to);

    const TiffLayout& layout_;
    bool fits_; // the samples are the raster's bytes, if in planes perhaps
    std::vector<std::uint8_t> bytes_;
    std::vector<std::uint16_t> words_;
    std::vector<std::uint8_t> plane_;
    std::vector<std::uint16_t> widePlane_;
};

} // namespace kvn::imaging
