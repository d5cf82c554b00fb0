// Bitmaps inside records.
#pragma once

#include <cstdint>
#include <span>

#include "imaging/codecs/codec.h"
#include "imaging/draw/effort.h"
#include "imaging/palette.h"
#include "imaging/raster.h"

namespace kvn::imaging::metafile {

// Where a bitmap stands in the file; it is decoded when it is drawn.
struct Dib {
    std::span<const std::uint8_t> header{}; // with palette, and pixels if those are not apart
    std::span<const std::uint8_t> pixels{}; // empty if they follow the palette
    bool paletteIndices = false;            // the palette holds 16-bit indices into the logical one
    int rows = 0;                           // how many rows there are, if not all of them

    bool isEmpty() const { return header.empty(); }
    bool operator==(const Dib& other) const {
        return header.data() == other.header.data() && pixels.data() == other.pixels.data();
    }
};

struct DibFacts {
    int width = 0;
    int height = 0;
    int bits = 0;
    bool topDown = false;
    ImageType type = ImageType::Rgb24; // read without alpha
};

// Width and height from the header; zeros if it is none.
DibFacts factsOf(const Dib& dib);

// In the bitmap's own type; 32 bits without masks are Rgb24 unless `alpha`. A palette of indices
// takes its colours from `logical`. Rows that are missing are black. Throws RuntimeError.
Raster decodeDib(const Dib& dib, const Palette& logical, bool alpha, ReadLimits limits, Task& task,
                 std::vector<std::string>& warnings);

// The same for one of many: empty, without an error, for what cannot be read or is beyond the
// effort.
Raster readDib(const Dib& dib, const Palette& logical, bool alpha, draw::Effort& effort);

// Undoes that the colours of a picture with alpha were multiplied by it; others stay.
void divideByAlpha(Raster& raster);

// One of the bitmaps from before those, of 1 bit; the rows begin at `start`. Black and white. Empty
// for other depths.
Raster readOldBitmap(std::span<const std::uint8_t> bitmap, std::size_t start);

} // namespace kvn::imaging::metafile
