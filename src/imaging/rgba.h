// One colour with straight alpha, 8 bits a channel, and the project's one grey and one HSL.
#pragma once

#include <cstdint>

namespace kvn::imaging {

struct Rgba {
    std::uint8_t r = 0;
    std::uint8_t g = 0;
    std::uint8_t b = 0;
    std::uint8_t a = 255;
    bool operator==(const Rgba&) const = default;
};

// Rec. 601 luma in 16-bit fixed point, rounded to nearest. Grey in gives the same grey out.
constexpr std::uint8_t luma(int r, int g, int b) {
    return static_cast<std::uint8_t>((19595 * r + 38470 * g + 7471 * b + 32768) >> 16);
}

// a * b / 255, rounded to nearest, exact for all bytes.
constexpr std::uint8_t mul255(int a, int b) {
    const int t = a * b + 128;
    return static_cast<std::uint8_t>((t + (t >> 8)) >> 8);
}

// Hue, saturation and luminance, each scaled to 0..255 (hue: 255 is a full turn), unrounded.
// Double hexcone model of A. R. Smith and G. Joblove (1978). Grey has hue 0.
struct Hsl {
    double h = 0;
    double s = 0;
    double l = 0;
};
Hsl hslFromRgb(double r, double g, double b);
// Channels 0..255, unrounded. Hue wraps, saturation and luminance are clamped.
struct RgbReal {
    double r = 0;
    double g = 0;
    double b = 0;
};
RgbReal rgbFromHsl(const Hsl& hsl);

} // namespace kvn::imaging
