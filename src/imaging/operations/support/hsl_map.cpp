#include "imaging/operations/support/hsl_map.h"

#include <algorithm>
#include <cmath>

#include "imaging/operations/support/color_planes.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

inline __attribute__((always_inline)) float channelOf(float sextant, float low, float high) {
    sextant = sextant >= 12 ? sextant - 12 : sextant;
    sextant = sextant >= 6 ? sextant - 6 : sextant;
    float part = std::min(sextant, 4 - sextant);
    part = std::min(1.0f, std::max(0.0f, part));
    return low + (high - low) * part;
}

inline __attribute__((always_inline)) std::uint8_t rounded(float value) {
    return static_cast<std::uint8_t>(static_cast<int>(value + 0.5f));
}

// Hue in sextants, 0..6; the offset of `c` too. Everything is computed for every pixel and chosen
// afterwards, so that the loop becomes vector code.
KVN_CLONES void changePlanes(ColorPlanes& planes, const HslChange& c) {
    const float grayFactor = c.colorsGray ? 1 : 0;
    for (int i = 0; i < ColorPlanes::size; ++i) {
        const float r = planes.r[i], g = planes.g[i], b = planes.b[i];
        const float top = std::max(r, std::max(g, b)), bottom = std::min(r, std::min(g, b));
        const float chroma = top - bottom, sum = top + bottom;
        const float part = 1 / (chroma > 0 ? chroma : 1.0f);
        const float fromRed = (g - b) * part, fromGreen = (b - r) * part + 2;
        const float fromBlue = (r - g) * part + 4;
        float hue = top == g ? fromGreen : fromBlue;
        hue = top == r ? (fromRed < 0 ? fromRed + 6 : fromRed) : hue;
        hue = chroma > 0 ? hue : 0.0f;
        const float span = sum <= 255 ? sum : 510 - sum;
        float saturation = chroma / (span > 0 ? span : 1.0f);

        hue = hue * c.hueFactor + c.hueOffset;
        saturation = saturation * c.saturationFactor + c.saturationOffset;
        saturation = std::min(1.0f, std::max(0.0f, saturation));
        saturation *= chroma > 0 ? 1.0f : grayFactor;
        float l = sum * 0.5f * c.luminanceFactor + c.luminanceOffset;
        l = std::min(255.0f, std::max(0.0f, l));

        const float high = l + saturation * (l <= 127.5f ? l : 255 - l), low = 2 * l - high;
        planes.r[i] = rounded(channelOf(hue + 2, low, high));
        planes.g[i] = rounded(channelOf(hue, low, high));
        planes.b[i] = rounded(channelOf(hue + 4, low, high));
    }
}

} // namespace

Raster mapHsl(const Raster& source, const HslChange& change, Task& task) {
    HslChange c = change;
    const float turns = change.hueOffset / 255;
    c.hueOffset = (turns - std::floor(turns)) * 6;
    c.saturationOffset = change.saturationOffset / 255;
    return mapPlanes(source, c.colorsGray ? PlaneResult::Color : PlaneResult::SameType, task,
                     [&](ColorPlanes& planes) { changePlanes(planes, c); });
}

} // namespace kvn::imaging
