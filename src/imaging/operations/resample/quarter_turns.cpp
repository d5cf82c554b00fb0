#include "imaging/operations/resample/quarter_turns.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "imaging/convert_rows.h"
#include "imaging/operations/basic_geometry_rows.h"

namespace kvn::imaging {
namespace {

// A tile of the result is written by rows and read by columns; both sides of one stay in the
// nearest cache.
constexpr int tileWidth = 64, tileHeight = 32;

// `count` pixels of a column, `step` bytes from one to the next, side by side.
template <int Bytes>
void copyColumn(const std::uint8_t* from, std::ptrdiff_t step, int count, std::uint8_t* to) {
    if constexpr (Bytes == 3) {
        // Four bytes at a time are one move; the last pixel must not reach over its end.
        for (int x = 0; x + 1 < count; ++x, from += step, to += 3)
            std::memcpy(to, from, 4);
        std::memcpy(to, from, 3);
    } else {
        for (int x = 0; x < count; ++x, from += step, to += Bytes)
            std::memcpy(to, from, Bytes);
    }
}

// Rows y0 to y1 of the result. Clockwise, row y is column y of the source from the bottom up;
// the other way round, it is column height - 1 - y from the top down.
template <int Bytes>
void turnTiles(const ConstView& in, const View& out, bool clockwise, int y0, int y1) {
    const auto stride = static_cast<std::ptrdiff_t>(in.stride);
    for (int top = y0; top < y1; top += tileHeight)
        for (int left = 0; left < out.width; left += tileWidth) {
            const int count = std::min(tileWidth, out.width - left);
            for (int y = top; y < std::min(top + tileHeight, y1); ++y) {
                const int column = clockwise ? y : out.height - 1 - y;
                const int row = clockwise ? in.height - 1 - left : left;
                copyColumn<Bytes>(in.row(row) + std::ptrdiff_t{column} * Bytes,
                                  clockwise ? -stride : stride, count,
                                  out.row(y) + std::ptrdiff_t{left} * Bytes);
            }
        }
}

void turnQuarter(const ConstView& in, const View& out, bool clockwise, Task& task) {
    constexpr decltype(&turnTiles<1>) turners[] = {turnTiles<1>, turnTiles<2>, turnTiles<3>,
                                                   turnTiles<4>};
    const auto turn = turners[bytesPerPixel(in.type) - 1];
    parallelRows(
        out.height, task, [&](int y0, int y1) { turn(in, out, clockwise, y0, y1); }, tileHeight);
}

// Bits as a picture of bytes, 0 and 1.
Raster unpacked(const Raster& source, Task& task) {
    Raster bytes = Raster::uninitialized(ImageType::Gray8, source.width(), source.height());
    const ConstView in = source.view();
    const View out = bytes.edit();
    parallelRows(source.height(), task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            expandBits(in.row(y), out.row(y), in.width);
    });
    return bytes;
}

Raster packedAgain(const Raster& bytes, Task& task) {
    Raster bits = Raster::uninitialized(ImageType::Bit1, bytes.width(), bytes.height());
    const ConstView in = bytes.view();
    const View out = bits.edit();
    parallelRows(bytes.height(), task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            packBits(in.row(y), out.row(y), in.width);
    });
    return bits;
}

Raster turnedBytes(const Raster& source, int quarters, Task& task) {
    const bool half = quarters == 2;
    Raster result = Raster::uninitialized(source.type(), half ? source.width() : source.height(),
                                          half ? source.height() : source.width());
    const ConstView in = source.view();
    const View out = result.edit();
    if (!half) {
        turnQuarter(in, out, quarters == 1, task);
        return result;
    }
    parallelRows(out.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            reversePixels(in.row(in.height - 1 - y), out.row(y), in.width, bytesPerPixel(in.type));
    });
    return result;
}

} // namespace

Raster quarterTurned(const Raster& source, int quarters, Task& task) {
    if (quarters == 0) return source;
    Raster result;
    if (source.type() == ImageType::Bit1) {
        Task quiet;
        quiet.threads = task.threads;
        result = packedAgain(turnedBytes(unpacked(source, quiet), quarters, quiet), task);
    } else {
        result = turnedBytes(source, quarters, task);
    }
    result.setPalette(source.palette());
    return result;
}

} // namespace kvn::imaging
