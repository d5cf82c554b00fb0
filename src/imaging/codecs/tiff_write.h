// Pages as a TIFF file.
//
// 1-bit and palette pictures, grey, RGB, each with unassociated alpha where the type has it;
// palettes with alpha become 32-bit. Metadata go along. A file whose pixels might pass 4 GB gets
// 64-bit offsets, and then no EXIF directories.
#pragma once

#include "imaging/codecs/codec.h"
#include "imaging/codecs/tiff_handle.h"

namespace kvn::imaging {

// Throws RuntimeError: invalidCall without a page, deviceIo, diskFull.
void writeTiff(std::span<const Page> pages, const WriteOptions& options, ByteSink& sink,
               Task& task);

// One page behind those that the writer's file has. `number` of `count` is written if `count` is
// more than 1.
void writeTiffPage(const TiffWriter& writer, ByteSink& sink, const Page& page,
                   const WriteOptions& options, int number, int count, Task& task);

// The most bytes that the page's pixels may take in the file.
std::uint64_t mostTiffBytes(const Page& page);

} // namespace kvn::imaging
