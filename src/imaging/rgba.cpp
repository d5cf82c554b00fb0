#include "imaging/rgba.h"

#include <algorithm>
#include <cmath>

namespace kvn::imaging {

Hsl hslFromRgb(double r, double g, double b) {
    const double high = std::max({r, g, b}), low = std::min({r, g, b});
    const double chroma = high - low;
    Hsl hsl{0, 0, (high + low) / 2};
    if (chroma <= 0) return hsl;
    hsl.s = 255 * chroma / (hsl.l <= 127.5 ? high + low : 510 - high - low);
    double sextant;
    if (high == r)
        sextant = (g - b) / chroma + (g < b ? 6 : 0);
    else if (high == g)
        sextant = (b - r) / chroma + 2;
    else
        sextant = (r - g) / chroma + 4;
    hsl.h = sextant * 255 / 6;
    return hsl;
}

RgbReal rgbFromHsl(const Hsl& hsl) {
    const double l = std::clamp(hsl.l, 0.0, 255.0), s = std::clamp(hsl.s, 0.0, 255.0) / 255;
    const double high = l <= 127.5 ? l * (1 + s) : l + s * (255 - l);
    const double low = 2 * l - high;
    const double turn = hsl.h / 255 - std::floor(hsl.h / 255);
    // The trapezoid that each channel follows round the hue circle, a third of a turn apart.
    const auto channel = [&](double offset) {
        double sextant = (turn + offset) * 6;
        sextant -= 6 * std::floor(sextant / 6);
        const double part = std::clamp(std::min(sextant, 4 - sextant), 0.0, 1.0);
        return low + (high - low) * part;
    };
    return {channel(1.0 / 3), channel(0), channel(-1.0 / 3)};
}

} // namespace kvn::imaging
