#include "imaging/operations/filters/rank_kernels.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/filters/rank_kernels.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Plain loops that the compiler turns into vector code.
template <Extreme which>
HWY_INLINE std::uint8_t chosen(std::uint8_t a, std::uint8_t b) {
    if constexpr (which == Extreme::Least) return a < b ? a : b;
    return a > b ? a : b;
}

template <Extreme which>
HWY_INLINE void mergeRow(const std::uint8_t* HWY_RESTRICT row, std::uint8_t* HWY_RESTRICT out,
                         std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        out[i] = chosen<which>(out[i], row[i]);
}

template <Extreme which>
HWY_INLINE void chooseOfThree(const std::uint8_t* HWY_RESTRICT a,
                              const std::uint8_t* HWY_RESTRICT b,
                              const std::uint8_t* HWY_RESTRICT c, std::uint8_t* HWY_RESTRICT out,
                              std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        out[i] = chosen<which>(chosen<which>(a[i], b[i]), c[i]);
}

// In pieces that stay in the nearest cache.
template <Extreme which>
HWY_INLINE void extremeRows(const std::uint8_t* const* rows, int n, std::uint8_t* out,
                            std::size_t count) {
    constexpr std::size_t piece = 2048;
    for (std::size_t begin = 0; begin < count; begin += piece) {
        const std::size_t length = std::min(piece, count - begin);
        const std::uint8_t* const third = rows[std::min(n - 1, 2)];
        chooseOfThree<which>(rows[0] + begin, rows[std::min(n - 1, 1)] + begin, third + begin,
                             out + begin, length);
        for (int k = 3; k < n; ++k)
            mergeRow<which>(rows[k] + begin, out + begin, length);
    }
}

template <Extreme which>
HWY_INLINE void extremeEntries(std::uint8_t* row, std::uint8_t* HWY_RESTRICT out, std::size_t count,
                               std::size_t size, std::size_t step) {
    if (size == 3) return chooseOfThree<which>(row, row + step, row + 2 * step, out, count);
    // The extremes of 1, 2, 4, 8 ... entries; the last two windows overlap, which does no harm.
    std::size_t window = 1, length = count + (size - 1) * step;
    for (; window * 2 <= size; window *= 2) {
        const std::size_t ahead = window * step;
        length -= ahead;
        for (std::size_t i = 0; i < length; ++i) // in place: i is read last when it is written
            row[i] = chosen<which>(row[i], row[i + ahead]);
    }
    const std::uint8_t* HWY_RESTRICT first = row;
    const std::size_t rest = (size - window) * step;
    for (std::size_t i = 0; i < count; ++i)
        out[i] = chosen<which>(first[i], first[i + rest]);
}

void leastRows(const std::uint8_t* const* rows, int n, std::uint8_t* out, std::size_t count) {
    extremeRows<Extreme::Least>(rows, n, out, count);
}
void greatestRows(const std::uint8_t* const* rows, int n, std::uint8_t* out, std::size_t count) {
    extremeRows<Extreme::Greatest>(rows, n, out, count);
}
void leastEntries(std::uint8_t* row, std::uint8_t* out, std::size_t count, std::size_t size,
                  std::size_t step) {
    extremeEntries<Extreme::Least>(row, out, count, size, step);
}
void greatestEntries(std::uint8_t* row, std::uint8_t* out, std::size_t count, std::size_t size,
                     std::size_t step) {
    extremeEntries<Extreme::Greatest>(row, out, count, size, step);
}

using Bytes = hn::ScalableTag<std::uint8_t>;
using Signed = hn::ScalableTag<std::int8_t>;

// `fixed` is the size where it is worth a loop without branches, else 0.
template <Extreme which, int fixed>
HWY_INLINE void extremeColumns(const std::uint8_t* const* rows, int anySize, int count,
                               std::uint8_t* out, std::size_t stride, std::size_t length) {
    const Bytes d;
    const auto choose = [](auto a, auto b) HWY_ATTR {
        if constexpr (which == Extreme::Least) return hn::Min(a, b);
        return hn::Max(a, b);
    };
    const int size = fixed > 0 ? fixed : anySize;
    if constexpr (fixed > 0) count = fixed;
    HWY_ALIGN std::uint8_t ends[(fixed > 0 ? fixed : 255) * HWY_MAX_BYTES];
    const std::size_t lanes = hn::Lanes(d);
    for (std::size_t i = 0; i < length; i += lanes) {
        auto end = hn::LoadU(d, rows[size - 1] + i);
        hn::Store(end, d, ends + static_cast<std::size_t>(size - 1) * lanes);
        for (int k = size - 2; k >= 0; --k) {
            end = choose(end, hn::LoadU(d, rows[k] + i));
            hn::Store(end, d, ends + static_cast<std::size_t>(k) * lanes);
        }
        hn::StoreU(end, d, out + i);
        auto begin = hn::LoadU(d, rows[count > 1 ? size : 0] + i);
        std::uint8_t* to = out + stride + i;
        for (int j = 1; j < count; ++j, to += stride) {
            begin = choose(begin, hn::LoadU(d, rows[size + j - 1] + i));
            hn::StoreU(choose(begin, hn::Load(d, ends + static_cast<std::size_t>(j) * lanes)), d,
                       to);
        }
    }
}
template <Extreme which>
HWY_INLINE void extremeColumns(const std::uint8_t* const* rows, int size, int count,
                               std::uint8_t* out, std::size_t stride, std::size_t length) {
    if (size == 3 && count == 3) return extremeColumns<which, 3>(rows, 3, 3, out, stride, length);
    extremeColumns<which, 0>(rows, size, count, out, stride, length);
}
void leastColumns(const std::uint8_t* const* rows, int size, int count, std::uint8_t* out,
                  std::size_t stride, std::size_t length) {
    extremeColumns<Extreme::Least>(rows, size, count, out, stride, length);
}
void greatestColumns(const std::uint8_t* const* rows, int size, int count, std::uint8_t* out,
                     std::size_t stride, std::size_t length) {
    extremeColumns<Extreme::Greatest>(rows, size, count, out, stride, length);
}

template <class V>
HWY_INLINE void order(V& low, V& high) {
    const V least = hn::Min(low, high);
    high = hn::Max(low, high);
    low = least;
}

// Each column of three in order; the median of all is the median of the greatest of the lows, the
// middle of the middles and the least of the highs.
HWY_INLINE void medianOf9(const std::uint8_t* const* rows, std::size_t i, std::size_t step,
                          std::uint8_t* out) {
    const Bytes d;
    hn::Vec<Bytes> low[3], middle[3], high[3];
    for (std::size_t j = 0; j < 3; ++j) {
        low[j] = hn::LoadU(d, rows[0] + i + j * step);
        middle[j] = hn::LoadU(d, rows[1] + i + j * step);
        high[j] = hn::LoadU(d, rows[2] + i + j * step);
        order(low[j], middle[j]);
        order(middle[j], high[j]);
        order(low[j], middle[j]);
    }
    auto a = hn::Max(low[0], hn::Max(low[1], low[2]));
    auto b =
        hn::Max(hn::Min(middle[0], middle[1]), hn::Min(hn::Max(middle[0], middle[1]), middle[2]));
    auto c = hn::Min(high[0], hn::Min(high[1], high[2]));
    order(a, b);
    order(b, c);
    hn::StoreU(hn::Max(a, b), d, out + i);
}

// Puts the least of the values first and the greatest last.
template <int count, class V>
HWY_INLINE void sortOutEnds(V* values) {
    for (int i = 0; i < count / 2; ++i)
        order(values[i], values[count - 1 - i]);
    for (int i = 1; i < (count + 1) / 2; ++i)
        order(values[0], values[i]);
    for (int i = count / 2; i < count - 1; ++i)
        order(values[i], values[count - 1]);
}

// Neither the least nor the greatest of more than half of the values is the median: both go, and
// one more value comes in.
template <int count, class V, class Load>
HWY_INLINE V medianByForgetting(V* values, const Load& load) {
    sortOutEnds<count>(values);
    if constexpr (count == 3) {
        return values[1];
    } else {
        values[0] = load(25 - (count - 3));
        return medianByForgetting<count - 1>(values, load);
    }
}

HWY_INLINE void medianOf25(const std::uint8_t* const* rows, std::size_t i, std::size_t step,
                           std::uint8_t* out) {
    const Bytes d;
    const auto load = [=](std::size_t k)
                          HWY_ATTR { return hn::LoadU(d, rows[k / 5] + i + k % 5 * step); };
    hn::Vec<Bytes> values[14];
    for (std::size_t k = 0; k < 14; ++k)
        values[k] = load(k);
    hn::StoreU(medianByForgetting<14>(values, load), d, out + i);
}

// The median bit by bit from the top: a bit is set if no more than half of the window lies below
// the number that it makes. Values are compared as signed numbers, 128 lower.
HWY_INLINE void medianByBits(const std::uint8_t* const* rows, int size, std::size_t i,
                             std::size_t step, std::uint8_t* out) {
    const Signed d;
    const Bytes bytes;
    const auto flip = hn::Set(bytes, 128);
    const auto half = hn::Set(bytes, static_cast<std::uint8_t>(size * size / 2));
    auto result = hn::Zero(bytes);
    for (int bit = 128; bit > 0; bit /= 2) {
        const auto candidate = hn::Or(result, hn::Set(bytes, static_cast<std::uint8_t>(bit)));
        const auto limit = hn::BitCast(d, hn::Xor(candidate, flip));
        auto below = hn::Zero(d), below2 = hn::Zero(d);
        for (int k = 0; k < size; ++k) {
            const std::uint8_t* from = rows[k] + i;
            int j = 0;
            for (; j + 1 < size; j += 2, from += 2 * step) {
                const auto v = hn::BitCast(d, hn::Xor(hn::LoadU(bytes, from), flip));
                const auto w = hn::BitCast(d, hn::Xor(hn::LoadU(bytes, from + step), flip));
                below = hn::Sub(below, hn::VecFromMask(d, hn::Lt(v, limit)));
                below2 = hn::Sub(below2, hn::VecFromMask(d, hn::Lt(w, limit)));
            }
            const auto v = hn::BitCast(d, hn::Xor(hn::LoadU(bytes, from), flip));
            below = hn::Sub(below, hn::VecFromMask(d, hn::Lt(v, limit)));
        }
        const auto count = hn::BitCast(bytes, hn::Add(below, below2));
        const auto fits = hn::Eq(hn::Min(count, half), count);
        result = hn::IfThenElse(fits, candidate, result);
    }
    hn::StoreU(result, bytes, out + i);
}

HWY_INLINE void medianAt(const std::uint8_t* const* rows, int size, std::size_t i, std::size_t step,
                         std::uint8_t* out) {
    if (size == 3) return medianOf9(rows, i, step, out);
    if (size == 5) return medianOf25(rows, i, step, out);
    medianByBits(rows, size, i, step, out);
}

// The last vector overlaps the one before it; rows shorter than a vector have room behind them.
void median(const std::uint8_t* const* rows, int size, std::size_t step, std::uint8_t* out,
            std::size_t count) {
    const std::size_t lanes = hn::Lanes(Bytes());
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes)
        medianAt(rows, size, i, step, out);
    if (i == count) return;
    if (count >= lanes) return medianAt(rows, size, count - lanes, step, out);
    std::uint8_t last[HWY_MAX_BYTES];
    medianAt(rows, size, 0, step, last);
    std::memcpy(out, last, count);
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(leastRows);
HWY_EXPORT(greatestRows);
HWY_EXPORT(leastEntries);
HWY_EXPORT(greatestEntries);
HWY_EXPORT(leastColumns);
HWY_EXPORT(greatestColumns);
HWY_EXPORT(median);

void extremeOfRows(Extreme which, const std::uint8_t* const* rows, int n, std::uint8_t* out,
                   std::size_t count) {
    if (which == Extreme::Least) return HWY_DYNAMIC_DISPATCH(leastRows)(rows, n, out, count);
    HWY_DYNAMIC_DISPATCH(greatestRows)(rows, n, out, count);
}

void extremeAlong(Extreme which, std::uint8_t* row, std::uint8_t* out, std::size_t count, int size,
                  int step) {
    const auto window = static_cast<std::size_t>(size), distance = static_cast<std::size_t>(step);
    if (which == Extreme::Least)
        return HWY_DYNAMIC_DISPATCH(leastEntries)(row, out, count, window, distance);
    HWY_DYNAMIC_DISPATCH(greatestEntries)(row, out, count, window, distance);
}

void extremeOfColumns(Extreme which, const std::uint8_t* const* rows, int size, int count,
                      std::uint8_t* out, std::size_t stride, std::size_t length) {
    if (which == Extreme::Least)
        return HWY_DYNAMIC_DISPATCH(leastColumns)(rows, size, count, out, stride, length);
    HWY_DYNAMIC_DISPATCH(greatestColumns)(rows, size, count, out, stride, length);
}

void medianOfWindow(const std::uint8_t* const* rows, int size, int step, std::uint8_t* out,
                    std::size_t count) {
    HWY_DYNAMIC_DISPATCH(median)(rows, size, static_cast<std::size_t>(step), out, count);
}

} // namespace kvn::imaging
#endif
