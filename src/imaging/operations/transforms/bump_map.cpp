// Transforms.BumpMap.
#include <algorithm>
#include <cmath>
#include <vector>

#include "imaging/convert.h"
#include "imaging/operations/resample/resample.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/transforms/transforms.h"

namespace kvn::imaging {
namespace {

constexpr Argument bumpArguments[] = {
    {"amount", ArgumentKind::Number, -100, 100, "",
     "steepness in tenths; below 0 bright is deep; clamped"},
    {"bump", ArgumentKind::Image, 0, 0, "", "the relief: bright is high"},
};

// The bump picture's brightness in the size of the picture. The cubic B-spline (row 11 of the
// methods) keeps enlarged reliefs free of steps.
Raster reliefFor(const Raster& bump, Size size, Task& task) {
    const Raster gray = convertType(bump, ImageType::Gray8, task);
    return resizeOperation.run(
        gray, Arguments({std::int64_t{size.width}, std::int64_t{size.height}, std::int64_t{11}}),
        task);
}

// Light from the upper left, 45 degrees high; the light of a flat place is 1.
struct Lamp {
    float across, down, up;
};
constexpr Lamp lamp{-0.5f, -0.5f, 0.70710678f};
// How much of a full turn towards the lamp glints.
constexpr float glint = 60;

// Brightness of a slope, and the white that is added to it.
struct Light {
    float factor, white;
};

Light lightOf(float slopeX, float slopeY) {
    const float length = std::sqrt(slopeX * slopeX + slopeY * slopeY + 1);
    const float facing =
        std::max(0.0f, (lamp.up - slopeX * lamp.across - slopeY * lamp.down) / length);
    const float over = std::max(0.0f, facing - lamp.up) / (1 - lamp.up);
    return {std::min(facing / lamp.up, 1.25f), over * over * glint};
}

// The slope at pixel x between the rows above, here and below (Sobel).
struct ReliefRows {
    const std::uint8_t *above, *here, *below;
    int last;

    float across(int x) const {
        const int l = std::max(0, x - 1), r = std::min(last, x + 1);
        return static_cast<float>((above[r] + 2 * here[r] + below[r]) -
                                  (above[l] + 2 * here[l] + below[l])) /
               8;
    }
    float down(int x) const {
        const int l = std::max(0, x - 1), r = std::min(last, x + 1);
        return static_cast<float>((below[l] + 2 * below[x] + below[r]) -
                                  (above[l] + 2 * above[x] + above[r])) /
               8;
    }
};

void lightRow(const std::uint8_t* in, const ReliefRows& relief, float steepness, int channels,
              int colors, std::uint8_t* out) {
    for (int x = 0; x <= relief.last; ++x, in += channels, out += channels) {
        const Light light = lightOf(relief.across(x) * steepness, relief.down(x) * steepness);
        for (int c = 0; c < colors; ++c)
            out[c] = static_cast<std::uint8_t>(
                std::min(255.0f, static_cast<float>(in[c]) * light.factor + light.white) + 0.5f);
        if (colors < channels) out[colors] = in[colors];
    }
}

Raster bumpMap(const Raster& picture, const Arguments& arguments, Task& task) {
    const double amount = std::clamp(arguments.number(0), -100.0, 100.0);
    if (amount == 0) return picture;
    const Raster source = promoted(picture, task);
    Task quiet;
    quiet.threads = task.threads;
    const Raster relief = reliefFor(arguments.image(1), source.size(), quiet);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView in = source.view(), heights = relief.view();
    const View out = result.edit();
    const int channels = bytesPerPixel(source.type());
    const int colors = hasAlpha(source.type()) ? channels - 1 : channels;
    // Ten: a rise of 20 levels from pixel to pixel is a slope of 45 degrees.
    const auto steepness = static_cast<float>(amount / 10 / 20);
    parallelRows(source.height(), task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            const ReliefRows rows{heights.row(std::max(0, y - 1)), heights.row(y),
                                  heights.row(std::min(in.height - 1, y + 1)), in.width - 1};
            lightRow(in.row(y), rows, steepness, channels, colors, out.row(y));
        }
    });
    return result;
}

} // namespace

const Operation bumpMapOperation = {
    .name = "Transforms.BumpMap",
    .undoName = "Bump Map",
    .arguments = bumpArguments,
    .run = bumpMap,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Fixed,
    .note = "Lights the picture as a relief. Promotes unless the amount is 0.",
};

} // namespace kvn::imaging
