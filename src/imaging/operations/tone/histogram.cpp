#include "imaging/operations/tone/histogram.h"

#include <algorithm>
#include <memory>
#include <mutex>

#include "imaging/operations/support/color_planes.h"
#include "imaging/operations/support/luma_planes.h"

namespace kvn::imaging {
namespace {

// Several tables in turn: neighbours are alike, and counting the same entry twice in a row waits
// for memory.
using Tallies = std::array<std::array<std::uint32_t, 256>, 4>;

void tally(const std::uint8_t* values, int count, Tallies& tallies) {
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        ++tallies[0][values[i]];
        ++tallies[1][values[i + 1]];
        ++tallies[2][values[i + 2]];
        ++tallies[3][values[i + 3]];
    }
    for (; i < count; ++i)
        ++tallies[0][values[i]];
}

void addTo(Counts& counts, const Tallies& tallies) {
    for (const auto& table : tallies)
        for (std::size_t v = 0; v < counts.size(); ++v)
            counts[v] += table[v];
}

void addTo(Counts& sum, const Counts& counts) {
    for (std::size_t v = 0; v < sum.size(); ++v)
        sum[v] += counts[v];
}

// Leaves out the pixels that are clear; gives the number of the others.
int keepVisible(ColorPlanes& planes, int count) {
    int kept = 0;
    for (int i = 0; i < count; ++i) {
        planes.r[kept] = planes.r[i];
        planes.g[kept] = planes.g[i];
        planes.b[kept] = planes.b[i];
        kept += planes.a[i] != 0;
    }
    return kept;
}

class BandCounter {
  public:
    BandCounter(bool withChannels, bool withLuma)
        : withChannels_(withChannels), withLuma_(withLuma) {}

    void add(ColorPlanes& planes, int count) {
        if (withLuma_) {
            alignas(64) std::uint8_t gray[ColorPlanes::size];
            lumaOf(planes, gray);
            tally(gray, count, luma_);
        }
        if (!withChannels_) return;
        tally(planes.r, count, red_);
        tally(planes.g, count, green_);
        tally(planes.b, count, blue_);
    }

    void addTo(Histogram& histogram) const {
        imaging::addTo(histogram.red, red_);
        imaging::addTo(histogram.green, green_);
        imaging::addTo(histogram.blue, blue_);
        imaging::addTo(histogram.luma, luma_);
    }

  private:
    bool withChannels_, withLuma_;
    Tallies red_{}, green_{}, blue_{}, luma_{};
};

Histogram countPixels(const Raster& source, bool withChannels, bool withLuma, bool all,
                      Task& task) {
    Histogram histogram;
    std::mutex mutex;
    const ConstView in = source.view();
    const bool filters = hasAlpha(in.type) && !all;
    const std::ptrdiff_t step = bytesPerPixel(in.type);
    // Bands of so many rows that 32 bits always hold the counts.
    parallelRows(in.height, task, [&](int y0, int y1) {
        for (int top = y0; top < y1; top += 4096) {
            const auto counter = std::make_unique<BandCounter>(withChannels, withLuma);
            ColorPlanes planes = {};
            for (int y = top; y < std::min(y1, top + 4096); ++y)
                for (int x = 0; x < in.width; x += ColorPlanes::size) {
                    int count = std::min(ColorPlanes::size, in.width - x);
                    splitPlanes(in.type, in.row(y) + x * step, count, planes);
                    if (filters) count = keepVisible(planes, count);
                    counter->add(planes, count);
                }
            const std::lock_guard lock(mutex);
            counter->addTo(histogram);
        }
    });
    return histogram;
}

Counts indexCounts(const Raster& source, Task& task) {
    Counts counts{};
    std::mutex mutex;
    const ConstView in = source.view();
    parallelRows(in.height, task, [&](int y0, int y1) {
        Counts band{};
        for (int y = y0; y < y1; ++y) {
            const std::uint8_t* row = in.row(y);
            for (int x = 0; x < in.width; ++x)
                ++band[in.type == ImageType::Bit1 ? row[x >> 3] >> (7 - (x & 7)) & 1 : row[x]];
        }
        const std::lock_guard lock(mutex);
        addTo(counts, band);
    });
    return counts;
}

Histogram countPalette(const Raster& source, bool all, Task& task) {
    Histogram histogram;
    const Counts counts = indexCounts(source, task);
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const Rgba c = source.palette()[i];
        if (c.a == 0 && !all) continue;
        histogram.red[c.r] += counts[i];
        histogram.green[c.g] += counts[i];
        histogram.blue[c.b] += counts[i];
        histogram.luma[luma(c.r, c.g, c.b)] += counts[i];
    }
    return histogram;
}

Histogram count(const Raster& source, bool withChannels, bool withLuma, bool all, Task& task) {
    return hasPalette(source.type()) ? countPalette(source, all, task)
                                     : countPixels(source, withChannels, withLuma, all, task);
}

bool isEmpty(const Histogram& histogram) {
    const auto none = [](const Counts& counts) {
        return std::ranges::all_of(counts, [](std::int64_t n) { return n == 0; });
    };
    return none(histogram.red) && none(histogram.luma);
}

} // namespace

Histogram histogramOf(const Raster& source, bool withChannels, bool withLuma, Task& task) {
    Histogram histogram = count(source, withChannels, withLuma, false, task);
    if (isEmpty(histogram)) histogram = count(source, withChannels, withLuma, true, task);
    return histogram;
}

std::int64_t sumWithin(const Counts& counts, ValueRange within) {
    std::int64_t sum = 0;
    for (int v = within.low; v <= within.high; ++v)
        sum += counts[static_cast<std::size_t>(v)];
    return sum;
}

ValueRange rangeOf(const Counts& counts, ValueRange within, double share) {
    const auto spare =
        static_cast<std::int64_t>(static_cast<double>(sumWithin(counts, within)) * share);
    const auto count = [&](int v) { return counts[static_cast<std::size_t>(v)]; };
    ValueRange range = within;
    for (std::int64_t left = spare; range.low < within.high; ++range.low)
        if ((left -= count(range.low)) < 0) break;
    for (std::int64_t left = spare; range.high > within.low; --range.high)
        if ((left -= count(range.high)) < 0) break;
    return range;
}

} // namespace kvn::imaging
