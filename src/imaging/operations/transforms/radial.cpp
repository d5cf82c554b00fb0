#include "imaging/operations/transforms/radial.h"

#include <algorithm>
#include <cmath>

#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

constexpr int entriesPerPixel = 4;

// The rule as a table over the distance: the source's place is
//   along * d + across * (d turned by a quarter), d from the centre to the pixel.
struct RadialTable {
    std::vector<float> along, across;
    float last; // index of the last entry

    RadialTable(const RadialRule& rule, double reach) {
        const auto count = static_cast<std::size_t>(std::ceil(reach)) * entriesPerPixel + 2;
        for (std::size_t i = 0; i < count; ++i) {
            // In the centre itself any finite factor will do.
            const double r = std::max(0.25, static_cast<double>(i)) / entriesPerPixel;
            const RadialPlace place = rule(r);
            const double factor = place.distance / r;
            along.push_back(static_cast<float>(factor * std::cos(place.angle)));
            across.push_back(static_cast<float>(-factor * std::sin(place.angle)));
        }
        last = static_cast<float>(count - 2);
    }
};

// One row at `dy` below the centre, beginning at `dx`; results are relative to the centre.
KVN_CLONES void placeRow(const RadialTable& table, float radius, float dx, float dy, int count,
                         float* toX, float* toY) {
    const float *along = table.along.data(), *across = table.across.data();
    for (int i = 0; i < count; ++i) {
        const float x = dx + static_cast<float>(i);
        const float r = __builtin_sqrtf(x * x + dy * dy);
        const float wanted = r * static_cast<float>(entriesPerPixel);
        const float place = wanted < table.last ? wanted : table.last;
        const int index = static_cast<int>(place);
        const float t = place - static_cast<float>(index);
        const float a = along[index] + (along[index + 1] - along[index]) * t;
        const float b = across[index] + (across[index + 1] - across[index]) * t;
        toX[i] = r < radius ? a * x - b * dy : x;
        toY[i] = r < radius ? a * dy + b * x : dy;
    }
}

// The pixels about a circle that lie in the picture. Empty if there are none.
Rect around(double x, double y, double radius, const Rect& whole) {
    const auto clipped = [](double v) { return static_cast<int>(std::clamp(v, -1e6, 1e6)); };
    const int left = clipped(std::floor(x - radius)), top = clipped(std::floor(y - radius));
    return Rect{left, top, clipped(std::ceil(x + radius)) + 1 - left,
                clipped(std::ceil(y + radius)) + 1 - top}
        .intersected(whole);
}

} // namespace

Raster radiallyDistorted(const Raster& source, const RadialDistortion& distortion, Task& task,
                         const RadialRule& rule) {
    const double x = (source.width() - 1) / 2.0 + distortion.centreX;
    const double y = (source.height() - 1) / 2.0 + distortion.centreY;
    const double farthest =
        std::hypot(std::max(x, source.width() - x), std::max(y, source.height() - y)) + 2;
    const double reach = distortion.everywhere ? farthest : std::min(distortion.radius, farthest);
    WarpSettings settings{.size = source.size()};
    settings.active = around(x, y, reach, source.rect());
    if (!(distortion.radius >= 1) || settings.active.isEmpty()) return source;
    const RadialTable table(rule, reach);
    const auto limit = static_cast<float>(distortion.everywhere ? 2 * farthest : distortion.radius);
    const auto centreX = static_cast<float>(x), centreY = static_cast<float>(y);
    return warped(source, settings, task, [&](int row, int x0, int count, float* toX, float* toY) {
        placeRow(table, limit, static_cast<float>(x0 - x), static_cast<float>(row - y), count, toX,
                 toY);
        for (int i = 0; i < count; ++i) {
            toX[i] += centreX;
            toY[i] += centreY;
        }
    });
}

} // namespace kvn::imaging
