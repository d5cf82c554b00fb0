#include "imaging/operations/texture/noise.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/texture/noise_kernels.h"

namespace kvn::imaging {
namespace {

constexpr std::uint32_t seed = 20260;
constexpr int largestVariance = 255 * 255;
constexpr std::size_t places = 65536;

// The number below which the share p of a normal distribution lies, by Newton's method.
double normalQuantile(double p, double guess, int steps) {
    double x = guess;
    for (int i = 0; i < steps; ++i) {
        const double share = 0.5 * std::erfc(-x / std::numbers::sqrt2);
        const double density = std::exp(-0.5 * x * x) / std::sqrt(2 * std::numbers::pi);
        x -= std::clamp((share - p) / density, -1.0, 1.0);
    }
    return x;
}

// The same for each distribution with mean 0 and variance 1. `before` is the quantile of a p that
// was a little less, or below -9 at the first.
double quantile(int type, double p, double before) {
    switch (type) {
    case 0:
        return before < -9 ? normalQuantile(p, -4, 12) : normalQuantile(p, before, 2);
    case 1:
        return -std::log(1 - p) - 1;
    case 2: {
        const double mean = std::sqrt(std::numbers::pi / 2);
        return (std::sqrt(-2 * std::log(1 - p)) - mean) / std::sqrt(2 - std::numbers::pi / 2);
    }
    default:
        return (2 * p - 1) * std::numbers::sqrt3;
    }
}

// The noise for each of the equally likely random numbers.
std::vector<std::int16_t> noiseTable(int type, double deviation) {
    std::vector<std::int16_t> table(places);
    double unit = -10;
    for (std::size_t i = 0; i < places; ++i) {
        unit = quantile(type, (static_cast<double>(i) + 0.5) / places, unit);
        const double n = std::clamp(deviation * unit, -512.0, 512.0);
        table[i] = static_cast<std::int16_t>(std::lround(n));
    }
    return table;
}

std::uint8_t level(int value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

constexpr Argument noiseArguments[] = {
    {"type", ArgumentKind::Integer, 0, 3, "", "Gaussian, exponential, Rayleigh, uniform"},
    {"variance", ArgumentKind::Integer, 0, largestVariance, "", "levels squared; clamped"},
    {"monochromatic", ArgumentKind::Boolean, 0, 0, "", "the same for all channels"},
    {"ignore alpha", ArgumentKind::Boolean, 0, 0, "", "alpha stays"},
};

Raster noise(const Raster& picture, const Arguments& arguments, Task& task) {
    const int variance = std::clamp(arguments.integer(1), 0, largestVariance);
    if (variance == 0) return picture;
    const std::vector<std::int16_t> table =
        noiseTable(std::clamp(arguments.integer(0), 0, 3), std::sqrt(variance));
    const bool gray = arguments.boolean(2);
    const Raster source = promoted(picture, task);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    const int channels = bytesPerPixel(from.type);
    const int kept = hasAlpha(from.type) && arguments.boolean(3) ? channels - 1 : -1;
    const std::size_t samples = rowBytes(from.type, from.width);
    const std::size_t count = gray ? static_cast<std::size_t>(from.width) : samples;
    parallelRows(from.height, task, [&](int y0, int y1) {
        std::vector<std::uint16_t> random(count);
        for (int y = y0; y < y1; ++y) {
            randomRow(seed, static_cast<std::uint32_t>(y), random.data(), count);
            const std::uint8_t* __restrict in = from.row(y);
            std::uint8_t* __restrict out = to.row(y);
            if (gray) {
                for (std::size_t x = 0, i = 0; x < count; ++x)
                    for (const int n = table[random[x]];
                         i < (x + 1) * static_cast<std::size_t>(channels); ++i)
                        out[i] = level(in[i] + n);
            } else {
                for (std::size_t i = 0; i < samples; ++i)
                    out[i] = level(in[i] + table[random[i]]);
            }
            if (kept >= 0)
                for (auto i = static_cast<std::size_t>(kept); i < samples;
                     i += static_cast<std::size_t>(channels))
                    out[i] = in[i];
        }
    });
    return result;
}

} // namespace

const Operation noiseOperation = {
    .name = "Effects.Noise",
    .undoName = "Noise",
    .arguments = noiseArguments,
    .run = noise,
    .alpha = AlphaRule::EveryChannel,
    .note = "Random grain of four distributions.",
};

} // namespace kvn::imaging
