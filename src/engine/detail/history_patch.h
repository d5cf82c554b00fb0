// Parts of a picture kept aside: where they lie in it, and their bytes, packed or as they are, in
// memory, in the temporary file, or both. A patch knows nothing of undo; its bytes never change.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "engine/detail/history_file.h"
#include "imaging/raster.h"

namespace kvn::engine::detail {

// A rectangle of the picture's storage. In columns of bytes, so that every pixel type is alike:
// eight 1-bit pixels go together.
struct Tile {
    std::size_t x = 0;     // first byte in the row
    std::size_t width = 0; // bytes
    int y = 0;
    int rows = 0;
    std::uint64_t offset = 0; // of its bytes in the patch
    std::uint64_t size = 0;   // of its bytes; all of them, width * rows, if it is not packed

    std::uint64_t rawSize() const { return std::uint64_t{width} * static_cast<unsigned>(rows); }
};

struct TileList {
    std::vector<Tile> tiles;
    std::size_t pixelBytes = 1;
    std::uint64_t size = 0; // of all bytes
    bool isPacked = false;  // has been tried, whether it gained anything or not
};

struct Patch {
    std::shared_ptr<const TileList> list; // null: no patch at all
    std::shared_ptr<const ByteBlock> bytes;
    ExtentRef extent;

    explicit operator bool() const { return list != nullptr; }
    std::uint64_t bytesInMemory() const { return bytes ? bytes->size() : 0; }
    std::uint64_t bytesOnDisk() const { return extent ? extent->size() : 0; }
};

// Set from another thread, ends a long piece of work, which then gives no patch.
using StopFlag = std::atomic<bool>;

// The whole picture in bands.
TileList wholeTiles(const imaging::ConstView& view);
// What lies in the rectangle.
TileList rectTiles(const imaging::ConstView& view, const imaging::Rect& rect);
// Where the two differ, both of one type and size. Nothing if that is more than half of it.
std::optional<TileList> differentTiles(const imaging::ConstView& a, const imaging::ConstView& b,
                                       const StopFlag& stop);

// The tiles' bytes from the picture as they are.
Patch copiedPatch(const imaging::ConstView& view, TileList list);
// The same packed, on the calling thread. No patch if stopped.
Patch packedPatch(const imaging::ConstView& view, TileList list, const StopFlag& stop);
// A copied patch packed.
Patch packedPatch(const Patch& patch, const StopFlag& stop);
// A packed patch as it was, in memory of its own.
Patch unpackedPatch(const Patch& patch);

// Writes the patch into a picture of the type and size it came from, with all threads. Throws
// RuntimeError(deviceIo, outOfMemory), with the picture half written.
void applyPatch(const Patch& patch, const imaging::View& view);
// Exchanges the pixels with a copied or unpacked patch that nobody else has.
void swapPatch(const Patch& patch, const imaging::View& view) noexcept;

} // namespace kvn::engine::detail
