// Transforms.BumpMap.
#include <algorithm>
#include <vector>

#include "imaging/convert.h"
#include "imaging/operations/resample/resample.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/simd.h"
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

// The brightness of every place of a row, and the white that is added to it.
struct LightRow {
    explicit LightRow(int width)
        : factor(static_cast<std::size_t>(width)), white(static_cast<std::size_t>(width)) {}
    std::vector<float> factor, white;
};

// Rows above, here and below, each beginning a pixel left of the first place.
struct ReliefRows {
    const std::uint8_t *above, *here, *below;
};

// Slopes by Sobel.
KVN_CLONES void lightPlaces(const ReliefRows& relief, float steepness, int count,
                            float* __restrict factor, float* __restrict white) {
    const std::uint8_t *a = relief.above, *h = relief.here, *b = relief.below;
    for (int x = 0; x < count; ++x) {
        const int across = (a[x + 2] + 2 * h[x + 2] + b[x + 2]) - (a[x] + 2 * h[x] + b[x]);
        const int down = (b[x] + 2 * b[x + 1] + b[x + 2]) - (a[x] + 2 * a[x + 1] + a[x + 2]);
        const float slopeX = static_cast<float>(across) * steepness / 8;
        const float slopeY = static_cast<float>(down) * steepness / 8;
        const float squared = slopeX * slopeX + slopeY * slopeY + 1;
        const float towards = lamp.up - slopeX * lamp.across - slopeY * lamp.down;
        const float facing = (towards > 0 ? towards : 0) / __builtin_sqrtf(squared);
        const float over = (facing > lamp.up ? facing - lamp.up : 0) / (1 - lamp.up);
        const float bright = facing / lamp.up;
        factor[x] = bright < 1.25f ? bright : 1.25f;
        white[x] = over * over * glint;
    }
}

template <int Channels, int Colors>
void lightPixels(const std::uint8_t* in, const LightRow& light, std::uint8_t* out) {
    for (std::size_t x = 0; x < light.factor.size(); ++x, in += Channels, out += Channels) {
        for (int c = 0; c < Colors; ++c) {
            const float lit = static_cast<float>(in[c]) * light.factor[x] + light.white[x] + 0.5f;
            out[c] = static_cast<std::uint8_t>(static_cast<int>(lit < 255.0f ? lit : 255.0f));
        }
        if (Colors < Channels) out[Colors] = in[Colors];
    }
}

// A row with its ends repeated by one pixel.
void widen(const std::uint8_t* row, int width, std::vector<std::uint8_t>& to) {
    to.front() = row[0];
    std::copy_n(row, width, to.begin() + 1);
    to.back() = row[width - 1];
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
    constexpr decltype(&lightPixels<1, 1>) kernels[] = {lightPixels<1, 1>, lightPixels<2, 1>,
                                                        lightPixels<3, 3>, lightPixels<4, 3>};
    const auto kernel = kernels[bytesPerPixel(source.type()) - 1];
    // Ten: a rise of 20 levels from pixel to pixel is a slope of 45 degrees.
    const auto steepness = static_cast<float>(amount / 10 / 20);
    parallelRows(source.height(), task, [&](int y0, int y1) {
        std::vector<std::uint8_t> three[3];
        for (auto& row : three)
            row.resize(static_cast<std::size_t>(in.width) + 2);
        LightRow light(in.width);
        for (int y = y0; y < y1; ++y) {
            for (int i = 0; i < 3; ++i)
                widen(heights.row(std::clamp(y - 1 + i, 0, in.height - 1)), in.width,
                      three[static_cast<std::size_t>(i)]);
            lightPlaces({three[0].data(), three[1].data(), three[2].data()}, steepness, in.width,
                        light.factor.data(), light.white.data());
            kernel(in.row(y), light, out.row(y));
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
