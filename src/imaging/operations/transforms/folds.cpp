// Custom, a kaleidoscope, and Geometry.Warp, a push along a line.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>

#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/warp.h"
#include "imaging/operations/transforms/transforms.h"

namespace kvn::imaging {
namespace {

// Mirrors the vector onto the other side of a line through the origin, with the unit normal
// (nx, ny), unless it is there already.
void fold(float& x, float& y, float nx, float ny) {
    const float beyond = std::max(0.0f, x * nx + y * ny);
    x -= 2 * beyond * nx;
    y -= 2 * beyond * ny;
}

constexpr int sectors = 12;
constexpr double sectorAngle = 2 * std::numbers::pi / sectors;

// The sector about the middle whose colours vary most, counted clockwise from straight up. Colours
// count by their alpha, and alpha as a channel of its own.
int liveliestSector(const Raster& source) {
    struct Sums {
        double count = 0, sum[4] = {}, squares[4] = {};
    } sums[sectors];
    const ConstView view = source.view();
    const int channels = bytesPerPixel(view.type);
    constexpr int samples = 256; // along each side
    for (int j = 0; j < samples; ++j)
        for (int i = 0; i < samples; ++i) {
            const int x = static_cast<int>(std::int64_t{i} * view.width / samples);
            const int y = static_cast<int>(std::int64_t{j} * view.height / samples);
            const double turn = std::atan2(2 * x + 1 - view.width, view.height - 2 * y - 1);
            const auto sector =
                static_cast<int>(std::floor(turn / sectorAngle) + sectors) % sectors;
            Sums& own = sums[sector];
            ++own.count;
            const std::uint8_t* pixel = view.row(y) + std::ptrdiff_t{x} * channels;
            const int alpha = hasAlpha(view.type) ? channels - 1 : channels;
            for (int c = 0; c < channels; ++c) {
                const double v =
                    c < alpha && alpha < channels ? pixel[c] * pixel[alpha] / 255.0 : pixel[c];
                own.sum[c] += v;
                own.squares[c] += v * v;
            }
        }
    int best = 0;
    double most = 0;
    for (int sector = 0; sector < sectors; ++sector) {
        const Sums& own = sums[sector];
        double variance = 0;
        for (int c = 0; c < channels; ++c)
            variance += (own.squares[c] - own.sum[c] * own.sum[c] / std::max(1.0, own.count)) /
                        std::max(1.0, own.count);
        if (variance > most) {
            most = variance;
            best = sector;
        }
    }
    return best;
}

Raster kaleidoscope(const Raster& picture, const Arguments&, Task& task) {
    const Raster source = promoted(picture, task);
    const float middleX = static_cast<float>(source.width() - 1) / 2;
    const float middleY = static_cast<float>(source.height() - 1) / 2;
    // The pattern is the same after a sixth of a turn, so odd sectors are shown as mirror images.
    const int sector = liveliestSector(source);
    const double turn = (sector + sector % 2) * sectorAngle;
    const auto cosine = static_cast<float>(std::cos(turn));
    const auto sine = static_cast<float>(std::sin(turn));
    const float side = sector % 2 ? -1.0f : 1.0f;
    const WarpSettings settings{.size = source.size()};
    return warped(source, settings, task, [=](int row, int x0, int count, float* toX, float* toY) {
        constexpr float sin60 = 0.866025404f, half = 0.5f;
        for (int i = 0; i < count; ++i) {
            // Into the sector of 30 degrees right of upwards: twelve of them make the circle.
            float x = std::abs(static_cast<float>(x0 + i) - middleX);
            float y = -std::abs(static_cast<float>(row) - middleY);
            fold(x, y, half, sin60);
            fold(x, y, sin60, half);
            x *= side;
            toX[i] = middleX + x * cosine - y * sine;
            toY[i] = middleY + x * sine + y * cosine;
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
    const auto perSquare = [](double reach) {
        return static_cast<float>(1 / (std::max(1.0, reach) * std::max(1.0, reach)));
    };
    const float scale = perSquare(radius);
    const float scaleLeft = perSquare(x2), scaleRight = perSquare(source.width() - 1 - x2);
    const float scaleTop = perSquare(y2), scaleBottom = perSquare(source.height() - 1 - y2);
    return warped(source, settings, task, [=](int row, int x0, int count, float* toX, float* toY) {
        const auto dy = static_cast<float>(row - y2), down = dy * dy;
        const float b = down * (dy < 0 ? scaleTop : scaleBottom);
        for (int i = 0; i < count; ++i) {
            const auto dx = static_cast<float>(x0 + i - x2);
            const float across = dx * dx, a = across * (dx < 0 ? scaleLeft : scaleRight);
            const float away = (across + down) * scale;
            const float inside = std::max(0.0f, 1 - std::sqrt(a * a + b * b + away * away));
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
