// Adding a page to a TIFF file on disk.
#pragma once

#include <string>

#include "imaging/codecs/codec.h"

namespace kvn::imaging {

// Appends `page` behind the last one; the bytes of the other pages stay as they are. A file that
// is not there is made. Throws RuntimeError: invalidPicture for a file that is no TIFF, and what
// writing throws; the file is then as it was.
void appendTiffPage(const std::string& path, const Page& page, const WriteOptions& options,
                    Task& task);

} // namespace kvn::imaging
