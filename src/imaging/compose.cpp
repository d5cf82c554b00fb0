#include "imaging/compose.h"

#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "imaging/blit.h"
#include "imaging/convert.h"

namespace kvn::imaging {
namespace {

// The nearest palette entry of a colour, remembered: neighbours mostly have the same one.
class NearestIndex {
  public:
    explicit NearestIndex(const Palette& palette) : palette_(palette) {}
    int operator()(Rgba color) {
        Slot& slot = slots_[(color.r * 7u + color.g * 31u + color.b * 127u + color.a) & 1023u];
        if (slot.index < 0 || !(slot.color == color)) slot = {color, palette_.nearest(color)};
        return slot.index;
    }

  private:
    struct Slot {
        Rgba color;
        int index = -1;
    };
    const Palette& palette_;
    std::array<Slot, 1024> slots_;
};

Rgba over(Rgba top, Rgba bottom) {
    if (top.a == 255) return top;
    if (top.a == 0) return bottom;
    // 65025 is 255 squared: the weights of both colours and their sum, unrounded.
    const int weightTop = top.a * 255;
    const int weightBottom = bottom.a * (255 - top.a);
    const int sum = weightTop + weightBottom;
    const auto mix = [&](int a, int b) {
        return static_cast<std::uint8_t>((a * weightTop + b * weightBottom + sum / 2) / sum);
    };
    return {mix(top.r, bottom.r), mix(top.g, bottom.g), mix(top.b, bottom.b),
            static_cast<std::uint8_t>((sum + 127) / 255)};
}

Rgba loadPixel(const Raster& raster, const std::uint8_t* row, int x) {
    switch (raster.type()) {
    case ImageType::Bit1:
        return raster.palette()[row[x >> 3] >> (7 - (x & 7)) & 1];
    case ImageType::Indexed8:
    case ImageType::Indexed8Alpha:
        return raster.palette()[row[x]];
    case ImageType::Gray8:
        return {row[x], row[x], row[x], 255};
    case ImageType::GrayAlpha16:
        return {row[x * 2], row[x * 2], row[x * 2], row[x * 2 + 1]};
    case ImageType::Rgb24:
        return {row[x * 3], row[x * 3 + 1], row[x * 3 + 2], 255};
    case ImageType::Rgba32:
        break;
    }
    return {row[x * 4], row[x * 4 + 1], row[x * 4 + 2], row[x * 4 + 3]};
}

void storePixel(ImageType type, std::uint8_t* row, int x, Rgba c, NearestIndex& nearest) {
    switch (type) {
    case ImageType::Bit1: {
        const auto mask = static_cast<std::uint8_t>(0x80 >> (x & 7));
        std::uint8_t& byte = row[x >> 3];
        byte = static_cast<std::uint8_t>(nearest(c) ? byte | mask : byte & ~mask);
        return;
    }
    case ImageType::Indexed8:
    case ImageType::Indexed8Alpha:
        row[x] = static_cast<std::uint8_t>(nearest(c));
        return;
    case ImageType::Gray8:
        row[x] = luma(c.r, c.g, c.b);
        return;
    case ImageType::GrayAlpha16:
        row[x * 2] = luma(c.r, c.g, c.b);
        row[x * 2 + 1] = c.a;
        return;
    case ImageType::Rgba32:
        row[x * 4 + 3] = c.a;
        break;
    case ImageType::Rgb24:
        break;
    }
    std::uint8_t* p = row + x * bytesPerPixel(type);
    p[0] = c.r;
    p[1] = c.g;
    p[2] = c.b;
}

// With nothing to mix, stored pixels can be copied: the same type, and the same palette if any.
bool copiesExactly(const Raster& target, const Raster& source, const DrawOptions& options) {
    return !options.transparent && options.opacity >= 1 && !options.merge &&
           target.type() == source.type() && !hasAlpha(source.type()) &&
           (!hasPalette(source.type()) || target.palette() == source.palette());
}

} // namespace

void drawOver(Raster& target, const Raster& source, Point at, const DrawOptions& options,
              Task& task) {
    const Rect part = Rect{at.x, at.y, source.width(), source.height()}.intersected(target.rect());
    if (part.isEmpty()) return;
    if (copiesExactly(target, source, options)) return copyPixels(target, source, at);
    const double opacity = std::isfinite(options.opacity) ? options.opacity : 1.0;
    const int strength = static_cast<int>(std::lround(std::min(1.0, std::max(0.0, opacity)) * 255));
    const ConstView from = source.view();
    const View to = target.edit();
    parallelRows(part.height, task, [&](int y0, int y1) {
        NearestIndex nearest(target.palette());
        for (int y = y0; y < y1; ++y) {
            const std::uint8_t* in = from.row(part.y + y - at.y);
            std::uint8_t* out = to.row(part.y + y);
            for (int x = 0; x < part.width; ++x) {
                Rgba c = loadPixel(source, in, part.x + x - at.x);
                if (options.transparent && c.r == options.transparent->r &&
                    c.g == options.transparent->g && c.b == options.transparent->b)
                    continue;
                c.a = mul255(c.a, strength);
                if (c.a == 0 && !options.merge) continue;
                const Rgba below = loadPixel(target, out, part.x + x);
                Rgba mixed = over(c, below);
                if (options.merge) mixed.a = mergedAlpha(*options.merge, below.a, c.a);
                storePixel(to.type, out, part.x + x, mixed, nearest);
            }
        }
    });
}

} // namespace kvn::imaging
