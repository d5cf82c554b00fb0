// EXIF blocks in and out of TIFF files, where they are not a block but directories among others.
//
// Carried are the camera's and the position's directories whole, and of the page's own one what
// names picture, camera, program, time and people, and tells what its colours are. Values are
// copied as they are; a maker's note keeps its place in the file where that can be, since it holds
// offsets of its own.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "imaging/codecs/tiff_structure.h"
#include "imaging/metadata.h"

namespace kvn::imaging {

// The EXIF block for the page whose directory stands there; empty if the page has nothing of it.
Bytes exifOfTiffPage(const TiffStructure& file, const TiffDirectory& page);

// The same directories, laid out to stand at `position` of a classic file.
struct PlacedExif {
    Bytes bytes;
    std::uint32_t camera = 0; // where the directories stand in the file, 0 if there is none
    std::uint32_t position = 0;
    // For the page's own directory, values in the byte order of this machine.
    struct Own {
        std::uint16_t tag = 0;
        std::uint16_t type = 0;
        Bytes value;
    };
    std::vector<Own> own;
};
PlacedExif placeExif(const Bytes& exif, std::uint32_t position, bool bigEndian);

bool isBigEndianExif(const Bytes& exif);

} // namespace kvn::imaging
