// Wave and ZigZag: rows or columns that move along a line.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "imaging/operations/support/warp.h"
#include "imaging/operations/transforms/transforms.h"

namespace kvn::imaging {
namespace {

constexpr double farthest = 100'000;

constexpr Argument waveArguments[] = {
    {"style", ArgumentKind::Integer, 0, 3, "",
     "0 and 2 move rows, 1 and 3 columns; 0 and 1 sine, 2 and 3 cosine", false, true},
    {"maxOffset", ArgumentKind::Number, -65535, 65535, "px", "how far the wave moves; clamped"},
    {"period", ArgumentKind::Number, 0, 1000, "", "waves over the picture; clamped"},
};

constexpr Argument zigZagArguments[] = {
    {"style", ArgumentKind::Integer, 0, 1, "", "0 moves rows, 1 columns", false, true},
    {"maxOffset", ArgumentKind::Integer, -65535, 65535, "px", "how far the line moves; clamped"},
    {"period", ArgumentKind::Number, 0, 1000, "", "zigzags over the picture; clamped"},
};

// Moves row y (or column x) by offsets[y]; there is one more than the picture has.
Raster movedLines(const Raster& source, bool columns, const std::vector<float>& offsets,
                  Task& task) {
    const WarpSettings settings{.size = source.size()};
    return warped(source, settings, task, [&](int y, int x0, int count, float* toX, float* toY) {
        const float rowOffset = columns ? 0 : offsets[static_cast<std::size_t>(y)];
        const float* columnOffsets = offsets.data() + x0;
        for (int i = 0; i < count; ++i) {
            toX[i] = static_cast<float>(x0 + i) - rowOffset;
            toY[i] = static_cast<float>(y) - (columns ? columnOffsets[i] : 0);
        }
    });
}

// `shape` has period 1.
template <typename Shape>
Raster along(const Raster& source, bool columns, double height, double periods, Task& task,
             Shape shape) {
    height = std::clamp(height, -farthest, farthest);
    periods = std::clamp(periods, -1000.0, 1000.0);
    const int length = columns ? source.width() : source.height();
    std::vector<float> offsets;
    for (int i = 0; i <= length; ++i)
        offsets.push_back(static_cast<float>(height * shape(periods * i / length)));
    return movedLines(source, columns, offsets, task);
}

Raster wave(const Raster& source, const Arguments& arguments, Task& task) {
    const int style = arguments.integer(0);
    const double height = arguments.number(1);
    if (height == 0) return source;
    return along(source, style % 2 == 1, height, arguments.number(2), task, [=](double t) {
        const double phase = 2 * std::numbers::pi * t;
        return style < 2 ? std::sin(phase) : std::cos(phase);
    });
}

Raster zigZag(const Raster& source, const Arguments& arguments, Task& task) {
    const int height = arguments.integer(1);
    if (height == 0) return source;
    return along(source, arguments.integer(0) == 1, height, arguments.number(2), task,
                 [](double t) {
                     // 0, 1, 0, -1 at the quarters, like the sine.
                     const double part = t + 0.25 - std::floor(t + 0.25);
                     return 1 - 4 * std::abs(part - 0.5);
                 });
}

} // namespace

const Operation waveOperation = {
    .name = "Transforms.Wave",
    .undoName = "Wave",
    .arguments = waveArguments,
    .run = wave,
    .border = -1,
    .types = TypeRule::Fixed,
    .note = "Moves rows or columns along a wave. Promotes unless nothing moves.",
};

const Operation zigZagOperation = {
    .name = "Transforms.ZigZag",
    .undoName = "Zig Zag",
    .arguments = zigZagArguments,
    .run = zigZag,
    .border = -1,
    .types = TypeRule::Fixed,
    .note = "Moves rows or columns along a zigzag line. Promotes unless nothing moves.",
};

} // namespace kvn::imaging
