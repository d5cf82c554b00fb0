// Filters that make each row of the result from the rows around it in the picture: promotes
// palette pictures, cuts the work into bands, carries alpha over.
#pragma once

#include <algorithm>

#include "imaging/operations/filters/padded_rows.h"
#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {

inline void copyAlpha(const std::uint8_t* pixels, std::uint8_t* out, int width, int channels) {
    for (int i = channels - 1; i < width * channels; i += channels)
        out[i] = pixels[i];
}

struct WindowSize {
    int above, below, side;
};

// `row(rows, out, view)` makes one row from the padded rows around it (PaddedRows::around). It is
// copied for every band, so it may keep scratch memory in itself.
template <class Row>
Raster throughWindow(const Raster& picture, WindowSize window, bool keepAlpha, Task& task,
                     const Row& row) {
    const Raster source = promoted(picture, task);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    const bool carries = keepAlpha && hasAlpha(from.type);
    parallelRows(
        from.height, task,
        [&](int y0, int y1) {
            PaddedRows rows(from, window.above, window.below, window.side);
            Row work = row;
            for (int y = y0; y < y1; ++y) {
                work(rows.around(y), to.row(y), from);
                if (carries)
                    copyAlpha(from.row(y), to.row(y), from.width, bytesPerPixel(from.type));
            }
        },
        std::max(16, window.above + window.below));
    return result;
}

} // namespace kvn::imaging
