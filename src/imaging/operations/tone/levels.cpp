#include "imaging/operations/tone/levels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/tone/histogram.h"
#include "imaging/operations/tone/value_ranges.h"

namespace kvn::imaging {
namespace {

ValueRange limitsOf(const Arguments& arguments) {
    const int a = std::clamp(arguments.integer(0), 0, 255);
    const int b = std::clamp(arguments.integer(1), 0, 255);
    return {std::min(a, b), std::max(a, b)};
}

double lineThrough(ValueRange from, ValueRange to, int v) {
    const double part = static_cast<double>(v - from.low) / (from.high - from.low);
    return to.low + part * (to.high - to.low);
}

std::uint8_t toByte(double value) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

ByteTable stretchTable(ValueRange from, ValueRange to) {
    ByteTable table = identityTable();
    if (from.low >= from.high) return table;
    for (int v = 0; v < 256; ++v)
        table[static_cast<std::size_t>(v)] =
            toByte(lineThrough(from, to, std::clamp(v, from.low, from.high)));
    return table;
}

// The first value goes to the low limit, the last to the high one.
ByteTable equalTable(const Counts& counts, ValueRange within) {
    ByteTable table = identityTable();
    const ValueRange used = rangeOf(counts, within, 0);
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

ByteTable brightnessTable(const Counts& counts, ValueRange within, bool even) {
    ByteTable table = identityTable();
    const ValueRange from = rangeOf(counts, within, 0.005);
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

// The channels of the mask through tables of their own.
Raster throughTables(const Raster& source, int mask, const std::array<ByteTable, 3>& tables,
                     Task& task) {
    ColorTables all = ColorTables::same(identityTable());
    if (mask & 1) all.red = tables[0];
    if (mask & 2) all.green = tables[1];
    if (mask & 4) all.blue = tables[2];
    const ByteTable same = identityTable();
    if (all.red == same && all.green == same && all.blue == same) return source;
    const Task::Stage mapping(task, 0.6, 1);
    return mapChannels(source, all, task);
}

std::array<ValueRange, 3> channelRanges(const Raster& source, double share, Task& task) {
    const Task::Stage counting(task, 0, 0.6);
    if (const auto ranges = findRanges(source, share, task)) return *ranges;
    const Histogram histogram = histogramOf(source, true, false, task);
    return {rangeOf(histogram.red, {0, 255}, share), rangeOf(histogram.green, {0, 255}, share),
            rangeOf(histogram.blue, {0, 255}, share)};
}

Raster histogramStretch(const Raster& source, const Arguments& arguments, Task& task) {
    const int mask = arguments.integer(2) & 7;
    if (mask == 0) return source;
    const auto from = channelRanges(source, 0.001, task);
    const ValueRange to = limitsOf(arguments);
    return throughTables(
        source, mask,
        {stretchTable(from[0], to), stretchTable(from[1], to), stretchTable(from[2], to)}, task);
}

Raster histogramEqualize(const Raster& source, const Arguments& arguments, Task& task) {
    const int mask = arguments.integer(2) & 7;
    if (mask == 0) return source;
    Histogram histogram;
    {
        const Task::Stage counting(task, 0, 0.6);
        histogram = histogramOf(source, true, false, task);
    }
    const ValueRange limits = limitsOf(arguments);
    return throughTables(source, mask,
                         {equalTable(histogram.red, limits), equalTable(histogram.green, limits),
                          equalTable(histogram.blue, limits)},
                         task);
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
