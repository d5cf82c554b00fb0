// Filters the slow and obvious way, in doubles, to compare with.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "imaging/convert.h"
#include "imaging/operation.h"
#include "reference/pictures.h"

namespace reference {

using namespace kvn::imaging;

inline Raster runOne(std::string_view name, const Raster& source, std::vector<Value> values) {
    Task task;
    return runOperation(*findOperation(name), source, std::move(values), task).front();
}

inline Value whole(int value) {
    return std::int64_t{value};
}

// What filters see of a picture: palettes resolved, alpha kept.
inline Raster withoutPalette(const Raster& picture) {
    Task task;
    if (!hasPalette(picture.type())) return picture;
    return convertType(picture, hasAlpha(picture.type()) ? ImageType::Rgba32 : ImageType::Rgb24,
                       task);
}

// The channel c of the pixel at x, y, or of the nearest one of the picture. Alpha is channel 3.
inline int channelAt(const Raster& picture, int x, int y, int c) {
    const Rgba p = picture.pixel(std::clamp(x, 0, picture.width() - 1),
                                 std::clamp(y, 0, picture.height() - 1));
    return c == 0 ? p.r : c == 1 ? p.g : c == 2 ? p.b : p.a;
}

// One value of the window with its weight by place and its alpha.
struct Item {
    double value, weight, alpha;
};
using Window = std::vector<Item>;

// The window of side 2 * radius + 1 around a pixel; `weights` has one entry a column and row, or
// none.
inline Window windowAt(const Raster& picture, int x, int y, int c, int radius,
                       const std::vector<double>& weights = {}) {
    Window window;
    for (int j = -radius; j <= radius; ++j)
        for (int i = -radius; i <= radius; ++i) {
            const double weight = weights.empty()
                                      ? 1
                                      : weights[static_cast<std::size_t>(i + radius)] *
                                            weights[static_cast<std::size_t>(j + radius)];
            window.push_back({static_cast<double>(channelAt(picture, x + i, y + j, c)), weight,
                              channelAt(picture, x + i, y + j, 3) / 255.0});
        }
    return window;
}

// Sum of weight * alpha * value over the sum of weight * alpha; -1 where nothing is visible.
inline double visibleMean(const Window& window, bool byAlpha) {
    double sum = 0, all = 0;
    for (const Item& item : window) {
        const double weight = item.weight * (byAlpha ? item.alpha : 1);
        sum += weight * item.value;
        all += weight;
    }
    return all > 1e-9 ? sum / all : -1;
}

// Every image type in awkward sizes; `seen` is what filters see of it.
inline void
onEveryPicture(const std::function<void(const Raster& picture, const Raster& seen)>& work) {
    constexpr Size sizes[] = {{1, 1}, {1, 9}, {9, 1}, {7, 5}, {47, 23}};
    for (const ImageType type : everyType)
        for (const Size size : sizes) {
            const Raster picture = noise(type, size, 5);
            work(picture, withoutPalette(picture));
        }
}

inline double clamped(double value) {
    return std::clamp(value, 0.0, 255.0);
}

// The largest difference of a result from what `expected` (x, y, channel; below 0: anything) says.
inline double largestDifference(const Raster& result,
                                const std::function<double(int, int, int)>& expected) {
    double worst = 0;
    const int last = hasAlpha(result.type()) ? 4 : 3;
    for (int y = 0; y < result.height(); ++y)
        for (int x = 0; x < result.width(); ++x)
            for (int c = 0; c < last; ++c) {
                const double wanted = expected(x, y, c);
                if (wanted >= 0)
                    worst = std::max(worst, std::abs(channelAt(result, x, y, c) - wanted));
            }
    return worst;
}

} // namespace reference
