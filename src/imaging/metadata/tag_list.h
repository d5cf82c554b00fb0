// The tags of EXIF and IPTC blocks as people read them. The one place that knows Exiv2.
#pragma once

#include <string>
#include <vector>

#include "imaging/metadata.h"

namespace kvn::imaging {

struct Tag {
    std::string name;  // "FNumber", "Keywords"
    std::string value; // "F2.8"; UTF-8, one line; long binary values are cut
};

// Every tag in the order of the block, maker notes included, but for fields of unknown meaning.
// Broken blocks give what could be
// read, perhaps nothing; nothing is thrown.
std::vector<Tag> exifTags(const Metadata& metadata);
std::vector<Tag> iptcTags(const Metadata& metadata);

// The thumbnail as a picture file of its own (JPEG or TIFF); empty if there is none.
Bytes exifThumbnail(const Metadata& metadata);

} // namespace kvn::imaging
