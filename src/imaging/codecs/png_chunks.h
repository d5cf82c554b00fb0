// The chunks of a PNG file: which there are, whether they are whole, what they say beside the
// pixels. Nothing is allocated by what the file claims.
#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "imaging/codecs/png.h"
#include "imaging/metadata.h"

namespace kvn::imaging {

struct PngOutline {
    std::optional<PngHeader> header;       // with a valid combination of depth and colour
    std::span<const std::uint8_t> palette; // red, green, blue each
    std::optional<std::span<const std::uint8_t>> transparency;
    std::vector<std::span<const std::uint8_t>> data; // the IDAT chunks, the last perhaps cut
    std::size_t dataBytes = 0;
    bool intact = false; // every checksum right, the end there
    Metadata metadata;
};

PngOutline outlinePng(std::span<const std::uint8_t> file);

// Appends one chunk.
void appendPngChunk(Bytes& to, std::string_view name, std::span<const std::uint8_t> data);

// The chunks that carry the metadata, to be put between header and palette.
void appendPngMetadata(Bytes& to, const Metadata& metadata);

} // namespace kvn::imaging
