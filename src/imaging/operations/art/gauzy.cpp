// Geometry.Gauzy.
#include <algorithm>
#include <vector>

#include "imaging/operations/art/art.h"
#include "imaging/operations/filters/detail.h"
#include "imaging/operations/filters/gauss.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

enum Mode { desaturated, fullColor, highContrast, maximum, minimum };

constexpr double widestVeil = 30;     // in U, at 100 %
constexpr double sharpest = 2.5;      // strength of the unsharp mask at 100 %
constexpr double leastShare = 0.2;    // of the sharp picture, at clarity 0
constexpr double clarityShare = 0.55; // what clarity 100 adds

constexpr Argument gauzyArguments[] = {
    {"blur", ArgumentKind::Integer, 0, 100, "%", "how far the veil spreads; clamped"},
    {"sharpen", ArgumentKind::Integer, 0, 100, "%", "of the picture below it; clamped"},
    {"clarity", ArgumentKind::Integer, 0, 100, "%", "how clear the picture shows; clamped"},
    {"mode", ArgumentKind::Integer, -1, minimum, "",
     "desaturated, full colour, high contrast, max, min; others full colour"},
};

// The veil over every value, from the sharp picture and the blurred one; then both mixed.
template <int mode>
KVN_CLONES void veilValues(const std::uint8_t* __restrict sharp, const float* __restrict blurred,
                           float share, std::uint8_t* __restrict out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float s = sharp[i], b = blurred[i];
        float veil = b;
        if constexpr (mode == maximum)
            veil = s + b - s * b * (1.0f / 255);
        else if constexpr (mode == minimum)
            veil = s * b * (1.0f / 255);
        float mixed = veil + (s - veil) * share;
        mixed = mixed > 0 ? mixed : 0;
        mixed = mixed < 255 ? mixed : 255;
        if constexpr (mode == highContrast) {
            const float t = mixed * (1.0f / 255);
            mixed *= t * (3 - 2 * t);
        }
        out[i] = static_cast<std::uint8_t>(static_cast<int>(mixed + 0.5f));
    }
}

// The colours of a row replaced by their luma.
void grayOut(float* row, int width, int channels) {
    for (int x = 0; x < width; ++x, row += channels)
        row[0] = row[1] = row[2] = 0.299f * row[0] + 0.587f * row[1] + 0.114f * row[2];
}

using Veil = void (*)(const std::uint8_t*, const float*, float, std::uint8_t*, std::size_t);

Veil veilOf(int mode) {
    switch (mode) {
    case highContrast:
        return veilValues<highContrast>;
    case maximum:
        return veilValues<maximum>;
    case minimum:
        return veilValues<minimum>;
    default:
        return veilValues<fullColor>;
    }
}

double shareOf(const Arguments& arguments, std::size_t i) {
    return std::clamp(arguments.integer(i), 0, 100) / 100.0;
}

Raster sharpened(const Raster& source, double strength, double unit, Task& task) {
    if (strength == 0) return source;
    const double radius = std::clamp(1.5 * unit, 0.8, 3.0);
    return unsharpMaskOperation.run(
        source, Arguments({std::int64_t{0}, strength * sharpest, radius}), task);
}

Raster gauzy(const Raster& picture, const Arguments& arguments, Task& task) {
    const Raster source = promoted(picture, task);
    const double unit = std::min(source.width(), source.height()) / 1000.0;
    const double sigma = std::max(0.1, shareOf(arguments, 0) * widestVeil * unit);
    const auto share = static_cast<float>(leastShare + clarityShare * shareOf(arguments, 2));
    const int mode = arguments.integer(3);
    const bool weighted = !isOpaque(source);
    const int channels = bytesPerPixel(source.type());
    const bool fades = mode == desaturated && channels >= 3;
    const std::size_t samples = source.rowBytes();
    const Veil veil = veilOf(mode);
    Raster sharp;
    {
        const Task::Stage stage(task, 0, 0.4);
        sharp = sharpened(source, shareOf(arguments, 1), unit, task);
    }
    const Task::Stage stage(task, 0.4, 1);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view(), own = sharp.view();
    const View to = result.edit();
    gaussRows(from, sigma, weighted, task, [&](int y, const float* row) {
        std::vector<float> straight(weighted || fades ? samples : 0);
        if (weighted)
            straightRow(row, from.row(y), straight.data(), from.width, channels);
        else if (fades)
            std::copy_n(row, samples, straight.data());
        if (fades) grayOut(straight.data(), from.width, channels);
        veil(own.row(y), straight.empty() ? row : straight.data(), share, to.row(y), samples);
        if (!hasAlpha(from.type)) return;
        for (auto i = static_cast<std::size_t>(channels) - 1; i < samples;
             i += static_cast<std::size_t>(channels))
            to.row(y)[i] = from.row(y)[i];
    });
    return result;
}

} // namespace

const Operation gauzyOperation = {
    .name = "Geometry.Gauzy",
    .undoName = "Gauzy",
    .arguments = gauzyArguments,
    .run = gauzy,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "The picture through a veil of its own light.",
};

} // namespace kvn::imaging
