// Metadata from one JPEG file into another.
#pragma once

#include <span>
#include <string>

#include "imaging/metadata.h"

namespace kvn::imaging {

// The JPEG `destination` with the EXIF, XMP, IPTC (all image resources) and comments of the JPEG
// `source` in the place of its own. Everything else, coded pixels and colour profile included,
// stays byte for byte. The copied EXIF gets the destination's orientation and size, so that the
// picture shows as before. Throws RuntimeError(invalidPicture) if one of them is no JPEG.
Bytes jpegWithMetadataOf(std::span<const std::uint8_t> source,
                         std::span<const std::uint8_t> destination);

// The same with files; the destination is replaced as a whole or stays as it is. Throws as
// FileBytes and replaceFile do, too.
void copyMetadata(const std::string& source, const std::string& destination);

} // namespace kvn::imaging
