#include "imaging/operations/art/multiplied.h"

#include <algorithm>

#include "imaging/operations/support/simd.h"
#include "imaging/rgba.h"

namespace kvn::imaging {
namespace {

template <int channels>
inline __attribute__((always_inline)) void multiplyPixels(const std::uint8_t* __restrict in,
                                                          std::uint8_t* __restrict out, int width) {
    for (int x = 0; x < width; ++x, in += channels, out += channels) {
        for (int c = 0; c < channels - 1; ++c)
            out[c] = mul255(in[c], in[channels - 1]);
        out[channels - 1] = in[channels - 1];
    }
}
KVN_CLONES void multiplyRow(const std::uint8_t* in, std::uint8_t* out, int width, int channels) {
    channels == 4 ? multiplyPixels<4>(in, out, width) : multiplyPixels<2>(in, out, width);
}

template <int channels>
inline __attribute__((always_inline)) void
straightenPixels(const std::uint8_t* __restrict before, std::uint8_t* __restrict row, int width) {
    for (int x = 0; x < width; ++x, before += channels, row += channels) {
        const int alpha = row[channels - 1];
        const float scale = 255.0f / static_cast<float>(alpha > 0 ? alpha : 1);
        for (int c = 0; c < channels - 1; ++c) {
            const int color = static_cast<int>(static_cast<float>(row[c]) * scale + 0.5f);
            row[c] = static_cast<std::uint8_t>(alpha == 0 ? before[c] : color < 255 ? color : 255);
        }
    }
}
KVN_CLONES void straightenRow(const std::uint8_t* before, std::uint8_t* row, int width,
                              int channels) {
    channels == 4 ? straightenPixels<4>(before, row, width)
                  : straightenPixels<2>(before, row, width);
}

} // namespace

Raster multiplied(const Raster& source, Task& task) {
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    parallelRows(from.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            multiplyRow(from.row(y), to.row(y), from.width, bytesPerPixel(from.type));
    });
    return result;
}

Raster straightened(Raster mixed, const Raster& source, Task& task) {
    const ConstView before = source.view();
    const View rows = mixed.edit();
    parallelRows(rows.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            straightenRow(before.row(y), rows.row(y), rows.width, bytesPerPixel(rows.type));
    });
    return mixed;
}

} // namespace kvn::imaging
