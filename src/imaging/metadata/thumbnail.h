// The small picture inside an EXIF block, kept true.
#pragma once

#include "imaging/metadata/exif_block.h"
#include "imaging/raster.h"

namespace kvn::imaging {

// Leaves a thumbnail that shows the picture as it stands, byte for byte. One that does not, since
// the picture was turned, cut or painted over, is drawn anew from the picture in the place of the
// old one, or removed if it does not fit there: what an edit has hidden must not live on in it.
// `isTurned`: the thumbnail is known to lie otherwise than the picture.
void refreshThumbnail(ExifBlock& exif, const Raster& picture, bool isTurned);

} // namespace kvn::imaging
