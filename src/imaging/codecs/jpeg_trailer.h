// What picture archives append behind the end of a JPEG file: blocks with texts, facts about the
// picture and previews of it, each ended by its kind and length, to be read from the file's end.
#pragma once

#include <span>

#include "imaging/metadata.h"
#include "imaging/raster.h"

namespace kvn::imaging {

// The blocks with texts and facts, as they stood. Previews are left out: they would go on showing
// what an edit has hidden.
Bytes jpegTrailer(std::span<const std::uint8_t> file);

// Those that may stand behind the picture: texts if IPTC is kept, facts if they name its size.
Bytes jpegTrailerFor(const Metadata& metadata, const Raster& picture, std::uint32_t mask);

} // namespace kvn::imaging
