#include "imaging/codecs/pcx_runs.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/codecs/pcx_runs.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "imaging/codecs/pcx_run_table.h"

#ifndef KVN_PCX_WALK // this file is read many times
#define KVN_PCX_WALK
namespace kvn::imaging {

// How far the data are gone through, and how much that has given.
struct PcxWalk {
    const std::uint8_t* in;
    std::uint64_t made;
};

constexpr std::size_t longestPcxRun = 63;

} // namespace kvn::imaging
#endif

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Eight bytes of the data at a time, as long as there is room for whole vectors before `end` and up
// to `size` bytes of `out`. Bytes behind those that are made are written to.
PcxWalk decode(PcxWalk now, const std::uint8_t* end, std::uint8_t* out, std::size_t size) {
#if HWY_TARGET != HWY_SCALAR // one lane holds no block
    const hn::FixedTag<std::uint8_t, 16> bytes;
    constexpr std::uint64_t top = 0x8080808080808080, single = 0xc1c1c1c1c1c1c1c1;
    constexpr std::size_t mostMade = 8 + longestPcxRun;
    while (end - now.in >= 16 && now.made + mostMade <= size) {
        std::uint64_t word = 0;
        std::memcpy(&word, now.in, 8);
        const std::uint64_t high = word & word << 1 & top; // 0xC0 and above
        const PcxBlock& block = pcxBlocks[(high >> 7) * 0x0102040810204080 >> 56];
        const auto from = hn::LoadU(bytes, block.from.data());
        hn::StoreU(hn::TableLookupBytes(hn::LoadU(bytes, now.in), from), bytes, out + now.made);
        const std::uint64_t longer = (word ^ single) & block.marks;
        if (longer == 0) {
            now.in += block.taken;
            now.made += block.made;
            continue;
        }
        const auto place = static_cast<std::size_t>(std::countr_zero(longer)) / 8;
        const std::size_t run = now.in[place] & longestPcxRun;
        now.made += block.madeBefore[place];
        const auto value = hn::Set(bytes, now.in[place + 1]);
        hn::StoreU(value, bytes, out + now.made);
        for (std::size_t at = 16; at < run; at += 16)
            hn::StoreU(value, bytes, out + now.made + at);
        now.made += run;
        now.in += place + 2;
    }
#else
    (void)end, (void)out, (void)size;
#endif
    return now;
}

// Of the bytes that start a run or are repeated: those that start one. `open`: the first byte is
// repeated; it becomes whether the byte behind the last one is. In a row of such bytes every other
// one starts a run, which the borrows of a subtraction tell for all rows at once.
HWY_INLINE std::uint64_t marksOf(std::uint64_t high, std::uint64_t& open, std::uint64_t& repeated) {
    constexpr std::uint64_t odd = 0xaaaaaaaaaaaaaaaa;
    const std::uint64_t candidates = high & ~open;
    const std::uint64_t series = ((candidates << 1 | odd) - candidates) ^ odd;
    repeated = series ^ (high | open);
    const std::uint64_t marks = series & high;
    open = marks >> 63;
    return marks;
}

// What 64 bytes at a time give, as long as they end before `stop`.
PcxWalk measure(PcxWalk now, const std::uint8_t* stop, std::uint64_t& open) {
#if HWY_TARGET != HWY_SCALAR
    const hn::FixedTag<std::uint8_t, 16> bytes;
    const hn::Repartition<std::uint64_t, decltype(bytes)> sums;
    const auto top = hn::Set(bytes, 0xc0), length = hn::Set(bytes, longestPcxRun);
    for (; stop - now.in >= 64; now.in += 64) {
        std::uint64_t high = 0, repeated = 0;
        std::uint8_t bits[8];
        for (std::size_t i = 0; i < 4; ++i) {
            const auto v = hn::LoadU(bytes, now.in + 16 * i);
            hn::StoreMaskBits(bytes, hn::Eq(hn::And(v, top), top), bits + 2 * i);
        }
        std::memcpy(&high, bits, 8);
        const std::uint64_t marks = marksOf(high, open, repeated);
        std::memcpy(bits, &marks, 8);
        auto lengths = hn::Zero(sums);
        for (std::size_t i = 0; i < 4; ++i) {
            const auto v = hn::And(hn::LoadU(bytes, now.in + 16 * i), length);
            const auto marked = hn::LoadMaskBits(bytes, bits + 2 * i);
            lengths = hn::Add(lengths, hn::SumsOf8(hn::IfThenElseZero(marked, v)));
        }
        now.made += static_cast<unsigned>(std::popcount(~(high | repeated)));
        now.made += hn::GetLane(hn::SumOfLanes(sums, lengths));
    }
#else
    (void)stop, (void)open;
#endif
    return now;
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(decode);
HWY_EXPORT(measure);

namespace {

constexpr std::uint8_t runMark = 0xc0;

// The next run, or byte that stands for itself; its length, 0 where the data end before its value.
std::size_t takeOne(const std::uint8_t*& in, const std::uint8_t* end, std::uint8_t& value) {
    value = *in++;
    if (value < runMark) return 1;
    const std::size_t run = value & longestPcxRun;
    if (in == end) return 0;
    value = *in++;
    return run;
}

// The first place from `at` on where a run can start: behind a byte below the marks, which is a
// value or stands for itself.
std::size_t nextStart(std::span<const std::uint8_t> data, std::size_t at) {
    while (at < data.size() && (at == 0 || data[at - 1] >= runMark))
        ++at;
    return at;
}

} // namespace

PcxRuns::PcxRuns(std::span<const std::uint8_t> data, Task& task) : data_(data) {
    constexpr std::size_t partBytes = std::size_t{512} << 10, placeBytes = std::size_t{32} << 10;
    std::vector<std::size_t> starts{0};
    while (starts.back() < data.size())
        starts.push_back(nextStart(data, std::min(starts.back() + partBytes, data.size())));
    std::vector<std::vector<Place>> parts(starts.size() - 1);
    const auto measurePart = [&](std::size_t i) {
        const std::uint8_t* const end = data.data() + starts[i + 1];
        PcxWalk now{data.data() + starts[i], 0};
        std::uint64_t open = 0;
        while (end - now.in > 64) {
            parts[i].push_back({static_cast<std::size_t>(now.in - data.data()), now.made});
            const std::ptrdiff_t size = std::min<std::ptrdiff_t>(placeBytes, end - now.in);
            const std::uint8_t* const before = now.in;
            now = HWY_DYNAMIC_DISPATCH(measure)(now, now.in + size, open);
            if (now.in == before) break; // no vectors here
            if (open == 0) continue;
            // Back to where the run starts.
            --now.in;
            now.made -= *now.in & longestPcxRun;
            open = 0;
        }
        parts[i].push_back({static_cast<std::size_t>(now.in - data.data()), now.made});
        for (std::uint8_t value = 0; now.in != end;)
            now.made += takeOne(now.in, end, value);
        parts[i].push_back({starts[i + 1], now.made});
    };
    parallelRows(
        static_cast<int>(parts.size()), task,
        [&](int from, int to) {
            for (int i = from; i < to; ++i)
                measurePart(static_cast<std::size_t>(i));
        },
        1);
    for (const std::vector<Place>& part : parts) {
        for (const Place& place : part)
            places_.push_back({place.in, size_ + place.out});
        size_ = places_.back().out;
    }
}

PcxRuns::Reader::Reader(const PcxRuns& runs, std::uint64_t from)
    : begin_(runs.data_.data()), at_(begin_), end_(begin_ + runs.data_.size()) {
    const auto behind = std::ranges::upper_bound(runs.places_, from, {}, &Place::out);
    if (behind == runs.places_.begin()) return;
    const Place& place = *std::prev(behind);
    at_ += place.in;
    std::vector<std::uint8_t> passed(4096 + slack);
    for (std::uint64_t left = from - place.out; left > 0;) {
        const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(left, 4096));
        read(passed.data(), size);
        left -= size;
    }
}

void PcxRuns::Reader::read(std::uint8_t* out, std::size_t size) {
    std::size_t done = 0;
    const auto takeRun = [&] {
        const std::size_t n = std::min(run_, size - done);
        std::memset(out + done, value_, n);
        done += n;
        run_ -= n;
    };
    takeRun();
    const PcxWalk now = HWY_DYNAMIC_DISPATCH(decode)({at_, done}, end_, out, size);
    at_ = now.in;
    done = static_cast<std::size_t>(now.made);
    while (done < size && at_ != end_) {
        run_ = takeOne(at_, end_, value_);
        takeRun();
    }
    std::memset(out + done, 0, size - done);
}

} // namespace kvn::imaging
#endif
