// The parts of the JPEG codec.
//
// Read: baseline, extended and progressive files of 8 bits, Huffman or arithmetic coded. Grey
// gives Gray8, three channels Rgb24. Four channels (CMYK, or YCCK) become Rgb24 by
// R = (255 - C) * (255 - K) / 255 and so on, without the profile, which told of inks and is
// dropped. 12-bit and lossless files are refused. The picture is turned upright after its EXIF
// orientation; the metadata keeps the EXIF block as it stood, and a writer makes it true again.
//
// A large file of one scan is decoded by two threads where there are two: one decodes the upper
// part, the other runs over its codes and decodes the lower. A file that turns out damaged is then
// read in order.
//
// A damaged or cut file gives the rows that could be decoded, the rest black, and a warning.
//
// Write: grey types as grey, the others as colour; alpha is dropped without blending. Chroma is
// kept at full size from quality 90 on, halved both ways below.
#pragma once

#include "imaging/codecs/codec.h"

namespace kvn::imaging {

Picture readJpeg(std::span<const std::uint8_t> file, ReadLimits limits, Task& task);
std::vector<PageFacts> jpegFacts(std::span<const std::uint8_t> file, ReadLimits limits);
void writeJpeg(const Page& page, const WriteOptions& options, ByteSink& sink, Task& task);

} // namespace kvn::imaging
