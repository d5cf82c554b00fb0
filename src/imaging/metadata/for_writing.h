// Metadata made true for a picture that is about to be written.
#pragma once

#include "imaging/metadata.h"
#include "imaging/raster.h"

namespace kvn::imaging {

// A copy in which EXIF and XMP speak of this picture: it lies in the file as `orientation` tells (1
// is upright) and has its width and height, where they name any, and its thumbnail shows it. A
// colour profile that is for another kind of picture than `gray` or colour is dropped. Everything
// else stays byte for byte. Every writer calls it, since pages keep the EXIF block of the file they
// came from.
Metadata metadataForWriting(const Metadata& metadata, const Raster& picture, bool gray,
                            int orientation = 1);

} // namespace kvn::imaging
