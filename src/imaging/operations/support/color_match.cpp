#include "imaging/operations/support/color_match.h"

#include <algorithm>

#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

KVN_CLONES void findBetween(const ColorPlanes& planes, const std::uint8_t* low,
                            const std::uint8_t* high, std::uint8_t* mask) {
    const std::uint8_t low0 = low[0], low1 = low[1], low2 = low[2];
    const std::uint8_t high0 = high[0], high1 = high[1], high2 = high[2];
    for (int i = 0; i < ColorPlanes::size; ++i) {
        const int red = (planes.r[i] >= low0) & (planes.r[i] <= high0);
        const int green = (planes.g[i] >= low1) & (planes.g[i] <= high1);
        const int blue = (planes.b[i] >= low2) & (planes.b[i] <= high2);
        mask[i] = (red & green & blue) ? 255 : 0;
    }
}

} // namespace

ColorMatch::ColorMatch(Rgba color, double tolerance) {
    const int reach = static_cast<int>(std::clamp(tolerance, 0.0, 100.0) * 2.55 + 1e-9);
    const int channels[3] = {color.r, color.g, color.b};
    for (int c = 0; c < 3; ++c) {
        low_[c] = static_cast<std::uint8_t>(std::max(0, channels[c] - reach));
        high_[c] = static_cast<std::uint8_t>(std::min(255, channels[c] + reach));
    }
}

void ColorMatch::find(const ColorPlanes& planes, std::uint8_t* mask) const {
    findBetween(planes, low_, high_, mask);
}

} // namespace kvn::imaging
