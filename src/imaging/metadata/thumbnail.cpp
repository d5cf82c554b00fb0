#include "imaging/metadata/thumbnail.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "basic/error.h"
#include "imaging/codecs/all.h"

namespace kvn::imaging {

namespace {

// A rectangle with fractional sides, in pixels.
struct Area {
    double x = 0, y = 0, width = 0, height = 0;
};

// The mean colour of an area without its alpha, from at most eight by eight points in it.
Rgba meanColor(const Raster& raster, const Area& area) {
    constexpr double mostPoints = 8;
    const int nx = static_cast<int>(std::clamp(std::ceil(area.width), 1.0, mostPoints));
    const int ny = static_cast<int>(std::clamp(std::ceil(area.height), 1.0, mostPoints));
    int r = 0, g = 0, b = 0;
    for (int j = 0; j < ny; ++j)
        for (int i = 0; i < nx; ++i) {
            const int x = static_cast<int>(area.x + area.width * (i + 0.5) / nx);
            const int y = static_cast<int>(area.y + area.height * (j + 0.5) / ny);
            const Rgba color =
                raster.pixel(std::min(x, raster.width() - 1), std::min(y, raster.height() - 1));
            r += color.r;
            g += color.g;
            b += color.b;
        }
    const auto mean = [&](int sum) {
        return static_cast<std::uint8_t>((sum + nx * ny / 2) / (nx * ny));
    };
    return {mean(r), mean(g), mean(b), 255};
}

// Brightness over a coarse grid.
constexpr int columns = 16, rows = 12;
using Grid = std::array<int, columns * rows>;

Grid gridOf(const Raster& raster, const Area& area) {
    Grid grid{};
    const double width = area.width / columns, height = area.height / rows;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            const Rgba mean =
                meanColor(raster, {area.x + column * width, area.y + row * height, width, height});
            grid[static_cast<std::size_t>(row * columns + column)] = luma(mean.r, mean.g, mean.b);
        }
    return grid;
}

// Cameras draw thumbnails before they sharpen and tone the picture, so some difference all over is
// usual; a place that differs much is not.
bool isAlike(const Grid& a, const Grid& b) {
    constexpr int usualMean = 10, largestCell = 60;
    int sum = 0, largest = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const int difference = std::abs(a[i] - b[i]);
        sum += difference;
        largest = std::max(largest, difference);
    }
    return sum <= usualMean * columns * rows && largest <= largestCell;
}

Area wholeOf(const Raster& raster) {
    return {0, 0, static_cast<double>(raster.width()), static_cast<double>(raster.height())};
}

// Where a picture of another shape lies in a thumbnail with bars at its sides.
Area fittedInto(const Raster& thumbnail, const Raster& picture) {
    const double scale = std::min(static_cast<double>(thumbnail.width()) / picture.width(),
                                  static_cast<double>(thumbnail.height()) / picture.height());
    const double width = picture.width() * scale, height = picture.height() * scale;
    return {(thumbnail.width() - width) / 2, (thumbnail.height() - height) / 2, width, height};
}

bool shows(const Raster& thumbnail, const Raster& picture) {
    const Grid wanted = gridOf(picture, wholeOf(picture));
    return isAlike(gridOf(thumbnail, fittedInto(thumbnail, picture)), wanted);
}

// The picture made so small that its longer side has `side` pixels.
Raster reduced(const Raster& picture, int side) {
    const double step =
        std::max(1.0, static_cast<double>(std::max(picture.width(), picture.height())) / side);
    const auto size = [&](int whole) {
        return std::max(1, static_cast<int>(std::lround(whole / step)));
    };
    Raster small(ImageType::Rgb24, size(picture.width()), size(picture.height()));
    const double width = static_cast<double>(picture.width()) / small.width();
    const double height = static_cast<double>(picture.height()) / small.height();
    for (int y = 0; y < small.height(); ++y)
        for (int x = 0; x < small.width(); ++x)
            small.setPixel(x, y, meanColor(picture, {x * width, y * height, width, height}));
    return small;
}

Raster decoded(std::span<const std::uint8_t> jpeg) {
    constexpr std::uint64_t mostBytes = std::uint64_t{16} << 20;
    try {
        Task quiet;
        return jpegCodec().read(jpeg, {.pixelBytes = mostBytes}, quiet).pages.front().raster;
    } catch (const RuntimeError&) {
        return {};
    }
}

bool drawAnew(ExifBlock& exif, const Raster& picture, int side) {
    const Page page{reduced(picture, side), nullptr, {}};
    for (const int quality : {85, 70, 50, 30, 15}) {
        WriteOptions options;
        options.jpegQuality = quality;
        MemorySink sink;
        Task quiet;
        jpegCodec().write({&page, 1}, options, sink, quiet);
        if (!exif.setThumbnail(sink.bytes())) continue;
        using enum ExifBlock::Directory;
        exif.setNumber(Thumbnail, ExifBlock::orientation, 1);
        exif.setNumber(Thumbnail, ExifBlock::imageWidth,
                       static_cast<std::uint32_t>(page.raster.width()));
        exif.setNumber(Thumbnail, ExifBlock::imageLength,
                       static_cast<std::uint32_t>(page.raster.height()));
        return true;
    }
    return false;
}

} // namespace

void refreshThumbnail(ExifBlock& exif, const Raster& picture, bool isTurned) {
    const auto jpeg = exif.thumbnail();
    if (jpeg.empty()) return;
    const Raster old = decoded(jpeg);
    if (!old.isEmpty() && !isTurned && shows(old, picture)) return;
    const int side = std::max(old.width(), old.height());
    if (side == 0 || !drawAnew(exif, picture, side)) exif.removeThumbnail();
}

} // namespace kvn::imaging
