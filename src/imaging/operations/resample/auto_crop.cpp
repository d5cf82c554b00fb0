// Geometry.AutoCrop.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <mutex>
#include <vector>

#include "imaging/convert_rows.h"
#include "imaging/operations/resample/resample.h"

namespace kvn::imaging {
namespace {

constexpr Argument autoCropArguments[] = {
    {"tolerance", ArgumentKind::Number, 0, 100, "%",
     "how far a channel may differ, of its range; clamped"},
    {"color", ArgumentKind::Color, 0, 255, "", "the border's; nothing is what the corners have",
     true},
};

// Whether pixels have the border's colour.
struct Border {
    Rgba color;
    int tolerance; // 0..255

    bool covers(const std::uint8_t* p) const {
        if (color.a == 0 && p[3] == 0) return true;
        return std::abs(p[0] - color.r) <= tolerance && std::abs(p[1] - color.g) <= tolerance &&
               std::abs(p[2] - color.b) <= tolerance && std::abs(p[3] - color.a) <= tolerance;
    }
    bool covers(const Rgba& c) const {
        const std::uint8_t pixel[4] = {c.r, c.g, c.b, c.a};
        return covers(pixel);
    }
};

Rgba cornerColor(const Raster& source, int tolerance) {
    const int right = source.width() - 1, bottom = source.height() - 1;
    const Rgba corners[] = {source.pixel(0, 0), source.pixel(right, 0), source.pixel(0, bottom),
                            source.pixel(right, bottom)};
    const auto likes = [&](const Rgba& color) {
        const Border border{color, tolerance};
        return std::ranges::count_if(corners, [&](const Rgba& c) { return border.covers(c); });
    };
    return *std::ranges::max_element(corners, {}, likes);
}

// The smallest rectangle around all pixels that the border does not cover.
Rect contentOf(const Raster& source, const Border& border, Task& task) {
    const RowReader reader(source, ImageType::Rgba32);
    const int width = source.width();
    std::mutex mutex;
    Rect content;
    parallelRows(source.height(), task, [&](int y0, int y1) {
        std::vector<std::uint8_t> row(static_cast<std::size_t>(width) * 4);
        Rect found;
        for (int y = y0; y < y1; ++y) {
            reader.read(y, row.data());
            const auto covered = [&](int x) { return border.covers(&row[std::size_t(x) * 4]); };
            int left = 0, right = width - 1;
            while (left < width && covered(left))
                ++left;
            if (left == width) continue;
            while (covered(right))
                --right;
            found = found.united({left, y, right - left + 1, 1});
        }
        const std::lock_guard lock(mutex);
        content = content.united(found);
    });
    return content;
}

Raster autoCrop(const Raster& source, const Arguments& arguments, Task& task) {
    const int tolerance = static_cast<int>(std::clamp(arguments.number(0), 0.0, 100.0) * 2.55);
    Border border{{}, tolerance};
    border.color = arguments.isNothing(1) ? cornerColor(source, tolerance) : arguments.color(1);
    if (!hasAlpha(source.type())) border.color.a = 255;
    const Rect content = contentOf(source, border, task);
    if (content.isEmpty() || content == source.rect()) return source;
    return source.cropped(content);
}

} // namespace

const Operation autoCropOperation = {
    .name = "Geometry.AutoCrop",
    .undoName = "Auto Crop",
    .arguments = autoCropArguments,
    .run = autoCrop,
    .border = -1,
    .alpha = AlphaRule::None,
    .types = TypeRule::Keeps,
    .note = "Cuts off the border of one colour.",
};

} // namespace kvn::imaging
