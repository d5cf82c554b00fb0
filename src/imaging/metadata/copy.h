// Metadata from one JPEG file into another, as bytes; exif.h has it for files.
#pragma once

#include <span>

#include "imaging/metadata.h"

namespace kvn::imaging {

// The JPEG `destination` with the EXIF, XMP, IPTC (all image resources) and comments of the JPEG
// `source` in the place of its own. Everything else, coded pixels and colour profile included,
// stays byte for byte. What is copied is made to speak of the destination: its orientation and
// size, and a thumbnail that shows it. Throws RuntimeError(invalidPicture) if one of them is no
// JPEG, or the destination's pixels cannot be read.
Bytes jpegWithMetadataOf(std::span<const std::uint8_t> source,
                         std::span<const std::uint8_t> destination);

} // namespace kvn::imaging
