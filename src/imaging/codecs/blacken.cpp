#include "imaging/codecs/blacken.h"

#include <cstring>

namespace kvn::imaging {

void blacken(const View& view, const Palette& palette, const Rect& rect) {
    int value = 0;
    if (hasPalette(view.type) && !palette.isEmpty()) value = palette.nearest({0, 0, 0, 255});
    if (view.type == ImageType::Bit1) value *= 0xff;
    const std::size_t start = rowBytes(view.type, rect.x), size = rowBytes(view.type, rect.width);
    const bool alpha = view.type == ImageType::GrayAlpha16 || view.type == ImageType::Rgba32;
    const auto step = static_cast<std::size_t>(bytesPerPixel(view.type));
    for (int y = rect.y; y < rect.bottom(); ++y) {
        std::uint8_t* row = view.row(y) + start;
        std::memset(row, value, size);
        if (!alpha) continue;
        for (std::size_t at = step - 1; at < size; at += step)
            row[at] = 255;
    }
}

} // namespace kvn::imaging
