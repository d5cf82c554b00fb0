#include "imaging/operations/support/warp.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/simd.h"
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

// The places on an axis that is mirrored at 0 and at `last` for ever.
KVN_CLONES void mirror(float* places, int count, float last) {
    constexpr int block = 64; // most lie within the picture as they are
    const float lap = 2 * last, perLap = last > 0 ? 1 / lap : 0;
    // Numbers from 0 up are in the order of their bits, and those below 0 beyond them.
    const auto limit = std::bit_cast<std::uint32_t>(last);
    for (int from = 0; from < count; from += block) {
        const int to = from + block < count ? from + block : count;
        std::uint32_t beyond = 0;
        for (int i = from; i < to; ++i)
            beyond |= static_cast<std::uint32_t>(std::bit_cast<std::uint32_t>(places[i]) > limit);
        if (beyond == 0) continue;
        for (int i = from; i < to; ++i) {
            const float place = places[i], laps = place * perLap;
            const float part = (laps - __builtin_floorf(laps)) * lap;
            const float back = lap - part, reflected = part < back ? part : back;
            places[i] = place < 0 || place > last ? reflected : place;
        }
    }
}

// The places of one row of the result, and of a pixel more.
struct Places {
    explicit Places(int width)
        : x(static_cast<std::size_t>(width) + 1), y(static_cast<std::size_t>(width) + 1) {}
    void fill(const WarpMap& map, int row, int left) {
        map(row, left, static_cast<int>(x.size()), x.data(), y.data());
    }
    void mirrorAt(const ConstView& edges) {
        const auto count = static_cast<int>(x.size());
        mirror(x.data(), count, static_cast<float>(edges.width - 1));
        mirror(y.data(), count, static_cast<float>(edges.height - 1));
    }
    std::vector<float> x, y;
};

struct Driver {
    const WarpSettings& settings;
    const WarpMap& map;
    Rect active;
    WarpRow row; // what all rows have in common
    WarpSampler sampler;
    View out;

    // The rows outside the active part, and what lies beside it: the background, or the source's.
    void fillRest(int y) const {
        if (active.width == out.width && y >= active.y && y < active.bottom()) return;
        if (!row.bordered) {
            std::memcpy(out.row(y), row.source.row(y), rowBytes(out.type, out.width));
            return;
        }
        const bool beside = y >= active.y && y < active.bottom();
        const int left = beside ? active.x : out.width;
        fillBackground(y, 0, left);
        if (beside) fillBackground(y, static_cast<int>(active.right()), out.width);
    }
    void fillBackground(int y, int from, int to) const {
        const int channels = bytesPerPixel(out.type);
        const Rgba& c = settings.background;
        const std::uint8_t bytes[] = {c.r, channels == 2 ? c.a : c.g, c.b, c.a};
        std::uint8_t* pixel = out.row(y) + std::ptrdiff_t{from} * channels;
        for (int x = from; x < to; ++x, pixel += channels)
            std::memcpy(pixel, bytes, static_cast<std::size_t>(channels));
    }

    void band(int y0, int y1) const {
        Places here(active.width), below(active.width);
        std::vector<std::uint8_t> kinds(static_cast<std::size_t>(active.width));
        int filled = -1; // the row that `here` is for
        for (int y = y0; y < y1; ++y) {
            fillRest(y);
            if (y < active.y || y >= active.bottom()) continue;
            if (filled != y) fill(here, y);
            fill(below, y + 1);
            sample(here, below, y, kinds);
            std::swap(here, below);
            filled = y + 1;
        }
    }

    void fill(Places& places, int y) const {
        places.fill(map, y, active.x);
        if (!settings.bordered) places.mirrorAt(row.source);
    }

    void sample(const Places& here, const Places& below, int y,
                std::vector<std::uint8_t>& kinds) const {
        WarpRow one = row;
        one.x = here.x.data();
        one.y = here.y.data();
        one.belowX = below.x.data();
        one.belowY = below.y.data();
        one.out = out.row(y) + std::ptrdiff_t{active.x} * bytesPerPixel(out.type);
        one.kinds = kinds.data();
        sampler(one);
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
    const Rect whole{0, 0, settings.size.width, settings.size.height};
    const Rect active = settings.active.isEmpty() ? whole : settings.active.intersected(whole);
    row.count = active.width;
    row.bordered = settings.bordered;
    row.continuous = settings.continuous;
    setBackground(row, settings, weighted);
    const WarpSampler sampler =
        settings.smooth ? bicubicSampler(bytesPerPixel(source.type()), weighted) : sampleNearest;
    const Driver driver{settings, map, active, row, sampler, result.edit()};
    parallelRows(
        settings.size.height, task, [&](int y0, int y1) { driver.band(y0, y1); }, 8);
    return result;
}

} // namespace kvn::imaging
