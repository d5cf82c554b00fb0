#include "imaging/metadata/orientation.h"

#include <algorithm>
#include <cstring>

namespace kvn::imaging {

namespace {

// Where the pixel of the upright picture at (x, y) stands in the stored one:
// (x0 + x * xx + y * xy, y0 + x * yx + y * yy).
struct Road {
    int x0, y0, xx, xy, yx, yy;
};

Road roadFor(int orientation, int width, int height) {
    const int right = width - 1, bottom = height - 1;
    switch (orientation) {
    case 2:
        return {right, 0, -1, 0, 0, 1};
    case 3:
        return {right, bottom, -1, 0, 0, -1};
    case 4:
        return {0, bottom, 1, 0, 0, -1};
    case 5:
        return {0, 0, 0, 1, 1, 0};
    case 6:
        return {0, bottom, 0, 1, -1, 0};
    case 7:
        return {right, bottom, 0, -1, -1, 0};
    case 8:
        return {right, 0, 0, -1, 1, 0};
    default:
        return {0, 0, 1, 0, 0, 1};
    }
}

// Columns in tiles, so that a turn by a quarter finds the same source lines still in the cache.
constexpr int tile = 64;

template <int bytes>
void turnRows(const ConstView& in, const View& out, const Road& road, int y0, int y1) {
    const auto stride = static_cast<std::ptrdiff_t>(in.stride);
    const std::ptrdiff_t stepX = road.xx * bytes + road.yx * stride;
    const std::ptrdiff_t stepY = road.xy * bytes + road.yy * stride;
    const std::uint8_t* origin = in.data + road.x0 * bytes + road.y0 * stride;
    for (int left = 0; left < out.width; left += tile) {
        const int right = std::min(left + tile, out.width);
        for (int y = y0; y < y1; ++y) {
            const std::uint8_t* from = origin + left * stepX + y * stepY;
            std::uint8_t* to = out.row(y) + left * bytes;
            for (int x = left; x < right; ++x, from += stepX, to += bytes)
                std::memcpy(to, from, bytes);
        }
    }
}

void turnBits(const ConstView& in, const View& out, const Road& road, int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
        std::uint8_t* to = out.row(y);
        std::memset(to, 0, rowBytes(ImageType::Bit1, out.width));
        for (int x = 0; x < out.width; ++x) {
            const int sx = road.x0 + x * road.xx + y * road.xy;
            const int sy = road.y0 + x * road.yx + y * road.yy;
            const int bit = in.row(sy)[sx >> 3] >> (7 - (sx & 7)) & 1;
            to[x >> 3] |= static_cast<std::uint8_t>(bit << (7 - (x & 7)));
        }
    }
}

} // namespace

Raster turnedUpright(const Raster& source, int orientation, Task& task) {
    if (source.isEmpty() || orientation < 2 || orientation > 8) return source;
    const bool swaps = swapsSides(orientation);
    Raster upright = Raster::uninitialized(source.type(), swaps ? source.height() : source.width(),
                                           swaps ? source.width() : source.height());
    upright.setPalette(source.palette());
    const ConstView in = source.view();
    const View out = upright.edit();
    const Road road = roadFor(orientation, source.width(), source.height());
    parallelRows(out.height, task, [&](int y0, int y1) {
        switch (bytesPerPixel(source.type())) {
        case 1:
            return turnRows<1>(in, out, road, y0, y1);
        case 2:
            return turnRows<2>(in, out, road, y0, y1);
        case 3:
            return turnRows<3>(in, out, road, y0, y1);
        case 4:
            return turnRows<4>(in, out, road, y0, y1);
        default:
            return turnBits(in, out, road, y0, y1);
        }
    });
    return upright;
}

} // namespace kvn::imaging
