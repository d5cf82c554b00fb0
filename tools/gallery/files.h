// Pictures from and to files.
#pragma once

#include <string>

#include "imaging/raster.h"

namespace kvn::gallery {

imaging::Raster readPicture(const std::string& path);
// In the form that the name's ending tells.
void writePicture(const std::string& path, const imaging::Raster& picture);

} // namespace kvn::gallery
