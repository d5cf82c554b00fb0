// Deflate and zlib streams (RFC 1951, RFC 1950) from pieces that can be made on several cores.
#pragma once

#include <cstdint>
#include <span>

#include "imaging/metadata.h"

namespace kvn::imaging {

// Appends deflate blocks for `data`, none of them marked as the last, that end on a byte. Pieces
// refer to nothing before them, so they can be made in any order and joined; a piece should be a
// quarter of a megabyte at least. Picks the coder that suits the data: bytes alone for the
// residues of photographs, repeated strings for the rest.
void appendDeflatePiece(std::span<const std::uint8_t> data, Bytes& out);

// What stands before the first piece of a zlib stream, and after the last one.
Bytes zlibHead();
Bytes zlibTail(std::uint32_t adler32);

// A whole zlib stream of one piece, for small or many separate pieces of data.
Bytes zlibStream(std::span<const std::uint8_t> data);

std::uint32_t adler32Of(std::span<const std::uint8_t> data);
// The checksum of two stretches of data joined, the second `size` bytes long.
std::uint32_t adler32Joined(std::uint32_t first, std::uint32_t second, std::uint64_t size);

// Turns a complete deflate stream that begins at `begin` into a piece: clears the mark of its last
// block and ends it on a byte. The stream must be a valid one.
void openDeflateStream(Bytes& out, std::size_t begin);

} // namespace kvn::imaging
