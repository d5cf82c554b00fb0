// Metadata in and out of JPEG marker segments.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/codecs/jpeg_segments.h"
#include "imaging/metadata.h"

namespace kvn::imaging {

// What the segments carry. Left out, because they would be false in a file written anew: the
// Adobe segment (it tells how the old pixels were coded), the index of further pictures behind
// the first, and preview pictures of the JFIF extension.
Metadata jpegMetadata(const JpegOutline& outline);

// The application segments to write, in order, without JFIF. `mask` as in
// WriteOptions::jpegMarkers; markers 0 and 15 have no bit of their own and go with any other. The
// EXIF and XMP blocks are taken as they are. A block that is too long for its kind of segment is
// left out; colour profile and image resources are cut into as many as they need.
std::vector<JpegMarker> jpegSegmentsFor(const Metadata& metadata, std::uint32_t mask);

// The resolution as the JFIF header can say it.
struct JfifDensity {
    int unit = 0; // 1 dots per inch, 2 per centimetre, 0 unknown
    int x = 1;
    int y = 1;
};
JfifDensity jfifDensity(double xDpi, double yDpi);

} // namespace kvn::imaging
