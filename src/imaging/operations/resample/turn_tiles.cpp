#include "imaging/operations/resample/turn_tiles.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/resample/turn_tiles.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/cache_control.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Rows and columns of the source in a tile: whole cache lines on both sides for every type, and so
// many of them in the result that memory takes them in one go.
constexpr int tileRows = 256, tileColumns = 64;
constexpr int cacheLine = 64;
constexpr int bufferRow = tileRows * 4 + cacheLine; // bytes; a row's end may be written over

// A tile of the source on its way: the pixel `from` becomes the first of the first row of `to`, the
// pixel `rowStep` bytes from it the next one.
struct Tile {
    const std::uint8_t* from;
    std::ptrdiff_t rowStep;
    std::uint8_t* to;
};

// Blocks of as many rows and columns as a register holds pixels.
template <int Bytes>
struct Block {
    using Lane = std::conditional_t<Bytes == 1, std::uint8_t,
                                    std::conditional_t<Bytes == 2, std::uint16_t, std::uint32_t>>;
    static constexpr int size = HWY_TARGET == HWY_SCALAR ? 1 : 16 / sizeof(Lane);

#if HWY_TARGET == HWY_SCALAR
    static void turn(const Tile& tile, int column, int row) {
        std::memcpy(tile.to + column * bufferRow + row * Bytes,
                    tile.from + row * tile.rowStep + column * Bytes, Bytes);
    }
#else
    using D = hn::FixedTag<Lane, size>;
    using V = hn::Vec<D>;

    // Three bytes a pixel are spread over four and brought together again.
    static HWY_INLINE V load(const std::uint8_t* from) {
        const hn::FixedTag<std::uint8_t, 16> bytes;
        alignas(16) static constexpr std::uint8_t spread[] = {0, 1, 2, 128, 3, 4,  5,  128,
                                                              6, 7, 8, 128, 9, 10, 11, 128};
        auto v = hn::LoadU(bytes, from);
        if constexpr (Bytes == 3) v = hn::TableLookupBytesOr0(v, hn::Load(bytes, spread));
        return hn::BitCast(D(), v);
    }
    static HWY_INLINE void store(V pixels, std::uint8_t* to) {
        const hn::FixedTag<std::uint8_t, 16> bytes;
        alignas(16) static constexpr std::uint8_t gather[] = {0,  1,  2,  4,  5,   6,   8,   9,
                                                              10, 12, 13, 14, 128, 128, 128, 128};
        auto v = hn::BitCast(bytes, pixels);
        if constexpr (Bytes == 3) v = hn::TableLookupBytesOr0(v, hn::Load(bytes, gather));
        hn::StoreU(v, bytes, to);
    }
    static HWY_INLINE void turn(const Tile& tile, int column, int row) {
        const D d;
        const std::uint8_t* from = tile.from + row * tile.rowStep + column * Bytes;
        V rows[size], next[size];
        for (int i = 0; i < size; ++i)
            rows[i] = load(from + i * tile.rowStep);
        for (int round = 1; round < size; round *= 2) {
            for (int i = 0; i < size / 2; ++i) {
                next[2 * i] = hn::InterleaveLower(d, rows[i], rows[i + size / 2]);
                next[2 * i + 1] = hn::InterleaveUpper(d, rows[i], rows[i + size / 2]);
            }
            for (int i = 0; i < size; ++i)
                rows[i] = next[i];
        }
        std::uint8_t* to = tile.to + column * bufferRow + row * Bytes;
        for (int i = 0; i < size; ++i)
            store(rows[i], to + i * bufferRow);
    }
#endif
};

// All of a tile, or what the picture has of it.
template <int Bytes>
HWY_INLINE void turnTile(const Tile& tile, int columns, int rows) {
    constexpr int size = Block<Bytes>::size;
    const int wholeColumns = columns / size * size, wholeRows = rows / size * size;
    for (int column = 0; column < wholeColumns; column += size)
        for (int row = 0; row < wholeRows; row += size)
            Block<Bytes>::turn(tile, column, row);
    for (int column = 0; column < columns; ++column)
        for (int row = column < wholeColumns ? wholeRows : 0; row < rows; ++row)
            std::memcpy(tile.to + column * bufferRow + row * Bytes,
                        tile.from + row * tile.rowStep + column * Bytes, Bytes);
}

// Has memory bring the tile of whole rows that begins at `from`: rows far apart are nothing that it
// foresees.
template <int Bytes>
HWY_INLINE void fetchTile(const std::uint8_t* from, std::ptrdiff_t rowStep, int rows) {
    for (int row = 0; row < rows; ++row, from += rowStep)
        for (int line = 0; line < tileColumns * Bytes; line += cacheLine)
            hwy::Prefetch(from + line);
}

// Past the caches: nobody reads the result before all of it is written.
HWY_INLINE void putLines(const std::uint8_t* HWY_RESTRICT from, std::uint8_t* HWY_RESTRICT to,
                         std::size_t count) {
    const hn::ScalableTag<std::uint8_t> d;
    for (std::size_t i = 0; i < count; i += hn::Lanes(d))
        hn::Stream(hn::Load(d, from + i), d, to + i);
}

template <int Bytes>
HWY_INLINE void turnTiles(const ConstView& in, const View& out, bool clockwise, int x0, int x1) {
    alignas(cacheLine) std::uint8_t buffer[tileColumns * bufferRow];
    const auto stride = static_cast<std::ptrdiff_t>(in.stride);
    for (int left = 0; left < out.width; left += tileRows) {
        const int rows = std::min(tileRows, out.width - left);
        const std::uint8_t* first = in.row(clockwise ? in.height - 1 - left : left);
        for (int x = x0; x < x1; x += tileColumns) {
            const std::ptrdiff_t step = clockwise ? -stride : stride;
            if (x + tileColumns < x1)
                fetchTile<Bytes>(first + (x + tileColumns) * Bytes, step, rows);
            const int columns = std::min(tileColumns, x1 - x);
            turnTile<Bytes>({first + x * Bytes, step, buffer}, columns, rows);
            for (int i = 0; i < columns; ++i) {
                std::uint8_t* to = out.row(clockwise ? x + i : out.height - 1 - x - i) +
                                   std::ptrdiff_t{left} * Bytes;
                if (rows == tileRows)
                    putLines(buffer + i * bufferRow, to, tileRows * Bytes);
                else
                    std::memcpy(to, buffer + i * bufferRow, static_cast<std::size_t>(rows) * Bytes);
            }
        }
    }
    hwy::FlushStream();
}

void turn1(const ConstView& in, const View& out, bool clockwise, int x0, int x1) {
    turnTiles<1>(in, out, clockwise, x0, x1);
}
void turn2(const ConstView& in, const View& out, bool clockwise, int x0, int x1) {
    turnTiles<2>(in, out, clockwise, x0, x1);
}
void turn3(const ConstView& in, const View& out, bool clockwise, int x0, int x1) {
    turnTiles<3>(in, out, clockwise, x0, x1);
}
void turn4(const ConstView& in, const View& out, bool clockwise, int x0, int x1) {
    turnTiles<4>(in, out, clockwise, x0, x1);
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(turn1);
HWY_EXPORT(turn2);
HWY_EXPORT(turn3);
HWY_EXPORT(turn4);

void turnColumns(const ConstView& in, const View& out, bool clockwise, int x0, int x1) {
    switch (bytesPerPixel(in.type)) {
    case 1:
        return HWY_DYNAMIC_DISPATCH(turn1)(in, out, clockwise, x0, x1);
    case 2:
        return HWY_DYNAMIC_DISPATCH(turn2)(in, out, clockwise, x0, x1);
    case 3:
        return HWY_DYNAMIC_DISPATCH(turn3)(in, out, clockwise, x0, x1);
    default:
        return HWY_DYNAMIC_DISPATCH(turn4)(in, out, clockwise, x0, x1);
    }
}

} // namespace kvn::imaging
#endif
