#include "imaging/operations/tone/levels.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/tone/histogram.h"

namespace kvn::imaging {
namespace {

struct Limits {
    int low, high;
};

Limits limitsOf(const Arguments& arguments) {
    const int a = std::clamp(arguments.integer(0), 0, 255);
    const int b = std::clamp(arguments.integer(1), 0, 255);
    return {std::min(a, b), std::max(a, b)};
}

std::int64_t sumWithin(const Counts& counts, Limits within) {
    std::int64_t sum = 0;
    for (int v = within.low; v <= within.high; ++v)
        sum += counts[static_cast<std::size_t>(v)];
    return sum;
}

// The range of the values within the limits, less a share of the pixels at each end. The low end
// is above the high one if there are none.
Limits rangeOf(const Counts& counts, Limits within, double share) {
    const auto spare =
        static_cast<std::int64_t>(static_cast<double>(sumWithin(counts, within)) * share);
    const auto count = [&](int v) { return counts[static_cast<std::size_t>(v)]; };
    Limits range = within;
    for (std::int64_t left = spare; range.low < within.high; ++range.low)
        if ((left -= count(range.low)) < 0) break;
    for (std::int64_t left = spare; range.high > within.low; --range.high)
        if ((left -= count(range.high)) < 0) break;
    return range;
}

double lineThrough(Limits from, Limits to, int v) {
    const double part = static_cast<double>(v - from.low) / (from.high - from.low);
    return to.low + part * (to.high - to.low);
}

std::uint8_t toByte(double value) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

ByteTable stretchTable(const Counts& counts, Limits to) {
    const Limits from = rangeOf(counts, {0, 255}, 0.001);
    ByteTable table = identityTable();
    if (from.low >= from.high) return table;
    for (int v = 0; v < 256; ++v)
        table[static_cast<std::size_t>(v)] =
            toByte(lineThrough(from, to, std::clamp(v, from.low, from.high)));
    return table;
}

// The first value goes to the low limit, the last to the high one.
ByteTable equalTable(const Counts& counts, Limits within) {
    ByteTable table = identityTable();
    const Limits used = rangeOf(counts, within, 0);
    if (used.low >= used.high) return table;
    const std::int64_t first = counts[static_cast<std::size_t>(used.low)];
    const auto others = static_cast<double>(sumWithin(counts, within) - first);
    std::int64_t sum = -first;
    for (int v = within.low; v <= within.high; ++v) {
        sum += counts[static_cast<std::size_t>(v)];
        const double part = static_cast<double>(std::max<std::int64_t>(sum, 0)) / others;
        table[static_cast<std::size_t>(v)] = toByte(within.low + part * (within.high - within.low));
    }
    return table;
}

constexpr Argument autoArguments[] = {
    {"low", ArgumentKind::Integer, 0, 255, "", "darker lumas don't count"},
    {"high", ArgumentKind::Integer, 0, 255, "", "brighter lumas don't count"},
    {"evenDistribution", ArgumentKind::Boolean, 0, 0, "", "evens the tones out"},
};

ByteTable brightnessTable(const Counts& counts, Limits within, bool even) {
    ByteTable table = identityTable();
    const Limits from = rangeOf(counts, within, 0.005);
    if (from.low >= from.high) return table;
    const auto all = static_cast<double>(sumWithin(counts, within));
    double below = 0;
    for (int v = 0; v < 256; ++v) {
        const double line = std::clamp(lineThrough(from, {0, 255}, v), 0.0, 255.0);
        const double here = v >= within.low && v <= within.high
                                ? static_cast<double>(counts[static_cast<std::size_t>(v)])
                                : 0;
        const double share = 255 * (below + here / 2) / all;
        below += here;
        table[static_cast<std::size_t>(v)] = toByte(even ? line / 4 + share * 3 / 4 : line);
    }
    return table;
}

Raster autoBrightness(const Raster& source, const Arguments& arguments, Task& task) {
    Histogram histogram;
    {
        const Task::Stage counting(task, 0, 0.6);
        histogram = histogramOf(source, false, true, task);
    }
    const ByteTable table =
        brightnessTable(histogram.luma, limitsOf(arguments), arguments.boolean(2));
    if (table == identityTable()) return source;
    const Task::Stage mapping(task, 0.6, 1);
    return mapChannels(source, ColorTables::same(table), task);
}

constexpr Argument stretchArguments[] = {
    {"low", ArgumentKind::Integer, 0, 255, "", "where the darkest value goes"},
    {"high", ArgumentKind::Integer, 0, 255, "", "where the brightest value goes"},
    {"channels", ArgumentKind::Integer, 0, 7, "", "sum of 1 red, 2 green, 4 blue"},
};
constexpr Argument equalizeArguments[] = {
    {"low", ArgumentKind::Integer, 0, 255, "", "darker values stay"},
    {"high", ArgumentKind::Integer, 0, 255, "", "brighter values stay"},
    {"channels", ArgumentKind::Integer, 0, 7, "", "sum of 1 red, 2 green, 4 blue"},
};

using TableMaker = ByteTable (*)(const Counts& counts, Limits limits);

// Each channel of the mask through a table of its own.
Raster byChannels(const Raster& source, const Arguments& arguments, TableMaker make, Task& task) {
    const int mask = arguments.integer(2) & 7;
    if (mask == 0) return source;
    Histogram histogram;
    {
        const Task::Stage counting(task, 0, 0.6);
        histogram = histogramOf(source, true, false, task);
    }
    const Limits limits = limitsOf(arguments);
    const ByteTable same = identityTable();
    const ColorTables tables{mask & 1 ? make(histogram.red, limits) : same,
                             mask & 2 ? make(histogram.green, limits) : same,
                             mask & 4 ? make(histogram.blue, limits) : same};
    if (tables.red == same && tables.green == same && tables.blue == same) return source;
    const Task::Stage mapping(task, 0.6, 1);
    return mapChannels(source, tables, task);
}

Raster histogramStretch(const Raster& source, const Arguments& arguments, Task& task) {
    return byChannels(source, arguments, stretchTable, task);
}

Raster histogramEqualize(const Raster& source, const Arguments& arguments, Task& task) {
    return byChannels(source, arguments, equalTable, task);
}

} // namespace

const Operation autoBrightnessOperation = {
    .name = "Effects.AutoBrightness",
    .undoName = "AutoBrightness",
    .arguments = autoArguments,
    .run = autoBrightness,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Spreads the picture's own range of brightness over the whole scale.",
};

const Operation histogramStretchOperation = {
    .name = "Geometry.HistogramStretch",
    .undoName = "Histogram Stretch",
    .arguments = stretchArguments,
    .run = histogramStretch,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Spreads the range of each channel over the limits.",
};

const Operation histogramEqualizeOperation = {
    .name = "Geometry.HistogramEqualize",
    .undoName = "Histogram Equalize",
    .arguments = equalizeArguments,
    .run = histogramEqualize,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Distributes the values of each channel evenly.",
};

} // namespace kvn::imaging
