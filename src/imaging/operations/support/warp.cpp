#include "imaging/operations/support/warp.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/warp_rows.h"

namespace kvn::imaging {
namespace {

// The source in a form whose colours can be mixed with the background.
Raster prepared(const Raster& source, const WarpSettings& settings, Task& task) {
    const Rgba& color = settings.background;
    const bool colored = settings.bordered && (color.r != color.g || color.g != color.b);
    return colored ? promotedToColor(source, task) : promoted(source, task);
}

// The background as the samplers want it.
void setBackground(WarpRow& row, const WarpSettings& settings, bool weighted) {
    const Rgba& color = settings.background;
    const int channels = bytesPerPixel(row.source.type);
    const float scale = weighted ? static_cast<float>(color.a) / 255 : 1;
    const float values[4] = {static_cast<float>(color.r) * scale,
                             static_cast<float>(color.g) * scale,
                             static_cast<float>(color.b) * scale, static_cast<float>(color.a)};
    std::copy_n(values, 4, row.background);
    if (channels == 2) row.background[1] = values[3];
}

// The places of one row of the result, and of a pixel more.
struct Places {
    explicit Places(int width)
        : x(static_cast<std::size_t>(width) + 1), y(static_cast<std::size_t>(width) + 1) {}
    void fill(const WarpMap& map, int row) {
        map(row, 0, static_cast<int>(x.size()), x.data(), y.data());
    }
    std::vector<float> x, y;
};

struct Driver {
    const WarpSettings& settings;
    const WarpMap& map;
    WarpRow row; // what all rows have in common
    WarpSampler sampler;
    View out;

    void band(int y0, int y1) const {
        Places here(settings.size.width), below(settings.size.width);
        here.fill(map, y0);
        for (int y = y0; y < y1; ++y) {
            below.fill(map, y + 1);
            WarpRow one = row;
            one.x = here.x.data();
            one.y = here.y.data();
            one.belowX = below.x.data();
            one.belowY = below.y.data();
            one.out = out.row(y);
            one.mayShrink = settings.continuous &&
                            shrinksSomewhere(one.x, one.y, one.belowX, one.belowY, one.count);
            sampler(one);
            std::swap(here, below);
        }
    }
};

} // namespace

Raster warped(const Raster& picture, const WarpSettings& settings, Task& task, const WarpMap& map) {
    const Raster source = prepared(picture, settings, task);
    Raster result = Raster::uninitialized(source.type(), settings.size.width, settings.size.height);
    const bool weighted =
        settings.smooth && hasAlpha(source.type()) &&
        ((settings.bordered && settings.background.a != 255) || !isOpaque(source));
    WarpRow row{};
    row.source = source.view();
    row.count = settings.size.width;
    row.bordered = settings.bordered;
    setBackground(row, settings, weighted);
    const WarpSampler sampler =
        settings.smooth ? bicubicSampler(bytesPerPixel(source.type()), weighted) : sampleNearest;
    const Driver driver{settings, map, row, sampler, result.edit()};
    parallelRows(
        settings.size.height, task, [&](int y0, int y1) { driver.band(y0, y1); }, 8);
    return result;
}

} // namespace kvn::imaging
