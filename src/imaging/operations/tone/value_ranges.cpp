// Some of the pixels tell roughly where the ends are. Then all pixels are held against a value a
// little further in at each end, which is what vectors do well; only the few beyond are counted one
// by one.
#include "imaging/operations/tone/value_ranges.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/tone/value_ranges.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

#ifndef KVN_VALUE_RANGES_ONCE
#define KVN_VALUE_RANGES_ONCE
namespace kvn::imaging {

// What lies beyond them belongs to an end of the channel, the values next to them included.
struct ChannelLimits {
    std::uint8_t low = 1, high = 254;
};
// How many are less than the low limit and greater than the high one; and how many there are of
// each value, complete for all of these but the values next to the limits.
struct Beyond {
    std::int64_t low = 0, high = 0;
    Counts values{};
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
class Tally {
  public:
    Tally(const LimitsOfAll& limits, std::size_t channels) : limits_(limits), channels_(channels) {
        for (std::size_t i = 0; i < block(); ++i) {
            low_[i] = limits[i % channels].low;
            high_[i] = limits[i % channels].high;
        }
    }

    static std::size_t block() { return 3 * hn::Lanes(Bytes()); }

    // Three vectors, most of which hold nothing beyond the limits.
    HWY_INLINE void add(const std::uint8_t* values) {
        const Bytes d;
        const std::size_t n = hn::Lanes(d);
        auto beyond = hn::Zero(d);
        for (std::size_t i = 0; i < block(); i += n) {
            const auto v = hn::LoadU(d, values + i);
            beyond = hn::Or(beyond, hn::SaturatedSub(hn::Load(d, low_ + i), v));
            beyond = hn::Or(beyond, hn::SaturatedSub(v, hn::Load(d, high_ + i)));
        }
        if (hn::AllTrue(d, hn::Eq(beyond, hn::Zero(d)))) return;
        const auto one = hn::Set(d, 1);
        for (std::size_t i = 0; i < block(); i += n) {
            const auto v = hn::LoadU(d, values + i);
            const auto below = hn::SaturatedSub(hn::Load(d, low_ + i), v);
            const auto above = hn::SaturatedSub(v, hn::Load(d, high_ + i));
            hn::Store(hn::Add(hn::Load(d, below_ + i), hn::Min(below, one)), d, below_ + i);
            hn::Store(hn::Add(hn::Load(d, above_ + i), hn::Min(above, one)), d, above_ + i);
            const auto far = hn::SaturatedSub(hn::Or(below, above), one);
            countFar(values + i, i, hn::Gt(far, hn::Zero(d)));
        }
        if (++pending_ == 255) flush();
    }

    // One value of channel c.
    void addOne(std::uint8_t value, std::size_t c) {
        beyond_[c].low += value < limits_[c].low;
        beyond_[c].high += value > limits_[c].high;
        ++beyond_[c].values[value];
    }

    // The counts of the lanes are bytes.
    HWY_NOINLINE void flush() {
        for (std::size_t i = 0; i < block(); ++i) {
            beyond_[i % channels_].low += std::exchange(below_[i], 0);
            beyond_[i % channels_].high += std::exchange(above_[i], 0);
        }
        pending_ = 0;
    }

    const BeyondOfAll& beyond() const { return beyond_; }

  private:
    // The values of one vector that are not next to a limit, but further out.
    HWY_INLINE void countFar(const std::uint8_t* values, std::size_t lane, hn::Mask<Bytes> far) {
        alignas(8) std::uint8_t bits[std::max<std::size_t>(8, mostLanes / 8)] = {};
        hn::StoreMaskBits(Bytes(), far, bits);
        for (std::size_t part = 0; part * 64 < mostLanes; ++part) {
            std::uint64_t left;
            std::memcpy(&left, bits + part * 8, 8);
            for (; left != 0; left &= left - 1) {
                const std::size_t i = part * 64 + static_cast<std::size_t>(std::countr_zero(left));
                ++beyond_[(lane + i) % channels_].values[values[i]];
            }
        }
    }

    LimitsOfAll limits_;
    std::size_t channels_;
    alignas(64) std::uint8_t low_[3 * mostLanes], high_[3 * mostLanes];
    alignas(64) std::uint8_t below_[3 * mostLanes] = {}, above_[3 * mostLanes] = {};
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

using Ranges = std::array<ValueRange, 3>;

// Twice the share of the pixels looked at lie beyond the limits, less what the last value has
// too many.
LimitsOfAll limitsAround(const std::array<Counts, 3>& some, double share) {
    LimitsOfAll limits;
    for (std::size_t c = 0; c < 3; ++c) {
        const ValueRange guess = rangeOf(some[c], {0, 255}, share * 2);
        limits[c].low = static_cast<std::uint8_t>(std::min(guess.low, 254) + 1);
        limits[c].high = static_cast<std::uint8_t>(std::max(guess.high, 1) - 1);
    }
    return limits;
}

BeyondOfAll countAll(const ConstView& in, const LimitsOfAll& limits, Task& task) {
    BeyondOfAll beyond;
    std::mutex mutex;
    parallelRows(in.height, task, [&](int y0, int y1) {
        BeyondOfAll band;
        HWY_DYNAMIC_DISPATCH(countBeyond)(in, y0, y1, limits, band);
        const std::lock_guard lock(mutex);
        for (std::size_t c = 0; c < 3; ++c) {
            beyond[c].low += band[c].low;
            beyond[c].high += band[c].high;
            for (std::size_t v = 0; v < 256; ++v)
                beyond[c].values[v] += band[c].values[v];
        }
    });
    return beyond;
}

// The first value from the end at which more than `spare` pixels have been passed; -1 if it lies
// further in than the limit. `valueAt(i)` is the i-th value from the end, `limit` the index of the
// limit, `beyond` the number of all before it.
template <class ValueAt>
int endOf(const Counts& values, int limit, std::int64_t beyond, std::int64_t spare,
          const ValueAt& valueAt) {
    std::int64_t sum = 0;
    for (int i = 0; i < limit - 1; ++i)
        if ((sum += values[static_cast<std::size_t>(valueAt(i))]) > spare) return valueAt(i);
    if (beyond > spare) return valueAt(limit - 1);
    return limit == 255 ? valueAt(255) : -1;
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
    const LimitsOfAll limits = limitsAround(some, share);
    const Task::Stage proving(task, 0.2, 1);
    const BeyondOfAll beyond = countAll(source.view(), limits, task);
    const auto spare = static_cast<std::int64_t>(static_cast<double>(pixels) * share);
    Ranges ranges;
    for (std::size_t c = 0; c < (gray ? 1 : 3); ++c) {
        const Beyond& found = beyond[c];
        const auto up = [](int i) { return i; };
        const auto down = [](int i) { return 255 - i; };
        const int low = endOf(found.values, limits[c].low, found.low, spare, up);
        const int high = endOf(found.values, 255 - limits[c].high, found.high, spare, down);
        if (low < 0 || high < 0) return {};
        ranges[c] = {low, high};
    }
    if (gray) ranges[1] = ranges[2] = ranges[0];
    return ranges;
}

} // namespace kvn::imaging
#endif
