#include "engine/detail/history_patch.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "engine/detail/history_pack.h"
#include "imaging/task.h"

namespace kvn::engine::detail {

namespace {

// Bands fit the second-level cache and give every thread several.
constexpr std::size_t bandBytes = std::size_t{512} << 10;
// The grain of looking for differences: a tile wastes little around a pen stroke, and a whole
// picture has some thousands.
constexpr std::size_t cellBytes = 384;
constexpr int cellRows = 32;

std::size_t rowBytesOf(const imaging::ConstView& view) {
    return imaging::rowBytes(view.type, view.width);
}

TileList emptyList(imaging::ImageType type) {
    TileList list;
    list.pixelBytes = static_cast<std::size_t>(std::max(1, imaging::bytesPerPixel(type)));
    return list;
}

void addTile(TileList& list, Tile tile) {
    tile.offset = list.size;
    tile.size = tile.rawSize();
    list.size += tile.size;
    list.tiles.push_back(tile);
}

void addBands(TileList& list, const Tile& area) {
    const auto fitting = bandBytes / std::max<std::size_t>(area.width, 1);
    const int step = static_cast<int>(std::clamp<std::size_t>(fitting, 1, 256));
    for (int y = 0; y < area.rows; y += step)
        addTile(list, {area.x, area.width, area.y + y, std::min(step, area.rows - y), 0, 0});
}

PackShape shapeOf(const Tile& tile, const TileList& list) {
    return {tile.width, tile.rows, list.pixelBytes};
}

// Packs one tile to `out` and returns its size there; a tile that would not shrink stays as it is.
std::uint64_t packTile(const Tile& tile, const TileList& list, const std::uint8_t* data,
                       std::size_t stride, std::uint8_t* out) {
    const std::uint64_t packed = packRows(shapeOf(tile, list), data, stride, out);
    if (packed < tile.rawSize()) return packed;
    for (int y = 0; y < tile.rows; ++y, data += stride)
        std::memcpy(out + static_cast<std::size_t>(y) * tile.width, data, tile.width);
    return tile.rawSize();
}

void unpackTile(const Tile& tile, const TileList& list, const std::uint8_t* bytes,
                std::uint8_t* data, std::size_t stride) {
    if (tile.size < tile.rawSize()) {
        unpackRows(shapeOf(tile, list), bytes, data, stride);
        return;
    }
    for (int y = 0; y < tile.rows; ++y, data += stride)
        std::memcpy(data, bytes + static_cast<std::size_t>(y) * tile.width, tile.width);
}

struct Rows {
    const std::uint8_t* data;
    std::size_t stride;
};

// `rowsOf(tile)` gives the pixels of a tile of the unpacked list.
template <typename RowsOf>
Patch pack(TileList list, const StopFlag& stop, const RowsOf& rowsOf) {
    // While a tile is packed it may need more than its pixels do.
    std::size_t slack = 0;
    for (const Tile& tile : list.tiles)
        slack = std::max(slack, packedBound(shapeOf(tile, list)));
    auto bytes = std::make_shared<ByteBlock>(list.size + slack);
    std::uint64_t end = 0;
    for (Tile& tile : list.tiles) {
        if (stop.load(std::memory_order_relaxed)) return {};
        const Rows rows = rowsOf(tile);
        tile.size = packTile(tile, list, rows.data, rows.stride, bytes->data() + end);
        tile.offset = end;
        end += tile.size;
    }
    bytes->shrink(end);
    list.size = end;
    list.isPacked = true;
    return {std::make_shared<const TileList>(std::move(list)), std::move(bytes), nullptr};
}

Rows rowsIn(const imaging::ConstView& view, const Tile& tile) {
    return {view.row(tile.y) + tile.x, view.stride};
}

// The bytes of some tiles that follow one another, valid until the next call on this thread.
const std::uint8_t* bytesOf(const Patch& patch, const Tile& first, const Tile& last) {
    if (patch.bytes) return patch.bytes->data() + first.offset;
    // Kept for the next call: fresh memory would cost as much as the unpacking.
    thread_local std::vector<std::uint8_t> buffer;
    const std::uint64_t size = last.offset + last.size - first.offset;
    if (buffer.size() < size) buffer.resize(size);
    patch.extent->read(first.offset, size, buffer.data());
    return buffer.data();
}

// Unpacks all tiles, each to where `target` says, on all threads.
template <typename Target>
void unpackAll(const Patch& patch, const Target& target) {
    imaging::Task task;
    const auto& tiles = patch.list->tiles;
    imaging::parallelRows(
        static_cast<int>(tiles.size()), task,
        [&](int first, int end) {
            const auto begin = static_cast<std::size_t>(first);
            const std::uint8_t* bytes =
                bytesOf(patch, tiles[begin], tiles[static_cast<std::size_t>(end) - 1]);
            for (int i = first; i < end; ++i) {
                const Tile& tile = tiles[static_cast<std::size_t>(i)];
                const auto [data, stride] = target(i);
                unpackTile(tile, *patch.list, bytes + (tile.offset - tiles[begin].offset), data,
                           stride);
            }
        },
        1);
}

bool sameCell(const imaging::ConstView& a, const imaging::ConstView& b, const Tile& cell) {
    for (int y = cell.y; y < cell.y + cell.rows; ++y)
        if (std::memcmp(a.row(y) + cell.x, b.row(y) + cell.x, cell.width) != 0) return false;
    return true;
}

// Adds the cell, or makes the last tile longer if it ends where the cell begins.
void addCell(TileList& list, const Tile& cell) {
    if (!list.tiles.empty()) {
        Tile& last = list.tiles.back();
        if (last.y == cell.y && last.x + last.width == cell.x) {
            last.width += cell.width;
            last.size = last.rawSize();
            list.size = last.offset + last.size;
            return;
        }
    }
    addTile(list, cell);
}

} // namespace

TileList wholeTiles(const imaging::ConstView& view) {
    TileList list = emptyList(view.type);
    addBands(list, {0, rowBytesOf(view), 0, view.height, 0, 0});
    return list;
}

TileList rectTiles(const imaging::ConstView& view, const imaging::Rect& rect) {
    TileList list = emptyList(view.type);
    const imaging::Rect part = rect.intersected({0, 0, view.width, view.height});
    if (part.isEmpty()) return list;
    const auto bits = static_cast<std::size_t>(imaging::bitsPerPixel(view.type));
    const std::size_t begin = static_cast<std::size_t>(part.x) * bits / 8;
    const std::size_t end = (static_cast<std::size_t>(part.right()) * bits + 7) / 8;
    addBands(list, {begin, end - begin, part.y, part.height, 0, 0});
    return list;
}

std::optional<TileList> differentTiles(const imaging::ConstView& a, const imaging::ConstView& b,
                                       const StopFlag& stop) {
    TileList list = emptyList(a.type);
    const std::size_t width = rowBytesOf(a);
    const std::uint64_t most = std::uint64_t{width} * static_cast<unsigned>(a.height) / 2;
    for (int y = 0; y < a.height; y += cellRows) {
        if (stop.load(std::memory_order_relaxed)) return std::nullopt;
        for (std::size_t x = 0; x < width; x += cellBytes) {
            const Tile cell{
                x, std::min(cellBytes, width - x), y, std::min(cellRows, a.height - y), 0, 0};
            if (!sameCell(a, b, cell)) addCell(list, cell);
        }
        if (list.size > most) return std::nullopt;
    }
    return list;
}

Patch copiedPatch(const imaging::ConstView& view, TileList list) {
    auto bytes = std::make_shared<ByteBlock>(list.size);
    for (const Tile& tile : list.tiles)
        for (int y = 0; y < tile.rows; ++y)
            std::memcpy(bytes->data() + tile.offset + static_cast<std::size_t>(y) * tile.width,
                        view.row(tile.y + y) + tile.x, tile.width);
    return {std::make_shared<const TileList>(std::move(list)), std::move(bytes), nullptr};
}

Patch packedPatch(const imaging::ConstView& view, TileList list, const StopFlag& stop) {
    return pack(std::move(list), stop, [&](const Tile& tile) { return rowsIn(view, tile); });
}

Patch packedPatch(const Patch& patch, const StopFlag& stop) {
    const std::uint8_t* bytes = patch.bytes->data();
    return pack(*patch.list, stop, [bytes](const Tile& tile) {
        return Rows{bytes + tile.offset, tile.width};
    });
}

Patch unpackedPatch(const Patch& patch) {
    TileList list;
    list.pixelBytes = patch.list->pixelBytes;
    list.tiles.reserve(patch.list->tiles.size());
    for (const Tile& tile : patch.list->tiles)
        addTile(list, tile);
    auto bytes = std::make_shared<ByteBlock>(list.size);
    unpackAll(patch, [&](int i) {
        const Tile& to = list.tiles[static_cast<std::size_t>(i)];
        return std::pair(bytes->data() + to.offset, to.width);
    });
    return {std::make_shared<const TileList>(std::move(list)), std::move(bytes), nullptr};
}

void applyPatch(const Patch& patch, const imaging::View& view) {
    unpackAll(patch, [&](int i) {
        const Tile& tile = patch.list->tiles[static_cast<std::size_t>(i)];
        return std::pair(view.row(tile.y) + tile.x, view.stride);
    });
}

void swapPatch(const Patch& patch, const imaging::View& view) noexcept {
    for (const Tile& tile : patch.list->tiles) {
        std::uint8_t* kept = patch.bytes->data() + tile.offset;
        for (int y = 0; y < tile.rows; ++y, kept += tile.width)
            std::swap_ranges(kept, kept + tile.width, view.row(tile.y + y) + tile.x);
    }
}

} // namespace kvn::engine::detail
