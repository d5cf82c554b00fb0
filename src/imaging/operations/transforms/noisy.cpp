// Marble, Perlin and Random: displacement by noise. The seeds are fixed, so that the same picture
// always gives the same result.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "imaging/operations/support/warp.h"
#include "imaging/operations/transforms/noise_field.h"
#include "imaging/operations/transforms/transforms.h"

namespace kvn::imaging {
namespace {

constexpr std::uint32_t marbleSeed = 101, perlinSeedX = 201, perlinSeedY = 301, randomSeed = 401;

constexpr Argument noiseArguments[] = {
    {"amount", ArgumentKind::Number, -10000, 10000, "px", "how far pixels move; clamped"},
    {"sizeX", ArgumentKind::Number, 0.1, 100, "%", "of a vein, of the width; clamped"},
    {"sizeY", ArgumentKind::Number, 0.1, 100, "%", "of a vein, of the height; clamped"},
};

NoiseField fieldFor(const Raster& source, const Arguments& arguments, std::uint32_t seed) {
    const auto part = [&](std::size_t i) {
        return std::clamp(arguments.number(i), 0.1, 100.0) / 100;
    };
    return NoiseField(source.size(), part(1) * source.width(), part(2) * source.height(), seed);
}

float amountFrom(const Arguments& arguments) {
    return static_cast<float>(std::clamp(arguments.number(0), -10000.0, 10000.0));
}

// Cosine and sine by the fraction of a turn.
struct Circle {
    static constexpr int steps = 1024;
    std::vector<float> cosine, sine;

    Circle() {
        for (int i = 0; i < steps; ++i) {
            const double angle = 2 * std::numbers::pi * i / steps;
            cosine.push_back(static_cast<float>(std::cos(angle)));
            sine.push_back(static_cast<float>(std::sin(angle)));
        }
    }
};

// One scale of noise only: finer ones would tear the streaks to crumbs.
Raster marble(const Raster& source, const Arguments& arguments, Task& task) {
    const float amount = amountFrom(arguments);
    if (amount == 0) return source;
    const NoiseField field = fieldFor(source, arguments, marbleSeed);
    const Circle circle;
    const WarpSettings settings{.size = source.size()};
    return warped(source, settings, task, [&](int y, int x0, int count, float* toX, float* toY) {
        field.row(y, x0, count, toX);
        for (int i = 0; i < count; ++i) {
            const auto step = static_cast<std::size_t>(
                static_cast<int>((toX[i] + 8) * Circle::steps) % Circle::steps);
            toX[i] = static_cast<float>(x0 + i) + amount * circle.cosine[step];
            toY[i] = static_cast<float>(y) + amount * circle.sine[step];
        }
    });
}

Raster perlin(const Raster& source, const Arguments& arguments, Task& task) {
    const float amount = amountFrom(arguments);
    if (amount == 0) return source;
    const NoiseField across = fieldFor(source, arguments, perlinSeedX);
    const NoiseField down = fieldFor(source, arguments, perlinSeedY);
    const WarpSettings settings{.size = source.size()};
    return warped(source, settings, task, [&](int y, int x0, int count, float* toX, float* toY) {
        across.row(y, x0, count, toX);
        down.row(y, x0, count, toY);
        for (int i = 0; i < count; ++i) {
            toX[i] = static_cast<float>(x0 + i) + amount * toX[i];
            toY[i] = static_cast<float>(y) + amount * toY[i];
        }
    });
}

constexpr Argument randomArguments[] = {
    {"offset", ArgumentKind::Number, 0, 1000, "px", "the farthest that pixels move; clamped"},
};

// 64 random bits for a place: the finalizer of SplitMix64.
std::uint64_t randomBits(std::uint32_t x, std::uint32_t y) {
    std::uint64_t h = (std::uint64_t{y} << 32 | x) + randomSeed * 0x9E3779B97F4A7C15ull;
    h = (h ^ (h >> 30)) * 0xBF58476D1CE4E5B9ull;
    h = (h ^ (h >> 27)) * 0x94D049BB133111EBull;
    return h ^ (h >> 31);
}

Raster random(const Raster& source, const Arguments& arguments, Task& task) {
    const auto offset = static_cast<float>(std::clamp(std::abs(arguments.number(0)), 0.0, 1000.0));
    if (offset == 0) return source;
    const WarpSettings settings{.size = source.size(), .smooth = false, .continuous = false};
    const float scale = 2 * offset * 0x1p-32f;
    return warped(source, settings, task, [=](int y, int x0, int count, float* toX, float* toY) {
        for (int i = 0; i < count; ++i) {
            const std::uint64_t bits =
                randomBits(static_cast<std::uint32_t>(x0 + i), static_cast<std::uint32_t>(y));
            toX[i] = static_cast<float>(x0 + i) - offset +
                     scale * static_cast<float>(static_cast<std::uint32_t>(bits));
            toY[i] = static_cast<float>(y) - offset +
                     scale * static_cast<float>(static_cast<std::uint32_t>(bits >> 32));
        }
    });
}

} // namespace

const Operation marbleOperation = {
    .name = "Transforms.Marble",
    .undoName = "Marble",
    .arguments = noiseArguments,
    .run = marble,
    .border = -1,
    .types = TypeRule::Fixed,
    .note = "Swirls the picture like marbled paper. Promotes unless nothing moves.",
};

const Operation perlinOperation = {
    .name = "Transforms.Perlin",
    .undoName = "Perlin",
    .arguments = noiseArguments,
    .run = perlin,
    .border = -1,
    .types = TypeRule::Fixed,
    .note = "Moves the picture along smooth noise. Promotes unless nothing moves.",
};

const Operation randomOperation = {
    .name = "Transforms.Random",
    .undoName = "Random",
    .arguments = randomArguments,
    .run = random,
    .border = -1,
    .types = TypeRule::Fixed,
    .note = "Scatters the pixels, as through frosted glass. Promotes unless nothing moves.",
};

} // namespace kvn::imaging
