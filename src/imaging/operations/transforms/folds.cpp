// Custom, a kaleidoscope, and Geometry.Warp, a push along a line.
#include <algorithm>
#include <cmath>

#include "imaging/operations/support/warp.h"
#include "imaging/operations/transforms/transforms.h"

namespace kvn::imaging {
namespace {

// A place on an axis that is mirrored at its ends for ever.
float reflected(float place, float last) {
    if (last <= 0) return 0;
    const float lap = place / (2 * last);
    const float part = (lap - std::floor(lap)) * 2 * last;
    return last - std::abs(last - part);
}

// Mirrors the vector onto the other side of a line through the origin, with the unit normal
// (nx, ny), unless it is there already.
void fold(float& x, float& y, float nx, float ny) {
    const float beyond = std::max(0.0f, x * nx + y * ny);
    x -= 2 * beyond * nx;
    y -= 2 * beyond * ny;
}

Raster kaleidoscope(const Raster& source, const Arguments&, Task& task) {
    const auto right = static_cast<float>(source.width() - 1);
    const auto bottom = static_cast<float>(source.height() - 1);
    const WarpSettings settings{.size = source.size()};
    return warped(source, settings, task, [=](int row, int x0, int count, float* toX, float* toY) {
        constexpr float sin60 = 0.866025404f, half = 0.5f;
        for (int i = 0; i < count; ++i) {
            // Into the sector of 30 degrees right of upwards: twelve of them make the circle.
            float x = std::abs(static_cast<float>(x0 + i) - right / 2);
            float y = -std::abs(static_cast<float>(row) - bottom / 2);
            fold(x, y, half, sin60);
            fold(x, y, sin60, half);
            toX[i] = reflected(right / 2 + x, right);
            toY[i] = reflected(bottom / 2 + y, bottom);
        }
    });
}

constexpr Argument warpArguments[] = {
    {"x1", ArgumentKind::Integer, -65535, 65535, "px", "start of the line"},
    {"y1", ArgumentKind::Integer, -65535, 65535, "px", "start of the line"},
    {"x2", ArgumentKind::Integer, -65535, 65535, "px", "end of the line"},
    {"y2", ArgumentKind::Integer, -65535, 65535, "px", "end of the line"},
};

Raster push(const Raster& source, const Arguments& arguments, Task& task) {
    const double x1 = arguments.integer(0), y1 = arguments.integer(1);
    const double x2 = arguments.integer(2), y2 = arguments.integer(3);
    // Far enough that nothing folds over: the push falls off by at most 1.54 / radius a pixel.
    const double radius = 2.5 * std::hypot(x2 - x1, y2 - y1);
    const double left = std::floor(x2 - radius), top = std::floor(y2 - radius);
    const double size = std::ceil(2 * radius) + 2;
    if (radius == 0 || size > 1e9 || std::abs(left) > 1e9 || std::abs(top) > 1e9) return source;
    WarpSettings settings{.size = source.size()};
    settings.active = Rect{static_cast<int>(left), static_cast<int>(top), static_cast<int>(size),
                           static_cast<int>(size)}
                          .intersected(source.rect());
    if (settings.active.isEmpty()) return source;
    const auto pushX = static_cast<float>(x2 - x1), pushY = static_cast<float>(y2 - y1);
    const auto scale = static_cast<float>(1 / (radius * radius));
    return warped(source, settings, task, [=](int row, int x0, int count, float* toX, float* toY) {
        const auto dy = static_cast<float>(row - y2);
        for (int i = 0; i < count; ++i) {
            const auto dx = static_cast<float>(x0 + i - x2);
            const float inside = std::max(0.0f, 1 - (dx * dx + dy * dy) * scale);
            toX[i] = static_cast<float>(x0 + i) - pushX * inside * inside;
            toY[i] = static_cast<float>(row) - pushY * inside * inside;
        }
    });
}

} // namespace

const Operation customOperation = {
    .name = "Transforms.Custom",
    .undoName = "Custom",
    .run = kaleidoscope,
    .border = -1,
    .note = "A kaleidoscope of six mirrored pairs.",
};

const Operation warpOperation = {
    .name = "Geometry.Warp",
    .undoName = "Warp",
    .arguments = warpArguments,
    .run = push,
    .border = -1,
    .types = TypeRule::Fixed,
    .note = "Pushes the picture along a line. Promotes unless nothing moves.",
};

} // namespace kvn::imaging
