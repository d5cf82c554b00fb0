// PNG text chunks: plain, compressed and international ones, and the metadata blocks that are
// stored as texts under agreed names.
#pragma once

#include <span>
#include <string_view>

#include "imaging/metadata.h"

namespace kvn::imaging {

// Puts the content of a tEXt, zTXt or iTXt chunk where it belongs: the XMP packet, EXIF and IPTC
// blocks in hexadecimal form, the comment, or the list of texts. A broken chunk gives nothing.
void takePngText(std::string_view chunk, std::span<const std::uint8_t> data, Metadata& metadata);

// The chunks for comment, texts, XMP and IPTC.
void appendPngTexts(Bytes& to, const Metadata& metadata);

} // namespace kvn::imaging
