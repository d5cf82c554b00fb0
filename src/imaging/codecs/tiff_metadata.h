// What a TIFF page says beside its pixels.
#pragma once

#include "imaging/codecs/tiff_handle.h"
#include "imaging/codecs/tiff_layout.h"
#include "imaging/codecs/tiff_structure.h"
#include "imaging/picture.h"

namespace kvn::imaging {

// Resolution, profile, XMP, IPTC, image resources, EXIF; the description is the comment. A
// profile for inks or Lab is left out, since the pixels have become RGB.
MetadataRef tiffMetadata(const TiffStructure& file, const TiffDirectory& page,
                         const TiffLayout& layout);

std::string tiffPageName(const TiffDirectory& page);

// Sets the fields of the writer's current page, EXIF left out.
void writeTiffMetadata(const TiffWriter& writer, const Metadata& metadata);

} // namespace kvn::imaging
