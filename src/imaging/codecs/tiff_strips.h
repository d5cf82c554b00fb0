// The pixels of a page as packed strips, made on all cores.
#pragma once

#include <cstdint>

#include "imaging/codecs/codec.h"

namespace kvn::imaging {

// What one page becomes in the file. Compression and photometric are the format's numbers.
struct TiffForm {
    Raster raster; // Bit1, Indexed8, Gray8, GrayAlpha16, Rgb24 or Rgba32
    std::uint16_t compression = 1;
    std::uint16_t photometric = 1;
    bool differences = false; // samples are stored as differences to the pixel before
    int jpegQuality = 75;
    int chromaStep = 2; // JPEG: pixels that share a colour, each way
    int rowsPerStrip = 1;

    int strips() const { return (raster.height() - 1) / rowsPerStrip + 1; }
    int samples() const {
        return raster.type() == ImageType::Bit1 ? 1 : bytesPerPixel(raster.type());
    }
    int bits() const { return raster.type() == ImageType::Bit1 ? 1 : 8; }
};

// The form for `page` under the option's compression: fax turns it to 1 bit; JPEG is for grey and
// 24-bit pictures, others are packed by Deflate, which loses nothing; palettes with alpha become
// 32-bit.
TiffForm tiffFormOf(const Raster& page, const WriteOptions& options, Task& task);

// The tables that all strips of a JPEG page share; empty for another compression.
Bytes tiffJpegTables(const TiffForm& form);

// Puts one strip into `packed` as it goes into the file; the memory there is used again.
void packTiffStrip(const TiffForm& form, int strip, Bytes& packed);

} // namespace kvn::imaging
