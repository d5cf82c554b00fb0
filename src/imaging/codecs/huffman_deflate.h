// Deflate blocks made of literals and byte runs alone (RFC 1951).
//
// The residues of a filtered photograph hold next to no repeated strings: there, looking for them
// takes nine tenths of a compressor's time and makes the file larger, since its token statistics
// serve both. A Huffman code over the bytes, fitted to each block, is many times as fast.
#pragma once

#include <cstdint>
#include <span>

#include "imaging/metadata.h"

namespace kvn::imaging {

// Appends complete blocks that hold `data`, none of them marked as the last, and an empty stored
// block, so that the output ends on a byte and pieces can be joined.
void appendHuffmanBlocks(std::span<const std::uint8_t> data, Bytes& out);

} // namespace kvn::imaging
