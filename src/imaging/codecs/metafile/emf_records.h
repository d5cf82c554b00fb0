// What each EMF record does to a drawing.
#pragma once

#include <cstdint>
#include <span>

#include "imaging/codecs/metafile/drawing.h"

namespace kvn::imaging::metafile {

// `record` is the whole record with type and size. Unknown ones, and fields that are not there,
// do nothing or count as 0.
void playEmfRecord(Drawing& drawing, std::uint32_t type, std::span<const std::uint8_t> record);

} // namespace kvn::imaging::metafile
