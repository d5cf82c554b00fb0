// How the pixels of one TIFF page are stored, and the form that they get in memory.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "imaging/codecs/tiff_handle.h"
#include "imaging/palette.h"
#include "imaging/raster.h"

namespace kvn::imaging {

enum class TiffColor {
    Gray,
    Palette,
    Rgb,
    Cmyk,
    CieLab, // a and b signed
    IccLab, // a and b with an offset
    Library // converted by the library itself, to 8-bit RGB with alpha
};

enum class TiffNumbers { Unsigned, Signed, Float };

struct TiffLayout {
    int width = 0; // as stored, before it is turned upright
    int height = 0;
    int orientation = 1;
    std::uint16_t compression = 1;
    std::uint16_t photometric = 0;
    int bits = 1;    // a sample
    int samples = 1; // a pixel
    TiffNumbers numbers = TiffNumbers::Unsigned;
    TiffColor color = TiffColor::Gray;
    bool inverted = false; // 0 is white
    int alpha = -1;        // the sample that is alpha
    bool premultiplied = false;
    bool planar = false; // each sample in a plane of its own
    bool tiled = false;
    bool bitsReversed = false;
    Palette palette;              // for 1-bit and palette pictures
    std::vector<Rgba> manyColors; // of palettes with 65536 entries, which no raster can have
    // The numbers that are shown as black and white, where the numbers are not the full range.
    double blackAt = 0;
    double whiteAt = 0;

    ImageType type = ImageType::Rgb24;
    int chunkWidth = 0; // of a strip or tile
    int chunkHeight = 0;
    std::size_t chunkRowBytes = 0; // of one plane
    std::size_t chunkBytes = 0;

    int chunksAcross() const { return (width - 1) / chunkWidth + 1; }
    int chunksDown() const { return (height - 1) / chunkHeight + 1; }
    int planes() const { return planar ? samples : 1; }
    int fileBits() const { return bits * samples; }
};

// Of the directory that is current in `reader`; prepares the handle for decoding it. Throws
// RuntimeError(invalidPicture) for what cannot be shown. Size limits are the caller's affair.
TiffLayout readTiffLayout(const TiffReader& reader);

// The same preparation for a further handle on the same directory.
void prepareTiffDecoder(const TiffReader& reader);

} // namespace kvn::imaging
