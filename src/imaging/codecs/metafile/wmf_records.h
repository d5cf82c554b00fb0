// What each WMF record does to a drawing.
#pragma once

#include <cstdint>
#include <span>

#include "imaging/codecs/metafile/drawing.h"

namespace kvn::imaging::metafile {

// `record` is the whole record with size and function number. With a fixed window the picture is
// what the window shows: viewport and mapping mode, which belong to one device, are not looked
// at. Unknown records, and fields that are not there, do nothing or count as 0.
void playWmfRecord(Drawing& drawing, std::uint32_t function, std::span<const std::uint8_t> record,
                   bool fixedWindow);

} // namespace kvn::imaging::metafile
