// Some of the pixels give a guess of where the ends are. Then all pixels are held against the few
// values around, which proves the guess or corrects it: comparing is what vectors do well, counting
// values is not.
#include "imaging/operations/tone/value_ranges.h"

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/tone/value_ranges.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

#ifndef KVN_VALUE_RANGES_ONCE
#define KVN_VALUE_RANGES_ONCE
namespace kvn::imaging {

// The neighbouring values at either end of a channel that all pixels are held against.
constexpr int limitCount = 4;
struct ChannelLimits {
    std::uint8_t low[limitCount], high[limitCount];
};
// How many are less than each low limit and greater than each high one.
struct Beyond {
    std::array<std::int64_t, limitCount> low{}, high{};
};
// One for each of `channels`, 1 or 3.
using LimitsOfAll = std::array<ChannelLimits, 3>;
using BeyondOfAll = std::array<Beyond, 3>;

} // namespace kvn::imaging
#endif

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Bytes = hn::ScalableTag<std::uint8_t>;
constexpr std::size_t mostLanes = hn::MaxLanes(Bytes());

// Three vectors hold whole pixels of three bytes, and so each lane always sees one channel.
struct Lanes {
    alignas(64) std::uint8_t low[3 * mostLanes], high[3 * mostLanes];
    alignas(64) std::uint8_t below[3 * mostLanes] = {}, above[3 * mostLanes] = {};
};

class Tally {
  public:
    Tally(const LimitsOfAll& limits, std::size_t channels) : channels_(channels) {
        for (std::size_t k = 0; k < limitCount; ++k)
            for (std::size_t i = 0; i < block(); ++i) {
                lanes_[k].low[i] = limits[i % channels].low[k];
                lanes_[k].high[i] = limits[i % channels].high[k];
            }
    }

    static std::size_t block() { return 3 * hn::Lanes(Bytes()); }

    // Three vectors. Most hold nothing that lies beyond even the innermost limits.
    HWY_INLINE void add(const std::uint8_t* values) {
        const Bytes d;
        const std::size_t n = hn::Lanes(d);
        const Lanes& inner = lanes_[limitCount - 1];
        auto beyond = hn::Zero(d);
        for (std::size_t i = 0; i < block(); i += n) {
            const auto v = hn::LoadU(d, values + i);
            beyond = hn::Or(beyond, hn::SaturatedSub(hn::Load(d, inner.low + i), v));
            beyond = hn::Or(beyond, hn::SaturatedSub(v, hn::Load(d, inner.high + i)));
        }
        if (hn::AllTrue(d, hn::Eq(beyond, hn::Zero(d)))) return;
        const auto one = hn::Set(d, 1);
        for (Lanes& lanes : lanes_)
            for (std::size_t i = 0; i < block(); i += n) {
                const auto v = hn::LoadU(d, values + i);
                const auto below = hn::SaturatedSub(hn::Load(d, lanes.low + i), v);
                const auto above = hn::SaturatedSub(v, hn::Load(d, lanes.high + i));
                hn::Store(hn::Add(hn::Load(d, lanes.below + i), hn::Min(below, one)), d,
                          lanes.below + i);
                hn::Store(hn::Add(hn::Load(d, lanes.above + i), hn::Min(above, one)), d,
                          lanes.above + i);
            }
        if (++pending_ == 255) flush();
    }

    // One value of channel c.
    void addOne(std::uint8_t value, std::size_t c) {
        for (std::size_t k = 0; k < limitCount; ++k) {
            beyond_[c].low[k] += value < lanes_[k].low[c];
            beyond_[c].high[k] += value > lanes_[k].high[c];
        }
    }

    // The counts of the lanes are bytes.
    HWY_NOINLINE void flush() {
        for (std::size_t k = 0; k < limitCount; ++k)
            for (std::size_t i = 0; i < block(); ++i) {
                beyond_[i % channels_].low[k] += std::exchange(lanes_[k].below[i], 0);
                beyond_[i % channels_].high[k] += std::exchange(lanes_[k].above[i], 0);
            }
        pending_ = 0;
    }

    const BeyondOfAll& beyond() const { return beyond_; }

  private:
    std::size_t channels_;
    Lanes lanes_[limitCount];
    int pending_ = 0;
    BeyondOfAll beyond_;
};

void countBeyond(const ConstView& in, int y0, int y1, const LimitsOfAll& limits,
                 BeyondOfAll& beyond) {
    const auto channels = static_cast<std::size_t>(bytesPerPixel(in.type));
    const std::size_t bytes = static_cast<std::size_t>(in.width) * channels;
    const std::size_t block = Tally::block();
    Tally tally(limits, channels);
    for (int y = y0; y < y1; ++y) {
        const std::uint8_t* row = in.row(y);
        std::size_t i = 0;
        for (; i + block <= bytes; i += block)
            tally.add(row + i);
        for (; i < bytes; ++i)
            tally.addOne(row[i], i % channels);
    }
    tally.flush();
    beyond = tally.beyond();
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(countBeyond);

namespace {

// Runs of 64 pixels, every few of them, elsewhere in each row: enough that a thousandth is still
// many.
std::array<Counts, 3> countSome(const ConstView& in, Task& task) {
    constexpr int run = 64;
    const std::int64_t pixels = std::int64_t{in.width} * in.height;
    const int every = static_cast<int>(std::min<std::int64_t>(pixels >> 17, 32));
    const auto channels = static_cast<std::size_t>(bytesPerPixel(in.type));
    std::array<Counts, 3> counts{};
    std::mutex mutex;
    parallelRows(in.height, task, [&](int y0, int y1) {
        std::array<std::array<std::uint32_t, 256>, 3> band{};
        for (int y = y0; y < y1; ++y)
            for (int x = y * 5 % every * run; x < in.width; x += run * every) {
                const std::uint8_t* p = in.row(y) + static_cast<std::size_t>(x) * channels;
                const int end = std::min(run, in.width - x);
                for (int i = 0; i < end; ++i, p += channels)
                    for (std::size_t c = 0; c < channels; ++c)
                        ++band[c][p[c]];
            }
        const std::lock_guard lock(mutex);
        for (std::size_t c = 0; c < channels; ++c)
            for (std::size_t v = 0; v < 256; ++v)
                counts[c][v] += band[c][v];
    });
    return counts;
}

// The least of neighbouring limits, around the guess.
int firstLimit(int guess) {
    return std::clamp(guess - 1, 1, 256 - limitCount);
}

// The least value that more than `spare` are at or below; -1 if the limits don't tell. `below` are
// the numbers of those less than `first` and the values after it.
int endOf(const std::array<std::int64_t, limitCount>& below, int first, std::int64_t spare) {
    for (int k = 0; k < limitCount; ++k)
        if (below[static_cast<std::size_t>(k)] > spare)
            return k > 0 || first == 1 ? first + k - 1 : -1;
    return first + limitCount == 256 ? 255 : -1;
}

using Ranges = std::array<ValueRange, 3>;

// The least limits of each channel, the high ones counted down from 255.
Ranges limitsAround(const std::array<Counts, 3>& some, double share) {
    Ranges first;
    for (std::size_t c = 0; c < 3; ++c) {
        const ValueRange guess = rangeOf(some[c], {0, 255}, share);
        first[c] = {firstLimit(guess.low), firstLimit(255 - guess.high)};
    }
    return first;
}

BeyondOfAll countAll(const ConstView& in, const Ranges& first, Task& task) {
    LimitsOfAll limits;
    for (std::size_t c = 0; c < 3; ++c)
        for (int k = 0; k < limitCount; ++k) {
            limits[c].low[k] = static_cast<std::uint8_t>(first[c].low + k);
            limits[c].high[k] = static_cast<std::uint8_t>(255 - first[c].high - k);
        }
    BeyondOfAll beyond;
    std::mutex mutex;
    parallelRows(in.height, task, [&](int y0, int y1) {
        BeyondOfAll band;
        HWY_DYNAMIC_DISPATCH(countBeyond)(in, y0, y1, limits, band);
        const std::lock_guard lock(mutex);
        for (std::size_t c = 0; c < 3; ++c)
            for (std::size_t k = 0; k < limitCount; ++k) {
                beyond[c].low[k] += band[c].low[k];
                beyond[c].high[k] += band[c].high[k];
            }
    });
    return beyond;
}

} // namespace

std::optional<std::array<ValueRange, 3>> findRanges(const Raster& source, double share,
                                                    Task& task) {
    const bool gray = source.type() == ImageType::Gray8;
    const std::int64_t pixels = std::int64_t{source.width()} * source.height();
    constexpr std::int64_t worthIt = 1 << 18;
    if ((!gray && source.type() != ImageType::Rgb24) || pixels < worthIt) return {};
    std::array<Counts, 3> some;
    {
        const Task::Stage looking(task, 0, 0.2);
        some = countSome(source.view(), task);
    }
    const Ranges first = limitsAround(some, share);
    const Task::Stage proving(task, 0.2, 1);
    const BeyondOfAll beyond = countAll(source.view(), first, task);
    const auto spare = static_cast<std::int64_t>(static_cast<double>(pixels) * share);
    Ranges ranges;
    for (std::size_t c = 0; c < (gray ? 1 : 3); ++c) {
        const int low = endOf(beyond[c].low, first[c].low, spare);
        const int high = endOf(beyond[c].high, first[c].high, spare);
        if (low < 0 || high < 0) return {};
        ranges[c] = {low, 255 - high};
    }
    if (gray) ranges[1] = ranges[2] = ranges[0];
    return ranges;
}

} // namespace kvn::imaging
#endif
