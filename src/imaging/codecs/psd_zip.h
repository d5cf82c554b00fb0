// PSD pixels in one zlib stream, with or without differences between neighbours in its place.
#pragma once

#include "imaging/codecs/codec.h"
#include "imaging/codecs/psd_file.h"

namespace kvn::imaging {

// Unpacks the channels that are shown, so that `psd` is as if they stood there plain. Of a damaged
// stream the rows before the damage are kept. Throws RuntimeError(outOfMemory) if they are larger
// than what is left of the limits.
void unzipPsd(PsdFile& psd, const ReadLimits& limits);

} // namespace kvn::imaging
