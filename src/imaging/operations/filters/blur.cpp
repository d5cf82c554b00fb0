#include "imaging/operations/filters/blur.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "imaging/operations/filters/box_blend.h"
#include "imaging/operations/filters/box_sums.h"
#include "imaging/operations/filters/gauss.h"
#include "imaging/operations/filters/gauss_kernels.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/weighted_rows.h"

namespace kvn::imaging {
namespace {

constexpr int largestKernel = 255;

constexpr Argument blurArguments[] = {
    {"amount", ArgumentKind::Integer, 0, 100, "%", "share of the mean; clamped"},
    {"kernel", ArgumentKind::Integer, 1, largestKernel, "px", "side of the window; made odd"},
    {"ignore alpha", ArgumentKind::Boolean, 0, 0, "", "alpha stays and does not count"},
};

Raster blur(const Raster& source, const Arguments& arguments, Task& task) {
    const double share = std::clamp(arguments.integer(0), 0, 100) / 100.0;
    return boxBlend(source, oddSize(arguments.integer(1), largestKernel), share,
                    arguments.boolean(2) ? BoxAlpha::Ignored : BoxAlpha::Mixed, task);
}

constexpr Argument gaussianBlurArguments[] = {
    {"amount", ArgumentKind::Integer, 0, 2500, "%", "25 is a standard deviation of one pixel"},
};

// Promotes the picture, makes room for the result and has it filled.
template <class Fill>
Raster throughRows(const Raster& picture, Task& task, const Fill& fill) {
    const Raster source = promoted(picture, task);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    fill(source.view(), result.edit(), !isOpaque(source));
    return result;
}

void finishRow(const ConstView& from, const View& to, bool weighted, int y, const float* row) {
    if (weighted)
        unmultiplyRow(row, from.width, bytesPerPixel(from.type), to.row(y), from.row(y));
    else
        roundLevels(row, to.row(y), rowBytes(from.type, from.width));
}

Raster gaussianBlur(const Raster& picture, const Arguments& arguments, Task& task) {
    const double sigma = std::clamp(arguments.integer(0), 0, 2500) / 25.0;
    if (sigma == 0) return picture;
    return throughRows(picture, task, [&](const ConstView& from, const View& to, bool weighted) {
        const std::size_t samples = rowBytes(from.type, from.width);
        const auto round = [&](int y, const std::uint16_t* row) {
            roundFixed(row, to.row(y), samples);
        };
        if (!weighted && gaussRowsFixed(from, sigma, task, round)) return;
        gaussRows(from, sigma, weighted, task,
                  [&](int y, const float* row) { finishRow(from, to, weighted, y, row); });
    });
}

constexpr Argument softenArguments[] = {
    {"amount", ArgumentKind::Integer, 0, 100, "%", "share of the mean; clamped"},
};

// What is visible of the pixel and of the mean, mixed.
void mixVisible(const std::uint8_t* pixels, const float* mean, float share, float* out, int width,
                int channels) {
    for (int x = 0; x < width; ++x, pixels += channels, mean += channels, out += channels) {
        const float alpha = pixels[channels - 1], own = alpha * (1 - share) / 255;
        for (int c = 0; c < channels - 1; ++c)
            out[c] = static_cast<float>(pixels[c]) * own + mean[c] * share;
        out[channels - 1] = alpha * (1 - share) + mean[channels - 1] * share;
    }
}

Raster soften(const Raster& picture, const Arguments& arguments, Task& task) {
    const float share = static_cast<float>(std::clamp(arguments.integer(0), 0, 100)) / 100;
    if (share == 0) return picture;
    return throughRows(picture, task, [&](const ConstView& from, const View& to, bool weighted) {
        const int channels = bytesPerPixel(from.type);
        const std::size_t samples = rowBytes(from.type, from.width);
        const std::vector<float> weights{1.0f / 16, 4.0f / 16, 6.0f / 16, 4.0f / 16, 1.0f / 16};
        windowRows(from, weights, weights, weighted, task, [&](int y, const float* mean) {
            if (!weighted) return addDetail(from.row(y), mean, -share, 0, to.row(y), samples);
            std::vector<float> mixed(samples);
            mixVisible(from.row(y), mean, share, mixed.data(), from.width, channels);
            unmultiplyRow(mixed.data(), from.width, channels, to.row(y), from.row(y));
        });
    });
}

constexpr Argument vibrationArguments[] = {
    {"amount", ArgumentKind::Integer, 0, 100, "%", "4 is a swing of one pixel; clamped"},
};

// The share of the exposure that a swing of sin t spends at each pixel from -reach to reach.
std::vector<float> swingWeights(int reach) {
    const double end = reach + 0.5;
    std::vector<float> weights;
    for (int i = -reach; i <= reach; ++i)
        weights.push_back(static_cast<float>(
            (std::asin((i + 0.5) / end) - std::asin((i - 0.5) / end)) / std::numbers::pi));
    return weights;
}

Raster vibration(const Raster& picture, const Arguments& arguments, Task& task) {
    const int reach = (std::clamp(arguments.integer(0), 0, 100) + 3) / 4;
    if (reach == 0) return picture;
    return throughRows(picture, task, [&](const ConstView& from, const View& to, bool weighted) {
        windowRows(from, {1.0f}, swingWeights(reach), weighted, task,
                   [&](int y, const float* row) { finishRow(from, to, weighted, y, row); });
    });
}

constexpr Argument sharpenArguments[] = {
    {"amount", ArgumentKind::Integer, 0, 100, "%", "strength; clamped"},
    {"kernel", ArgumentKind::Integer, 1, largestKernel, "px", "side of the window; made odd"},
    {"flag", ArgumentKind::Boolean, 0, 0, "", "not looked at"},
};

Raster sharpen(const Raster& source, const Arguments& arguments, Task& task) {
    const double share = std::clamp(arguments.integer(0), 0, 100) / 100.0;
    return boxBlend(source, oddSize(arguments.integer(1), largestKernel), -3 * share,
                    BoxAlpha::Kept, task);
}

} // namespace

const Operation blurOperation = {
    .name = "Effects.Blur",
    .undoName = "Blur",
    .arguments = blurArguments,
    .run = blur,
    .border = -1,
    .note = "Mixes every pixel with the mean of the square window around it.",
};

const Operation gaussianBlurOperation = {
    .name = "Effects.GaussianBlur",
    .undoName = "Gaussian Blur",
    .arguments = gaussianBlurArguments,
    .run = gaussianBlur,
    .border = -1,
    .note = "Blurs with a bell-shaped window.",
};

const Operation softenOperation = {
    .name = "Effects.Soften",
    .undoName = "Soften",
    .arguments = softenArguments,
    .run = soften,
    .border = 2,
    .note = "Mixes every pixel with a small bell-shaped mean.",
};

const Operation sharpenOperation = {
    .name = "Effects.Sharpen",
    .undoName = "Sharpen",
    .arguments = sharpenArguments,
    .run = sharpen,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Moves every pixel away from the mean of the square window around it.",
};

const Operation vibrationOperation = {
    .name = "Effects.Vibration",
    .undoName = "Vibration",
    .arguments = vibrationArguments,
    .run = vibration,
    .border = 25,
    .note = "The picture as a shaking camera takes it, swinging sideways.",
};

} // namespace kvn::imaging
