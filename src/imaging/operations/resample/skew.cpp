// Geometry.Skew.
#include <algorithm>
#include <cmath>

#include "imaging/operations/resample/resample.h"
#include "imaging/operations/resample/slanted_rows.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/result_size.h"
#include "imaging/operations/support/warp.h"

namespace kvn::imaging {
namespace {

constexpr Argument skewArguments[] = {
    {"direction", ArgumentKind::Integer, 0, 1, "", "0 horizontal, 1 vertical", false, true},
    {"offset", ArgumentKind::Integer, -65535, 65535, "px",
     "how far the first row or column is moved against the last one"},
    {"color", ArgumentKind::Color, 0, 255, "", "what the picture does not cover"},
    {"fast", ArgumentKind::Boolean, 0, 1, "", "moves rows or columns by whole pixels"},
};

// Steep slants squeeze the picture across the lines, and clear colours must be weighted: both are
// for the general driver.
constexpr double steepest = 0.75;

Raster throughMap(const Raster& source, Size size, const Slant& slant, Task& task) {
    WarpSettings settings;
    settings.size = size;
    settings.bordered = true;
    settings.background = slant.background;
    settings.smooth = slant.smooth;
    return warped(source, settings, task, [=](int y, int x0, int count, float* toX, float* toY) {
        for (int i = 0; i < count; ++i) {
            const double moved = slant.first + slant.step * (slant.vertical ? x0 + i : y);
            toX[i] = static_cast<float>(x0 + i - (slant.vertical ? 0 : moved));
            toY[i] = static_cast<float>(y - (slant.vertical ? moved : 0));
        }
    });
}

Raster skew(const Raster& source, const Arguments& arguments, Task& task) {
    const double offset = arguments.integer(1);
    if (offset == 0) return source;
    Slant slant;
    slant.vertical = arguments.integer(0) == 1;
    slant.smooth = !arguments.boolean(3);
    slant.background = arguments.color(2);
    slant.first = std::max(0.0, offset);
    slant.step = -offset / std::max(1, (slant.vertical ? source.width() : source.height()) - 1);
    const double growth = std::abs(offset);
    const Size size =
        checkedResultSize(source.width() + (slant.vertical ? 0 : growth),
                          source.height() + (slant.vertical ? growth : 0), "Geometry.Skew");
    const Rgba& color = slant.background;
    const bool clear = hasAlpha(source.type()) && (color.a != 255 || !isOpaque(source));
    if (clear || std::abs(slant.step) > steepest) return throughMap(source, size, slant, task);
    const bool colored = color.r != color.g || color.g != color.b;
    return slanted(colored ? promotedToColor(source, task) : promoted(source, task), size, slant,
                   task);
}

} // namespace

const Operation skewOperation = {
    .name = "Geometry.Skew",
    .undoName = "Skew",
    .arguments = skewArguments,
    .run = skew,
    .border = -1,
    .alpha = AlphaRule::Weighted,
    .types = TypeRule::Fixed,
    .note =
        "Slants the picture on a canvas that grows; 1-bit and palette pictures become 24-bit or "
        "32-bit unless the offset is 0.",
};

} // namespace kvn::imaging
