#include "imaging/operations/support/hsl_map.h"

#include <algorithm>
#include <cmath>

#include "imaging/operations/support/color_planes.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

// What hue, saturation and luminance are made of, in whole numbers; twice as many of them go into
// a vector as of the real ones.
struct HslParts {
    alignas(64) std::int16_t chroma[ColorPlanes::size]; // greatest channel less the least, 0..255
    alignas(64) std::int16_t sum[ColorPlanes::size];    // of the two, 0..510
    alignas(64) std::int16_t sextant[ColorPlanes::size];
    alignas(64) std::int16_t rise[ColorPlanes::size]; // hue is sextant + rise / chroma, in sextants
};

KVN_CLONES void partsOf(const ColorPlanes& planes, HslParts& parts) {
    for (int i = 0; i < ColorPlanes::size; ++i) {
        const std::int16_t r = planes.r[i], g = planes.g[i], b = planes.b[i];
        const std::int16_t top = std::max(r, std::max(g, b)), bottom = std::min(r, std::min(g, b));
        const auto rise = static_cast<std::int16_t>(top == g ? b - r : r - g);
        const auto sextant = static_cast<std::int16_t>(top == g ? 2 : 4);
        parts.rise[i] = static_cast<std::int16_t>(top == r ? g - b : rise);
        parts.sextant[i] = top == r ? std::int16_t{0} : sextant;
        parts.chroma[i] = static_cast<std::int16_t>(top - bottom);
        parts.sum[i] = static_cast<std::int16_t>(top + bottom);
    }
}

inline __attribute__((always_inline)) float within(float value, float most) {
    return std::min(most, std::max(0.0f, value));
}

// The offset of `c` in sextants, 0..6. Everything is computed for every pixel and chosen
// afterwards, so that the loop becomes vector code; one division serves hue and saturation.
KVN_CLONES void colorsOf(const HslParts& parts, const HslChange& c, ColorPlanes& planes) {
    const float graySaturation = c.colorsGray ? 1 : 0;
    for (int i = 0; i < ColorPlanes::size; ++i) {
        const float chroma = parts.chroma[i], sum = parts.sum[i];
        const float span = std::min(sum, 510 - sum);
        const float inverse = 1 / std::max(chroma * span, 1.0f);
        const float sextant = parts.sextant[i], rise = parts.rise[i];
        float hue = (sextant + rise * (span * inverse)) * c.hueFactor + c.hueOffset;
        hue = hue < 0 ? hue + 6 : hue;
        hue = hue >= 6 ? hue - 6 : hue;
        float saturation = chroma * (chroma * inverse);
        saturation = within(saturation * c.saturationFactor + c.saturationOffset, 1);
        saturation = chroma > 0 ? saturation : saturation * graySaturation;
        const float l = within(sum * 0.5f * c.luminanceFactor + c.luminanceOffset, 255);

        const float reach = saturation * std::min(l, 255 - l), range = 2 * reach;
        const float low = l - reach + 0.5f; // to round
        const float red = within(std::abs(hue - 3) - 1, 1),
                    green = within(2 - std::abs(hue - 2), 1);
        const float blue = within(2 - std::abs(hue - 4), 1);
        planes.r[i] = static_cast<std::uint8_t>(static_cast<int>(low + range * red));
        planes.g[i] = static_cast<std::uint8_t>(static_cast<int>(low + range * green));
        planes.b[i] = static_cast<std::uint8_t>(static_cast<int>(low + range * blue));
    }
}

} // namespace

Raster mapHsl(const Raster& source, const HslChange& change, Task& task) {
    HslChange c = change;
    const float turns = change.hueOffset / 255;
    c.hueOffset = (turns - std::floor(turns)) * 6;
    c.saturationOffset = change.saturationOffset / 255;
    return mapPlanes(source, c.colorsGray ? ResultForm::Color : ResultForm::SameType, task,
                     [&](ColorPlanes& planes) {
                         HslParts parts;
                         partsOf(planes, parts);
                         colorsOf(parts, c, planes);
                     });
}

} // namespace kvn::imaging
