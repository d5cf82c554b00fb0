#include "imaging/operations/filters/detail.h"

#include <algorithm>
#include <vector>

#include "imaging/operations/filters/gauss.h"
#include "imaging/operations/filters/gauss_kernels.h"
#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {
namespace {

constexpr double leastSigma = 0.1, largestSigma = 1000;

// `combine(pixels, blurred, out, count)` makes one row.
template <class Combine>
Raster withBlur(const Raster& picture, double radius, Precision precision, Task& task,
                const Combine& combine) {
    const Raster source = promoted(picture, task);
    const bool weighted = !isOpaque(source);
    const int channels = bytesPerPixel(source.type());
    const std::size_t samples = rowBytes(source.type(), source.width());
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    gaussRows(
        from, std::clamp(radius, leastSigma, largestSigma), weighted, task,
        [&](int y, const float* row) {
            std::vector<float> straight(weighted ? samples : 0);
            if (weighted) straightRow(row, from.row(y), straight.data(), from.width, channels);
            combine(from.row(y), weighted ? straight.data() : row, to.row(y), samples);
            if (!hasAlpha(from.type)) return;
            for (std::size_t i = static_cast<std::size_t>(channels) - 1; i < samples;
                 i += static_cast<std::size_t>(channels))
                to.row(y)[i] = from.row(y)[i];
        },
        precision);
    return result;
}

constexpr Argument unsharpMaskArguments[] = {
    {"level", ArgumentKind::Integer, 0, 255, "", "smaller differences stay; clamped"},
    {"strength", ArgumentKind::Number, 0, 100, "", "factor of the difference; clamped"},
    {"radius", ArgumentKind::Number, 0, largestSigma, "px", "standard deviation of the blur"},
};

constexpr float largestFixedStrength = 5; // more would show the errors of the quick blur

struct Unsharp {
    float level, strength;
    double radius;
};

// By the quickest blur, for opaque pictures and small radii; an empty picture for others.
Raster unsharpFixed(const Raster& picture, const Unsharp& mask, Task& task) {
    const Raster source = promoted(picture, task);
    const std::size_t samples = source.rowBytes();
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    const bool done = gaussRowsFixed(
        from, std::max(mask.radius, leastSigma), task, [&](int y, const std::uint16_t* blurred) {
            addDetailFixed(from.row(y), blurred, mask.strength, mask.level, to.row(y), samples);
        });
    return done ? result : Raster();
}

Raster unsharpMask(const Raster& source, const Arguments& arguments, Task& task) {
    const auto level = static_cast<float>(std::clamp(arguments.integer(0), 0, 255));
    const auto strength = static_cast<float>(std::clamp(arguments.number(1), 0.0, 100.0));
    const double radius = arguments.number(2);
    if (strength == 0 || radius <= 0) return source;
    if (strength <= largestFixedStrength && isOpaque(source)) {
        const Raster result = unsharpFixed(source, {level, strength, radius}, task);
        if (!result.isEmpty()) return result;
    }
    const Precision precision = strength > 5 ? Precision::Fine : Precision::Levels;
    return withBlur(
        source, radius, precision, task,
        [=](const std::uint8_t* pixels, const float* blurred, std::uint8_t* out,
            std::size_t count) { addDetail(pixels, blurred, strength, level, out, count); });
}

constexpr Argument highPassArguments[] = {
    {"radius", ArgumentKind::Number, 0, largestSigma, "px", "standard deviation; clamped"},
};

Raster highPass(const Raster& source, const Arguments& arguments, Task& task) {
    return withBlur(source, arguments.number(0), Precision::Levels, task,
                    [](const std::uint8_t* pixels, const float* blurred, std::uint8_t* out,
                       std::size_t count) { detailAround(128, pixels, blurred, out, count); });
}

} // namespace

const Operation unsharpMaskOperation = {
    .name = "Effects.UnsharpMask",
    .undoName = "Unsharp Mask",
    .arguments = unsharpMaskArguments,
    .run = unsharpMask,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Strengthens what differs from the blurred picture.",
};

const Operation highPassOperation = {
    .name = "Effects.HighPass",
    .undoName = "High Pass",
    .arguments = highPassArguments,
    .run = highPass,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Leaves fine detail on mid grey.",
};

} // namespace kvn::imaging
