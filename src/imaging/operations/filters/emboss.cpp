#include "imaging/operations/filters/emboss.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "imaging/convert.h"
#include "imaging/convert_rows.h"
#include "imaging/operations/filters/relief_kernels.h"
#include "imaging/operations/filters/window_rows.h"
#include "imaging/operations/support/hidden_colors.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

constexpr float slopeOf45 = 96;
constexpr int largestOffset = 100;
constexpr double leastElevation = 1; // a lamp on the ground would leave nothing to see

constexpr Argument embossArguments[] = {
    {"angle", ArgumentKind::Integer, 0, 360, "degrees", "of the lamp; 0 right, 90 above"},
    {"elevation", ArgumentKind::Integer, 0, 90, "degrees", "of the lamp; clamped"},
    {"offset", ArgumentKind::Integer, 0, largestOffset, "px", "reach of the slopes; clamped"},
    {"use image as texture", ArgumentKind::Boolean, 0, 0, "", "shades the picture"},
};

inline std::uint8_t level(float value) {
    return static_cast<std::uint8_t>(static_cast<int>(std::min(value, 255.0f) + 0.5f));
}

KVN_CLONES void levelsOf(const float* __restrict shade, std::uint8_t* __restrict out, int width) {
    for (int x = 0; x < width; ++x)
        out[x] = level(shade[x]);
}

// One row of the picture times `scale` of the shade. Alpha is copied.
template <int channels, int colors>
void paint(const float* __restrict shade, float scale, const std::uint8_t* __restrict pixels,
           std::uint8_t* __restrict out, int width) {
    for (int x = 0; x < width; ++x)
        for (int c = 0; c < channels; ++c) {
            const int i = x * channels + c;
            out[i] =
                c < colors ? level(shade[x] * scale * static_cast<float>(pixels[i])) : pixels[i];
        }
}

using Paint = void (*)(const float*, float, const std::uint8_t*, std::uint8_t*, int);

Paint paintFor(ImageType type) {
    switch (type) {
    case ImageType::Gray8:
        return paint<1, 1>;
    case ImageType::GrayAlpha16:
        return paint<2, 1>;
    case ImageType::Rgb24:
        return paint<3, 3>;
    default:
        return paint<4, 3>;
    }
}

Light lampAt(double angle, double elevation) {
    const double turn = std::fmod(angle, 360) * std::numbers::pi / 180;
    const double rise = std::clamp(elevation, leastElevation, 90.0) * std::numbers::pi / 180;
    return {static_cast<float>(std::cos(turn) * std::cos(rise)),
            static_cast<float>(std::sin(turn) * std::cos(rise)),
            static_cast<float>(std::sin(rise))};
}

Raster emboss(const Raster& picture, const Arguments& arguments, Task& task) {
    const int reach = (std::clamp(arguments.integer(2), 0, largestOffset) + 1) / 2;
    if (reach == 0) return picture;
    const Light lamp = lampAt(arguments.integer(0), arguments.integer(1));
    const bool texture = arguments.boolean(3);
    const Raster source = promoted(picture, task);
    const Raster heights = convertType(source, ImageType::Gray8, task);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view(), ground = heights.view();
    const View to = result.edit();
    const int width = from.width;
    const Paint paintRow = paintFor(from.type);
    parallelRows(
        from.height, task,
        [&](int y0, int y1) {
            PaddedRows rows(ground, reach, reach, reach);
            std::vector<float> shade(static_cast<std::size_t>(width) + 64);
            std::vector<std::uint8_t> gray(static_cast<std::size_t>(width));
            for (int y = y0; y < y1; ++y) {
                const std::uint8_t* const* around = rows.around(y);
                shadeRow(around[0], around[reach], around[2 * reach], reach, lamp, slopeOf45,
                         shade.data(), static_cast<std::size_t>(width));
                if (texture) {
                    paintRow(shade.data(), 1 / (255 * lamp.z), from.row(y), to.row(y), width);
                    continue;
                }
                levelsOf(shade.data(), gray.data(), width);
                convertRow(ImageType::Gray8, from.type, gray.data(), to.row(y), width);
                if (hasAlpha(from.type))
                    copyAlpha(from.row(y), to.row(y), width, bytesPerPixel(from.type));
            }
        },
        std::max(16, 2 * reach));
    return result;
}

} // namespace

const Operation embossOperation = {
    .name = "Effects.Emboss",
    .undoName = "Emboss",
    .arguments = embossArguments,
    .run = overVisibleColors<emboss>,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "The picture as a relief under a lamp.",
};

} // namespace kvn::imaging
