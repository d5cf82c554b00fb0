// Choosing the palette.

#include <algorithm>
#include <atomic>
#include <cmath>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

#include "basic/error.h"
#include "imaging/convert_rows.h"
#include "imaging/quantize.h"
#include "imaging/quantize_cluster.h"
#include "imaging/quantize_colors.h"
#include "imaging/quantize_metric.h"
#include "imaging/quantize_spread.h"
#include "imaging/quantize_store.h"

namespace kvn::imaging {

namespace {

// How the bits of a bin number are shared out: fine cells for opaque pictures, coarser ones where
// alpha needs its share.
struct Bins {
    std::array<int, 4> bits;
    int total() const { return bits[0] + bits[1] + bits[2] + bits[3]; }
};
constexpr Bins opaqueBins{{6, 6, 6, 0}};
constexpr Bins alphaBins{{5, 5, 5, 4}};

// Pixels that fall into one cell: how many, and the sum of each channel.
struct Bin {
    std::uint32_t count = 0;
    std::array<std::uint32_t, 4> sum{};
};
using Histogram = std::vector<Bin>;

// Sums of more pixels would not fit into a bin. Few colours are told by fewer pixels.
constexpr std::int64_t samplesFor(int colors) {
    return std::int64_t{1} << (colors <= 32 ? 21 : 24);
}

template <bool withAlpha>
void countRow(const std::uint8_t* row, int start, int step, int width, Histogram& histogram) {
    constexpr std::array<int, 4> bits = withAlpha ? alphaBins.bits : opaqueBins.bits;
    for (int x = start; x < width; x += step) {
        const std::uint8_t* p = row + std::ptrdiff_t{x} * 4;
        Spot spot{p[0], p[1], p[2], 0};
        if constexpr (withAlpha) spot = spotOf({p[0], p[1], p[2], p[3]});
        std::size_t cell = 0;
        for (std::size_t k = 0; k < 4; ++k)
            cell = cell << bits[k] | static_cast<std::size_t>(spot[k] >> (8 - bits[k]));
        Bin& bin = histogram[cell];
        ++bin.count;
        for (std::size_t k = 0; k < 4; ++k)
            bin.sum[k] += static_cast<std::uint32_t>(spot[k]);
    }
}

Histogram sumOf(Store<Histogram>& parts) {
    Histogram total = std::move(*parts.objects().front());
    for (const auto& part : std::span(parts.objects()).subspan(1))
        for (std::size_t i = 0; i < total.size(); ++i) {
            total[i].count += (*part)[i].count;
            for (std::size_t k = 0; k < 4; ++k)
                total[i].sum[k] += (*part)[i].sum[k];
        }
    return total;
}

// Looks at no more pixels than about `most`.
Histogram histogramOf(const Raster& source, bool withAlpha, std::int64_t most, Task& task) {
    const std::int64_t pixels = std::int64_t{source.width()} * source.height();
    const int every = static_cast<int>((pixels + most - 1) / most);
    const int rowStep = std::max(1, static_cast<int>(std::sqrt(every)));
    const int step = (every + rowStep - 1) / rowStep;
    const RowReader reader(source, ImageType::Rgba32);
    const std::size_t bins = std::size_t{1} << (withAlpha ? alphaBins : opaqueBins).total();
    Store<Histogram> parts;
    parallelRows(source.height(), task, [&](int y0, int y1) {
        const auto histogram = parts.borrow([&] { return Histogram(bins); });
        std::vector<std::uint8_t> row(static_cast<std::size_t>(source.width()) * 4);
        for (int y = (y0 + rowStep - 1) / rowStep * rowStep; y < y1; y += rowStep) {
            reader.read(y, row.data());
            // Where not every pixel is looked at, those of one row lie between those of the last.
            const int start = y / rowStep % step;
            if (withAlpha)
                countRow<true>(row.data(), start, step, source.width(), *histogram);
            else
                countRow<false>(row.data(), start, step, source.width(), *histogram);
        }
    });
    return sumOf(parts);
}

Cloud cloudOf(const Histogram& histogram) {
    Cloud cloud;
    for (const Bin& bin : histogram) {
        if (bin.count == 0) continue;
        std::array<float, Cloud::axes> place;
        for (std::size_t k = 0; k < place.size(); ++k) {
            const double mean = static_cast<double>(bin.sum[k]) / bin.count;
            place[k] = static_cast<float>(std::nearbyint(mean * Cloud::stepsPerLevel));
        }
        cloud.add(place, bin.count);
    }
    return cloud;
}

// Pixels spread evenly over the picture, each a point of its own.
Cloud sampleOf(const Raster& source, bool withAlpha) {
    constexpr std::int64_t wanted = 1 << 18;
    const std::int64_t pixels = std::int64_t{source.width()} * source.height();
    const auto step = std::max(std::int64_t{1}, pixels / wanted);
    const RowReader reader(source, ImageType::Rgba32);
    std::vector<std::uint8_t> row(static_cast<std::size_t>(source.width()) * 4);
    Cloud cloud;
    int loaded = -1;
    for (std::int64_t i = 0; i < pixels; i += step) {
        const int y = static_cast<int>(i / source.width());
        if (y != loaded) {
            reader.read(y, row.data());
            loaded = y;
        }
        const std::uint8_t* p = row.data() + i % source.width() * 4;
        const Spot spot = spotOf({p[0], p[1], p[2], withAlpha ? p[3] : std::uint8_t{255}});
        std::array<float, Cloud::axes> place;
        for (std::size_t k = 0; k < place.size(); ++k)
            place[k] = static_cast<float>(spot[k] * Cloud::stepsPerLevel);
        if (!withAlpha) place[3] = 0;
        cloud.add(place, 1);
    }
    return cloud;
}

bool isOpaque(const Raster& source, Task& task) {
    if (!hasAlpha(source.type())) return true;
    const RowReader reader(source, ImageType::Rgba32);
    std::atomic<bool> opaque{true};
    parallelRows(source.height(), task, [&](int y0, int y1) {
        std::vector<std::uint8_t> row(static_cast<std::size_t>(source.width()) * 4);
        for (int y = y0; y < y1 && opaque.load(std::memory_order_relaxed); ++y) {
            reader.read(y, row.data());
            std::uint8_t all = 255;
            for (std::size_t i = 3; i < row.size(); i += 4)
                all &= row[i];
            if (all != 255) opaque.store(false, std::memory_order_relaxed);
        }
    });
    return opaque;
}

// Dark to light, as seen over black; equal colours once.
Palette sorted(std::vector<Rgba> colors) {
    const auto order = [](Rgba c) {
        const int light = luma(mul255(c.r, c.a), mul255(c.g, c.a), mul255(c.b, c.a));
        return std::tuple(light, c.r, c.g, c.b, c.a);
    };
    std::ranges::sort(colors, {}, order);
    colors.erase(std::unique(colors.begin(), colors.end()), colors.end());
    return Palette(std::move(colors));
}

} // namespace

Rgba colorOf(const std::array<double, 4>& place, double scale, bool withAlpha) {
    const auto byte = [](double value) {
        return static_cast<std::uint8_t>(std::clamp(std::nearbyint(value), 0.0, 255.0));
    };
    if (!withAlpha)
        return {byte(place[0] / scale), byte(place[1] / scale), byte(place[2] / scale), 255};
    const std::uint8_t alpha = byte(place[3] / scale / alphaAxis);
    if (alpha == 0) return {0, 0, 0, 0};
    const auto channel = [&](double mixed) {
        return byte((mixed / scale - (255 - alpha) / 2.0) * 255 / alpha);
    };
    return {channel(place[0]), channel(place[1]), channel(place[2]), alpha};
}

Palette choosePalette(const Raster& source, int colors, bool withAlpha, Task& task,
                      PaletteUse use) {
    if (source.isEmpty()) throw RuntimeError(errors::invalidCall, "There is no picture", "Imaging");
    if (colors < 2 || colors > static_cast<int>(Palette::maxSize))
        throw RuntimeError(errors::invalidCall, "A palette has 2 to 256 colors", "Imaging");
    {
        const Task::Stage stage(task, 0, 0.1);
        const auto few = collectColors(source, withAlpha, static_cast<std::size_t>(colors), task);
        if (few) {
            std::vector<Rgba> entries;
            for (const std::uint32_t color : few->colors())
                entries.push_back(unpacked(color));
            return sorted(std::move(entries));
        }
    }
    const Cloud cloud = [&] {
        const Task::Stage stage(task, 0.1, 0.6);
        withAlpha = withAlpha && !isOpaque(source, task);
        return cloudOf(histogramOf(source, withAlpha, samplesFor(colors), task));
    }();
    std::vector<Center> centers = cutCloud(cloud, static_cast<std::size_t>(colors));
    {
        const Task::Stage stage(task, 0.6, 0.8);
        refineCenters(cloud, centers, 10, task);
    }
    // The histogram's cells are as large as the gaps of a fine palette: whole pixels decide the
    // last levels.
    const Task::Stage stage(task, 0.8, 1);
    refineCenters(sampleOf(source, withAlpha), centers, 3, task);
    std::vector<Rgba> entries;
    for (const Center& center : centers)
        entries.push_back(colorOf(center, Cloud::stepsPerLevel, withAlpha));
    if (use == PaletteUse::Dithered && entries.size() <= mostSpreadEntries)
        entries = spreadForDithering(source, std::move(entries), withAlpha, task);
    return sorted(std::move(entries));
}

} // namespace kvn::imaging
