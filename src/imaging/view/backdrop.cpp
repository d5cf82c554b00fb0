#include "imaging/view/backdrop.h"

#include <algorithm>
#include <cstring>

#include "imaging/view/screen_pixels.h"

namespace kvn::imaging {

Backdrop::Backdrop(const Raster& tile, Rgba color) : tile_(tile), color_(opaque(color)) {
    if (!tile.isEmpty()) reader_ = SampleReader(tile);
}

void Backdrop::tilePart(int x, int y, int count, std::uint32_t* out,
                        std::vector<std::uint8_t>& scratch) const {
    scratch.resize(std::max(scratch.size(), SampleReader::scratchBytes(count)));
    packRow(reader_.form(), reader_.row(tile_.view(), y, x, count, scratch.data()), count, out);
    if (reader_.form() != SampleForm::Rgba) return;
    const std::uint32_t color = color_;
    for (int i = 0; i < count; ++i)
        layOver(out + i, &color, 1, out + i);
}

void Backdrop::row(int x, int y, int count, std::uint32_t* out,
                   std::vector<std::uint8_t>& scratch) const {
    if (tile_.isEmpty()) {
        std::fill_n(out, count, color_);
        return;
    }
    const int width = tile_.width();
    y %= tile_.height();
    x %= width;
    // Once round the tile; what follows repeats it.
    const int once = std::min(count, width), untilEdge = std::min(once, width - x);
    tilePart(x, y, untilEdge, out, scratch);
    if (once > untilEdge) tilePart(0, y, once - untilEdge, out + untilEdge, scratch);
    for (int done = once; done < count;) {
        const int more = std::min(done, count - done);
        std::memcpy(out + done, out, static_cast<std::size_t>(more) * sizeof *out);
        done += more;
    }
}

} // namespace kvn::imaging
