// Geometry.Gradient.
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "imaging/convert.h"
#include "imaging/operations/families.h"
#include "imaging/operations/generate/generate.h"
#include "imaging/operations/support/color_planes.h"
#include "imaging/operations/support/result_size.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

constexpr Argument gradientArguments[] = {
    {"width", ArgumentKind::Integer, 1, longestSide, "px", "of the picture"},
    {"height", ArgumentKind::Integer, 1, longestSide, "px", "of the picture"},
    {"kind", ArgumentKind::Integer, 0, 6, "", "image type of the result; clamped"},
    {"start", ArgumentKind::Color, 0, 255, "", "colour at the first point"},
    {"end", ArgumentKind::Color, 0, 255, "", "colour at the second point"},
    {"from", ArgumentKind::Point, 0, 0, "px", "the first point"},
    {"to", ArgumentKind::Point, 0, 0, "px", "the second point"},
    {"form", ArgumentKind::Integer, 0, 4, "",
     "linear, radial, angular, reflected, square; clamped"},
    {"scale", ArgumentKind::Number, 0.001, 1000, "", "times the way between the points; clamped"},
    {"repetition", ArgumentKind::Integer, 0, 2, "", "0 none, 1 anew, 2 back and forth; clamped"},
};

enum class Form { Linear, Radial, Angular, Reflected, Square };
enum class Repetition { None, Anew, BackAndForth };

// Places as seen along the way: `along` 1 is the second point, `across` the same to the right.
struct Way {
    double originX, originY, stepX, stepY;
};

constexpr int block = ColorPlanes::size;

KVN_CLONES void squareRow(const float* along, const float* across, int count, float* t) {
    for (int i = 0; i < count; ++i)
        t[i] = std::max(std::abs(along[i]), std::abs(across[i]));
}
KVN_CLONES void radialRow(const float* along, const float* across, int count, float* t) {
    for (int i = 0; i < count; ++i)
        t[i] = std::sqrt(along[i] * along[i] + across[i] * across[i]);
}
void angularRow(const float* along, const float* across, int count, float* t) {
    for (int i = 0; i < count; ++i) {
        const float turn = std::atan2(across[i], along[i]) / (2 * std::numbers::pi_v<float>);
        t[i] = turn < 0 ? turn + 1 : turn;
    }
}

KVN_CLONES void limitRow(Repetition repetition, int count, float* t) {
    if (repetition == Repetition::None) {
        for (int i = 0; i < count; ++i)
            t[i] = std::min(1.0f, std::max(0.0f, t[i]));
    } else if (repetition == Repetition::Anew) {
        for (int i = 0; i < count; ++i)
            t[i] -= std::floor(t[i]);
    } else {
        for (int i = 0; i < count; ++i)
            t[i] = std::abs(t[i] - 2 * std::floor(t[i] * 0.5f + 0.5f));
    }
}

KVN_CLONES void placeRow(const Way& way, int y, int x0, int count, float* along, float* across) {
    const double down = y - way.originY;
    for (int i = 0; i < count; ++i) {
        const double right = x0 + i - way.originX;
        along[i] = static_cast<float>(right * way.stepX + down * way.stepY);
        across[i] = static_cast<float>(down * way.stepX - right * way.stepY);
    }
}

struct Slope {
    Form form;
    Repetition repetition;
    Way way;

    // The shares of `count` pixels of row y from x0 on; room for a block.
    void shares(int y, int x0, int count, float* t) const {
        alignas(64) float along[block], across[block];
        placeRow(way, y, x0, count, along, across);
        switch (form) {
        case Form::Linear:
            std::copy_n(along, count, t);
            break;
        case Form::Radial:
            radialRow(along, across, count, t);
            break;
        case Form::Angular:
            angularRow(along, across, count, t);
            break;
        case Form::Reflected:
            std::transform(along, along + count, t, [](float a) { return std::abs(a); });
            break;
        case Form::Square:
            squareRow(along, across, count, t);
            break;
        }
        limitRow(repetition, count, t);
    }
};

// Thresholds of 0..0.998 that are spread evenly wherever one looks, another pattern for each
// channel. Sums of integers that wrap: the same on every machine.
KVN_CLONES void thresholds(int y, int x0, std::uint32_t channel, float* out) {
    const std::uint32_t start = static_cast<std::uint32_t>(y) * 2447445414u +
                                static_cast<std::uint32_t>(x0) * 3242174889u +
                                channel * 0x55555555u;
    for (std::uint32_t i = 0; i < block; ++i)
        out[i] = static_cast<float>((start + i * 3242174889u) >> 8) * (0.998f * 0x1p-24f);
}

KVN_CLONES void opaqueChannel(const float* t, const float* threshold, float from, float to,
                              std::uint8_t* out) {
    for (int i = 0; i < block; ++i)
        out[i] = static_cast<std::uint8_t>(from + t[i] * (to - from) + threshold[i]);
}

// Colours in proportion to their alpha. `fromAlpha` and `toAlpha` are shares of 255.
KVN_CLONES void weightedChannel(const float* t, const float* threshold, float from, float to,
                                float fromAlpha, float toAlpha, std::uint8_t* out) {
    for (int i = 0; i < block; ++i) {
        const float first = (1 - t[i]) * fromAlpha, second = t[i] * toAlpha;
        const float alpha = std::max(first + second, 1e-9f);
        const float value = from + second / alpha * (to - from);
        out[i] = static_cast<std::uint8_t>(std::min(255.0f, value + threshold[i]));
    }
}

struct Ends {
    std::array<float, 4> start, end; // red, green, blue, alpha
};

void colorBlock(const Ends& ends, const float* t, int y, int x0, ColorPlanes& planes) {
    alignas(64) float threshold[block];
    std::uint8_t* const channels[] = {planes.r, planes.g, planes.b, planes.a};
    for (std::size_t c = 0; c < 4; ++c) {
        thresholds(y, x0, static_cast<std::uint32_t>(c), threshold);
        if (c == 3 || ends.start[3] == ends.end[3])
            opaqueChannel(t, threshold, ends.start[c], ends.end[c], channels[c]);
        else
            weightedChannel(t, threshold, ends.start[c], ends.end[c], ends.start[3] / 255,
                            ends.end[3] / 255, channels[c]);
    }
}

std::array<float, 4> channelsOf(Rgba color, ImageType type) {
    if (!hasAlpha(type)) color.a = 255;
    if (type == ImageType::Gray8 || type == ImageType::GrayAlpha16)
        color.r = color.g = color.b = luma(color.r, color.g, color.b);
    return {float(color.r), float(color.g), float(color.b), float(color.a)};
}

Raster drawn(const Slope& slope, const Ends& ends, ImageType type, Size size, Task& task) {
    Raster result = Raster::uninitialized(type, size.width, size.height);
    const View view = result.edit();
    parallelRows(view.height, task, [&](int y0, int y1) {
        ColorPlanes planes;
        alignas(64) float t[block] = {};
        for (int y = y0; y < y1; ++y)
            for (int x = 0; x < view.width; x += block) {
                const int count = std::min(block, view.width - x);
                slope.shares(y, x, count, t);
                colorBlock(ends, t, y, x, planes);
                mergePlanes(planes, count, type, view.row(y) + x * bytesPerPixel(type));
            }
    });
    return result;
}

template <class Enum>
Enum clampedTo(int value, Enum last) {
    return static_cast<Enum>(std::clamp(value, 0, static_cast<int>(last)));
}

Raster gradient(const Raster&, const Arguments& arguments, Task& task) {
    const Size size =
        checkedResultSize(arguments.integer(0), arguments.integer(1), "Geometry.Gradient");
    const auto kind = clampedTo(arguments.integer(2), ImageType::Rgba32);
    // Palettes are made of a colour picture.
    const ImageType type = !hasPalette(kind) ? kind
                           : hasAlpha(kind)  ? ImageType::Rgba32
                                             : ImageType::Rgb24;
    Ends ends{channelsOf(arguments.color(3), type), channelsOf(arguments.color(4), type)};
    const Point from = arguments.point(5), to = arguments.point(6);
    const double dx = double(to.x) - from.x, dy = double(to.y) - from.y;
    const double square = dx * dx + dy * dy;
    const double length = square * std::clamp(arguments.number(8), 0.001, 1000.0);
    if (square == 0) ends.start = ends.end;
    const Slope slope{clampedTo(arguments.integer(7), Form::Square),
                      clampedTo(arguments.integer(9), Repetition::BackAndForth),
                      {double(from.x), double(from.y), square == 0 ? 0 : dx / length,
                       square == 0 ? 0 : dy / length}};
    if (type == kind) return drawn(slope, ends, type, size, task);
    Raster colored;
    {
        const Task::Stage drawing(task, 0, 0.3);
        colored = drawn(slope, ends, type, size, task);
    }
    const Task::Stage converting(task, 0.3, 1);
    return convertType(colored, kind, task);
}

} // namespace

const Operation gradientOperation = {
    .name = "Geometry.Gradient",
    .undoName = "Gradient",
    .arguments = gradientArguments,
    .run = gradient,
    .alpha = AlphaRule::Defines,
    .types = TypeRule::Fixed,
    .note = "Makes a picture of a slope between two colours.",
    .needsSource = false,
};

std::span<const Operation* const> generateOperations() {
    static constexpr const Operation* list[] = {&gradientOperation, &hugoNoiseOperation,
                                                &perlinNoiseOperation};
    return list;
}

} // namespace kvn::imaging
