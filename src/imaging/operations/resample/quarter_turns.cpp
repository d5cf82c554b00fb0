#include "imaging/operations/resample/quarter_turns.h"

#include <algorithm>

#include "imaging/convert_rows.h"
#include "imaging/operations/basic_geometry_rows.h"
#include "imaging/operations/resample/turn_tiles.h"

namespace kvn::imaging {
namespace {

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
        const bool clockwise = quarters == 1;
        // Columns by whole tiles, so that the tiles read whole cache lines.
        constexpr int tile = 64;
        parallelRows((in.width + tile - 1) / tile, task,
                     [&](int t0, int t1) {
                         turnColumns(in, out, clockwise, t0 * tile, std::min(in.width, t1 * tile));
                     },
                     4);
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
