// The pixels of a PSD file whose sections have been read.
#pragma once

#include <string>
#include <vector>

#include "imaging/codecs/psd_file.h"
#include "imaging/task.h"

namespace kvn::imaging {

// The merged picture as it is stored, not yet upright. Rows that are missing are black, or clear
// where their alpha is missing, and a warning says so.
Raster readPsdPixels(const PsdFile& psd, Task& task, std::vector<std::string>& warnings);

} // namespace kvn::imaging
