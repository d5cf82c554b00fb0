// Looking into the metadata bytes of a picture, and copying them from file to file. The one door
// to the metadata library.
#pragma once

#include <string>
#include <vector>

#include "imaging/codecs/codec.h"
#include "imaging/metadata.h"

namespace kvn::imaging {

struct MetadataTag {
    std::string name;  // "FNumber", "Keywords"
    std::string value; // "F2.8"; UTF-8, one line; long binary values are told by their size
};

// Every tag in the order of the block, maker notes included. Broken blocks give what could be
// read, perhaps nothing; nothing is thrown.
std::vector<MetadataTag> exifTags(const Metadata& metadata);
std::vector<MetadataTag> iptcTags(const Metadata& metadata);

// The thumbnail as a picture file of its own (JPEG or TIFF); empty if there is none.
Bytes exifThumbnail(const Metadata& metadata);

// Gives the JPEG file `destination` the metadata of the JPEG file `source`, as told at
// jpegWithMetadataOf. It is replaced as a whole or stays as it is. Throws RuntimeError:
// fileNotFound, permissionDenied, invalidPicture, deviceIo, diskFull.
void copyMetadata(const std::string& source, const std::string& destination);

// The same for a destination that does not exist yet: a JPEG file of the page is written there,
// with the metadata of `source` in the place of its own. Throws as the JPEG codec's write, too.
void copyMetadata(const std::string& source, const Page& page, const WriteOptions& options,
                  const std::string& destination, Task& task);

} // namespace kvn::imaging
