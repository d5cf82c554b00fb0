#include "imaging/operations/art/multiplied.h"

#include <algorithm>

#include "imaging/rgba.h"

namespace kvn::imaging {
namespace {

// `pixel(in, out)` makes one pixel.
template <class Pixel>
Raster everyPixel(const Raster& source, Task& task, const Pixel& pixel) {
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    const std::size_t step = static_cast<std::size_t>(bytesPerPixel(from.type));
    parallelRows(from.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            for (std::size_t i = 0; i < step * static_cast<std::size_t>(from.width); i += step)
                pixel(y, i, from.row(y) + i, to.row(y) + i);
    });
    return result;
}

} // namespace

Raster multiplied(const Raster& source, Task& task) {
    const int last = bytesPerPixel(source.type()) - 1;
    return everyPixel(source, task,
                      [last](int, std::size_t, const std::uint8_t* in, std::uint8_t* out) {
                          for (int c = 0; c < last; ++c)
                              out[c] = mul255(in[c], in[last]);
                          out[last] = in[last];
                      });
}

Raster straightened(const Raster& mixed, const Raster& source, Task& task) {
    const int last = bytesPerPixel(mixed.type()) - 1;
    const ConstView before = source.view();
    return everyPixel(
        mixed, task, [=](int y, std::size_t i, const std::uint8_t* in, std::uint8_t* out) {
            const int alpha = in[last];
            for (int c = 0; c < last; ++c)
                out[c] = alpha == 0 ? before.row(y)[i + static_cast<std::size_t>(c)]
                                    : static_cast<std::uint8_t>(
                                          std::min(255, (in[c] * 255 + alpha / 2) / alpha));
            out[last] = in[last];
        });
}

} // namespace kvn::imaging
