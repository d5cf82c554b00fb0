#include "imaging/codecs/tiff_color.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace kvn::imaging {

namespace {

// CIE 15: the inverse of the cube root with its straight part near black.
float cubed(float f) {
    constexpr float knee = 6.0f / 29;
    return f > knee ? f * f * f : 3 * knee * knee * (f - 4.0f / 29);
}

// The sRGB transfer curve (IEC 61966-2-1), from linear 0..1 to a byte. The steps are fine enough
// for the steepest part of the curve near black.
class Curve {
  public:
    Curve() : table_(steps + 1) {
        for (int i = 0; i <= steps; ++i) {
            const double linear = static_cast<double>(i) / steps;
            const double v =
                linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
            table_[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(v * 255 + 0.5);
        }
    }
    std::uint8_t operator()(float linear) const {
        const float at = std::clamp(linear, 0.0f, 1.0f) * steps + 0.5f;
        return table_[static_cast<std::size_t>(at)];
    }

  private:
    static constexpr int steps = 65535;
    std::vector<std::uint8_t> table_;
};

} // namespace

Rgba rgbFromLab(float l, float a, float b) {
    static const Curve curve;
    const float fy = (l + 16) / 116;
    const float x = 0.9642f * cubed(fy + a / 500);
    const float y = cubed(fy);
    const float z = 0.8251f * cubed(fy - b / 200);
    // XYZ of D50 to linear sRGB, Bradford's adaptation included (B. Lindbloom).
    return {curve(3.1338561f * x - 1.6168667f * y - 0.4906146f * z),
            curve(-0.9787684f * x + 1.9161415f * y + 0.0334540f * z),
            curve(0.0719453f * x - 0.2289914f * y + 1.4052427f * z), 255};
}

} // namespace kvn::imaging
