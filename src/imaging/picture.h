// What a file holds once it is read: pages in the file's order.
#pragma once

#include <string>
#include <vector>

#include "imaging/metadata.h"
#include "imaging/raster.h"

namespace kvn::imaging {

// The numbers up to 10 are those of the save table; the rest can only be read.
enum class FileType : int {
    Unknown = 0,
    Jpeg = 1,
    Png = 2,
    Tiff = 3,
    Pcx = 4,
    Tga = 5,
    Bmp = 6,
    Wmf = 7,
    Emf = 8,
    Psd = 9,
    Wbmp = 10,
    Gif = 11,
    Ico = 12,
};

struct Page {
    Raster raster;
    MetadataRef metadata; // may be null
    std::string name;     // the page's own name in the file, mostly empty
};

struct Picture {
    FileType type = FileType::Unknown;
    std::vector<Page> pages;
    // What was wrong with the file though it could be read, a sentence each.
    std::vector<std::string> warnings;
};

} // namespace kvn::imaging
