#include "imaging/operations/resample/deskew.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "imaging/convert.h"
#include "imaging/operations/resample/skew_angle.h"
#include "imaging/operations/resample/turned_bits.h"
#include "imaging/operations/support/warp.h"

namespace kvn::imaging {
namespace {

constexpr double leastSkew = 0.025; // degrees

constexpr Argument deskewArguments[] = {
    {"fine", ArgumentKind::Integer, 1, 8, "", "rows in one in the last search; clamped"},
    {"coarse", ArgumentKind::Integer, 1, 8, "", "rows in one in the first search; clamped"},
    {"step", ArgumentKind::Integer, 1, 10, "", "of the first search, tenths of a degree; clamped"},
    {"left", ArgumentKind::Integer, 0, 65535, "px", "of the part that is looked at"},
    {"top", ArgumentKind::Integer, 0, 65535, "px", "of the part that is looked at"},
    {"width", ArgumentKind::Integer, 0, 65535, "px", "of the part; 0: the whole picture"},
    {"height", ArgumentKind::Integer, 0, 65535, "px", "of the part; 0: the whole picture"},
};

// The grey that parts dark and light pixels best (N. Otsu, A threshold selection method from
// gray-level histograms, 1979).
int bestThreshold(const std::array<std::int64_t, 256>& histogram) {
    double total = 0, sum = 0;
    for (std::size_t v = 0; v < 256; ++v) {
        total += static_cast<double>(histogram[v]);
        sum += static_cast<double>(histogram[v]) * static_cast<double>(v);
    }
    double count = 0, darkSum = 0, best = -1;
    int threshold = 128;
    for (std::size_t v = 0; v < 255; ++v) {
        count += static_cast<double>(histogram[v]);
        darkSum += static_cast<double>(histogram[v]) * static_cast<double>(v);
        if (count == 0 || count == total) continue;
        const double distance = darkSum / count - (sum - darkSum) / (total - count);
        const double spread = count * (total - count) * distance * distance;
        if (spread <= best) continue;
        best = spread;
        threshold = static_cast<int>(v) + 1;
    }
    return threshold;
}

// 1 where the picture is light.
Raster blackAndWhite(const Raster& source, Task& task) {
    const Raster gray = convertType(source, ImageType::Gray8, task);
    const ConstView from = gray.view();
    std::array<std::int64_t, 256> histogram{};
    for (int y = 0; y < from.height; ++y)
        for (int x = 0; x < from.width; ++x)
            ++histogram[from.row(y)[x]];
    const int threshold = bestThreshold(histogram);
    Raster result(ImageType::Bit1, from.width, from.height);
    const View to = result.edit();
    for (int y = 0; y < from.height; ++y)
        for (int x = 0; x < from.width; ++x)
            if (from.row(y)[x] >= threshold)
                to.row(y)[x / 8] |= static_cast<std::uint8_t>(0x80 >> x % 8);
    return result;
}

// The mean of the pixels that are paper, by some of them.
Rgba paperColor(const Raster& source, const Raster& page, int paper) {
    const int step = 1 + std::min(source.width(), source.height()) / 256;
    std::array<std::int64_t, 5> sums{};
    for (int y = 0; y < source.height(); y += step)
        for (int x = 0; x < source.width(); x += step) {
            if (page.index(x, y) != paper) continue;
            const Rgba c = source.pixel(x, y);
            const std::array<int, 5> terms{c.r, c.g, c.b, c.a, 1};
            for (std::size_t i = 0; i < 5; ++i)
                sums[i] += terms[i];
        }
    if (sums[4] == 0) return source.pixel(0, 0);
    const auto mean = [&](std::size_t i) {
        return static_cast<std::uint8_t>((2 * sums[i] + sums[4]) / (2 * sums[4]));
    };
    return {mean(0), mean(1), mean(2), mean(3)};
}

Raster turnedPicture(const Raster& source, double degrees, Rgba paper, Task& task) {
    WarpSettings settings;
    settings.size = source.size();
    settings.bordered = true;
    settings.background = paper;
    const double angle = degrees * std::numbers::pi / 180;
    const double cosine = std::cos(angle), sine = std::sin(angle);
    const double middleX = (source.width() - 1) / 2.0, middleY = (source.height() - 1) / 2.0;
    return warped(source, settings, task, [=](int y, int x0, int count, float* toX, float* toY) {
        const double down = y - middleY;
        for (int i = 0; i < count; ++i) {
            const double right = x0 + i - middleX;
            toX[i] = static_cast<float>(middleX + right * cosine - down * sine);
            toY[i] = static_cast<float>(middleY + right * sine + down * cosine);
        }
    });
}

Raster autoDeskew(const Raster& source, const Arguments& arguments, Task& task) {
    const SkewSearch search{std::clamp(arguments.integer(0), 1, 8),
                            std::clamp(arguments.integer(1), 1, 8),
                            std::clamp(arguments.integer(2), 1, 10) / 10.0};
    Rect area =
        Rect{arguments.integer(3), arguments.integer(4), arguments.integer(5), arguments.integer(6)}
            .intersected(source.rect());
    if (area.isEmpty()) area = source.rect();
    const bool bits = source.type() == ImageType::Bit1;
    Raster page;
    double degrees;
    {
        const Task::Stage looking(task, 0, 0.5);
        page = bits ? source : blackAndWhite(source, task);
        degrees = skewAngle(page.view(), area, search, task);
    }
    if (std::abs(degrees) < leastSkew) return source;
    const Task::Stage turning(task, 0.5, 1);
    const int paper = paperBit(page.view(), page.rect());
    if (bits) return turnedBits(source, degrees, paper, task);
    return turnedPicture(source, degrees, paperColor(source, page, paper), task);
}

} // namespace

const Operation autoDeskewOperation = {
    .name = "Geometry.AutoDeskew",
    .undoName = "Auto Deskew",
    .arguments = deskewArguments,
    .run = autoDeskew,
    .border = -1,
    .alpha = AlphaRule::Weighted,
    .types = TypeRule::Fixed,
    .note = "Straightens a scanned page; 1-bit pictures stay 1-bit.",
};

} // namespace kvn::imaging
