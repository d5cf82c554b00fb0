// Metadata in and out of JPEG marker segments.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/codecs/jpeg_segments.h"
#include "imaging/metadata.h"

namespace kvn::imaging {

// What the segments carry. The JFIF segment gives the resolution and stays among the opaque ones,
// to tell that the file had one (see jfifFor). Left out, because they would be false in a file
// written anew: the Adobe segment (it tells how the old pixels were coded), the index of further
// pictures behind the first, and preview pictures of the JFIF extension.
Metadata jpegMetadata(const JpegOutline& outline);

// The application segments to write, in order, without JFIF. `mask` as in
// WriteOptions::jpegMarkers; markers 0 and 15 have no bit of their own and go with any other. The
// EXIF and XMP blocks are taken as they are. A block that is too long for its kind of segment is
// left out; colour profile and image resources are cut into as many as they need.
std::vector<JpegMarker> jpegSegmentsFor(const Metadata& metadata, std::uint32_t mask);

// The comment segments to write: those of the file as they stood, unless the comment has become
// another one since; then that, cut to the length of a segment.
std::vector<Bytes> jpegCommentsFor(const Metadata& metadata);

// The JFIF header to write.
struct Jfif {
    // Cameras write EXIF alone, and a file without JFIF stays one, as long as its EXIF block is
    // written and tells the same resolution.
    bool isWritten = true;
    int majorVersion = 1;
    int minorVersion = 1;
    int unit = 0; // of the density: 1 dots per inch, 2 per centimetre, 0 unknown
    int x = 1;
    int y = 1;
};
Jfif jfifFor(const Metadata& metadata, std::uint32_t mask);

} // namespace kvn::imaging
