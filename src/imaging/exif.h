// Looking into the metadata bytes of a picture, and the few edits that keep them true. The one
// door to the metadata library.
#pragma once

#include <string>
#include <vector>

#include "imaging/metadata.h"

namespace kvn::imaging {

struct MetadataTag {
    std::string name;  // readable name
    std::string value; // as a person reads it, UTF-8
};

// All tags in the order of the data; empty if there are none or the data is damaged.
std::vector<MetadataTag> exifTags(const Metadata& metadata);
std::vector<MetadataTag> iptcTags(const Metadata& metadata);

// The embedded thumbnail as a JPEG file; empty if there is none.
Bytes exifThumbnail(const Metadata& metadata);

// Copies EXIF, IPTC, XMP and comment from one JPEG file into another that exists; its pixels stay
// untouched. Throws RuntimeError: fileNotFound, permissionDenied, invalidPicture, deviceIo.
void copyMetadata(const std::string& source, const std::string& destination);

} // namespace kvn::imaging
