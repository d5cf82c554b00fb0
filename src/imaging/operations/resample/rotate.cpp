// Geometry.Rotate and Geometry.Skew.
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

constexpr Argument skewArguments[] = {
    {"direction", ArgumentKind::Integer, 0, 1, "", "0 horizontal, 1 vertical", false, true},
    {"offset", ArgumentKind::Integer, -65535, 65535, "px",
     "how far the first row or column is moved against the last one"},
    {"color", ArgumentKind::Color, 0, 255, "", "what the picture does not cover"},
    {"fast", ArgumentKind::Boolean, 0, 1, "", "moves rows or columns by whole pixels"},
};

Raster skew(const Raster& source, const Arguments& arguments, Task& task) {
    const bool vertical = arguments.integer(0) == 1;
    const double offset = arguments.integer(1);
    if (offset == 0) return source;
    const double growth = std::abs(offset);
    WarpSettings settings;
    settings.size = checkedResultSize(source.width() + (vertical ? 0 : growth),
                                      source.height() + (vertical ? growth : 0), "Geometry.Skew");
    settings.bordered = true;
    settings.background = arguments.color(2);
    settings.smooth = !arguments.boolean(3);
    // How far the line at `place` of `length` ones is moved.
    const auto moved = [offset](int place, int length) {
        const double last = std::max(1, length - 1);
        return (offset > 0 ? offset : 0) - offset * place / last;
    };
    const int width = source.width(), height = source.height();
    return warped(source, settings, task, [=](int y, int x0, int count, float* toX, float* toY) {
        const double along = vertical ? 0 : moved(y, height);
        for (int i = 0; i < count; ++i) {
            toX[i] = static_cast<float>(x0 + i - along);
            toY[i] = static_cast<float>(y - (vertical ? moved(x0 + i, width) : 0));
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

const Operation skewOperation = {
    .name = "Geometry.Skew",
    .undoName = "Skew",
    .arguments = skewArguments,
    .run = skew,
    .border = -1,
    .alpha = AlphaRule::Weighted,
    .types = TypeRule::Fixed,
    .note =
        "Slants the picture on a canvas that grows; 1-bit and palette pictures become 24-bit or "
        "32-bit unless the offset is 0.",
};

} // namespace kvn::imaging
