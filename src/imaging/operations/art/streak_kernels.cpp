#include "imaging/operations/art/streak_kernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/art/streak_kernels.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Words = hn::ScalableTag<std::uint16_t>;

#if HWY_TARGET == HWY_SCALAR
void tapsOfBytes(const std::uint8_t* const* starts, const std::uint16_t* weights, std::size_t taps,
                 std::uint16_t* sums, std::size_t count) {
    for (std::size_t k = 0; k < taps; ++k)
        for (std::size_t i = 0; i < count; ++i)
            sums[i] = static_cast<std::uint16_t>(sums[i] + (starts[k][i] * weights[k] >> 8));
}

void roundedTaps(const std::uint8_t* const* starts, const std::uint16_t* weights, std::size_t taps,
                 std::uint16_t start, std::uint8_t* out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        unsigned sum = start + 128u;
        for (std::size_t k = 0; k < taps; ++k)
            sum += static_cast<unsigned>(starts[k][i] * weights[k]) >> 8;
        out[i] = static_cast<std::uint8_t>(sum < 0xffff ? sum >> 8 : 255);
    }
}
#else
// Four vectors of sums. Bytes are split into the even and the odd ones, each as the upper half of a
// word: no lane has to change its place before the end.
struct ByteSums {
    hn::Vec<Words> even, odd, even2, odd2;
};

// Adds the taps' bytes from `begin` on.
HWY_INLINE ByteSums withTaps(ByteSums sums, const std::uint8_t* const* starts,
                             const std::uint16_t* weights, std::size_t taps, std::size_t begin) {
    const Words d;
    const hn::Repartition<std::uint8_t, Words> bytes;
    const std::size_t half = 2 * hn::Lanes(d);
    const auto upper = hn::Set(d, 0xff00);
    auto [even, odd, even2, odd2] = sums;
    for (std::size_t k = 0; k < taps; ++k) {
        const auto weight = hn::Set(d, weights[k]);
        const auto a = hn::BitCast(d, hn::LoadU(bytes, starts[k] + begin));
        const auto b = hn::BitCast(d, hn::LoadU(bytes, starts[k] + begin + half));
        even = hn::Add(even, hn::MulHigh(hn::ShiftLeft<8>(a), weight));
        odd = hn::Add(odd, hn::MulHigh(hn::And(a, upper), weight));
        even2 = hn::Add(even2, hn::MulHigh(hn::ShiftLeft<8>(b), weight));
        odd2 = hn::Add(odd2, hn::MulHigh(hn::And(b, upper), weight));
    }
    return {even, odd, even2, odd2};
}

void tapsOfBytes(const std::uint8_t* const* starts, const std::uint16_t* weights, std::size_t taps,
                 std::uint16_t* sums, std::size_t count) {
    const Words d;
    const std::size_t lanes = hn::Lanes(d);
    for (std::size_t i = 0; i < count; i += 4 * lanes) {
        ByteSums four;
        hn::LoadInterleaved2(d, sums + i, four.even, four.odd);
        hn::LoadInterleaved2(d, sums + i + 2 * lanes, four.even2, four.odd2);
        four = withTaps(four, starts, weights, taps, i);
        hn::StoreInterleaved2(four.even, four.odd, d, sums + i);
        hn::StoreInterleaved2(four.even2, four.odd2, d, sums + i + 2 * lanes);
    }
}

void roundedTaps(const std::uint8_t* const* starts, const std::uint16_t* weights, std::size_t taps,
                 std::uint16_t start, std::uint8_t* out, std::size_t count) {
    const Words d;
    const hn::Repartition<std::uint8_t, Words> bytes;
    const std::size_t lanes = hn::Lanes(d);
    const auto upper = hn::Set(d, 0xff00), half = hn::Set(d, 128), begin = hn::Set(d, start);
    const auto save = [=](auto even, auto odd, std::uint8_t* to) HWY_ATTR {
        const auto low = hn::ShiftRight<8>(hn::SaturatedAdd(even, half));
        const auto high = hn::And(hn::SaturatedAdd(odd, half), upper);
        hn::StoreU(hn::BitCast(bytes, hn::Or(low, high)), bytes, to);
    };
    for (std::size_t i = 0; i < count; i += 4 * lanes) {
        const ByteSums four = withTaps({begin, begin, begin, begin}, starts, weights, taps, i);
        save(four.even, four.odd, out + i);
        save(four.even2, four.odd2, out + i + 2 * lanes);
    }
}
#endif

void tapsOfWords(const std::uint16_t* const* starts, const std::uint16_t* weights, std::size_t taps,
                 std::uint16_t* sums, std::size_t count) {
    const Words d;
    const std::size_t lanes = hn::Lanes(d);
    for (std::size_t i = 0; i < count; i += 4 * lanes) {
        hn::Vec<Words> sum[4];
        for (std::size_t j = 0; j < 4; ++j)
            sum[j] = hn::LoadU(d, sums + i + j * lanes);
        for (std::size_t k = 0; k < taps; ++k) {
            const auto weight = hn::Set(d, weights[k]);
            for (std::size_t j = 0; j < 4; ++j)
                sum[j] =
                    hn::Add(sum[j], hn::MulHigh(hn::LoadU(d, starts[k] + i + j * lanes), weight));
        }
        for (std::size_t j = 0; j < 4; ++j)
            hn::StoreU(sum[j], d, sums + i + j * lanes);
    }
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(tapsOfBytes);
HWY_EXPORT(roundedTaps);
HWY_EXPORT(tapsOfWords);

void addTaps(const std::uint8_t* const* starts, const std::uint16_t* weights, std::size_t taps,
             std::uint16_t* sums, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(tapsOfBytes)(starts, weights, taps, sums, count);
}
void addTaps(const std::uint16_t* const* starts, const std::uint16_t* weights, std::size_t taps,
             std::uint16_t* sums, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(tapsOfWords)(starts, weights, taps, sums, count);
}
void meanOfTaps(const std::uint8_t* const* starts, const std::uint16_t* weights, std::size_t taps,
                std::uint16_t start, std::uint8_t* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(roundedTaps)(starts, weights, taps, start, out, count);
}

} // namespace kvn::imaging
#endif
