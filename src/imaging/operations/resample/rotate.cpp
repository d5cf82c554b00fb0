// Geometry.Rotate.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "imaging/operations/resample/quarter_turns.h"
#include "imaging/operations/resample/resample.h"
#include "imaging/operations/support/result_size.h"
#include "imaging/operations/support/warp.h"

namespace kvn::imaging {
namespace {

constexpr Argument rotateArguments[] = {
    {"angle", ArgumentKind::Number, -360, 360, "degrees", "clockwise; full turns do not count"},
    {"color", ArgumentKind::Color, 0, 255, "", "what the picture does not cover"},
    {"flag", ArgumentKind::Integer, 0, 1, "", "not looked at"},
};

// A length that rounding errors have made a trifle too long does not take another pixel.
double wholeLength(double length) {
    return std::max(1.0, std::ceil(length - 1e-6));
}

Raster rotate(const Raster& source, const Arguments& arguments, Task& task) {
    double angle = std::fmod(arguments.number(0), 360.0);
    if (angle < 0) angle += 360;
    const double quarters = angle / 90;
    if (std::abs(quarters - std::round(quarters)) < 1e-9)
        return quarterTurned(source, static_cast<int>(std::round(quarters)) % 4, task);
    const double radians = angle * std::numbers::pi / 180;
    const double cosine = std::cos(radians), sine = std::sin(radians);
    const double w = source.width(), h = source.height();
    WarpSettings settings;
    settings.size = checkedResultSize(wholeLength(w * std::abs(cosine) + h * std::abs(sine)),
                                      wholeLength(w * std::abs(sine) + h * std::abs(cosine)),
                                      "Geometry.Rotate");
    settings.bordered = true;
    settings.background = arguments.color(1);
    const double centreX = (settings.size.width - 1) / 2.0,
                 centreY = (settings.size.height - 1) / 2.0;
    return warped(source, settings, task, [=](int y, int x0, int count, float* toX, float* toY) {
        const double down = y - centreY;
        const double startX = (w - 1) / 2 + sine * down - cosine * centreX;
        const double startY = (h - 1) / 2 + cosine * down + sine * centreX;
        for (int i = 0; i < count; ++i) {
            toX[i] = static_cast<float>(startX + cosine * (x0 + i));
            toY[i] = static_cast<float>(startY - sine * (x0 + i));
        }
    });
}

} // namespace

const Operation rotateOperation = {
    .name = "Geometry.Rotate",
    .undoName = "Rotate",
    .arguments = rotateArguments,
    .run = rotate,
    .border = -1,
    .alpha = AlphaRule::Weighted,
    .types = TypeRule::Fixed,
    .note =
        "Turns the picture on a canvas that grows; multiples of 90 degrees keep the type, other "
        "angles make 1-bit and palette pictures 24-bit or 32-bit.",
};

} // namespace kvn::imaging
