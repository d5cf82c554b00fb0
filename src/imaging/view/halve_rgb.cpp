#include "imaging/view/halve_rgb.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/view/halve_rgb.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// What is too short for vectors, and all of it where there are none.
inline void halveRest(const std::uint8_t* upper, const std::uint8_t* lower, int from, int count,
                      int bias, std::uint8_t* out) {
    for (std::ptrdiff_t i = std::ptrdiff_t{3} * from; i < std::ptrdiff_t{3} * count; ++i) {
        const std::ptrdiff_t left = i / 3 * 6 + i % 3, right = left + 3;
        out[i] = static_cast<std::uint8_t>(
            (upper[left] + upper[right] + lower[left] + lower[right] + bias) >> 2);
    }
}

#if HWY_TARGET == HWY_SCALAR // one lane holds no pair
void halve(const std::uint8_t* upper, const std::uint8_t* lower, int count, int bias,
           std::uint8_t* out) {
    halveRest(upper, lower, 0, count, bias, out);
}
#else
using Bytes = hn::ScalableTag<std::uint8_t>;
using Pairs = hn::Repartition<std::uint16_t, Bytes>;
using HalfBytes = hn::Half<Bytes>;

// Of one channel: neighbours stand in the two bytes of a pair.
HWY_INLINE hn::Vec<HalfBytes> means(hn::Vec<Bytes> upper, hn::Vec<Bytes> lower,
                                    hn::Vec<Pairs> bias) {
    const Pairs pairs;
    const auto low = hn::Set(pairs, 0xFF);
    const auto u = hn::BitCast(pairs, upper), l = hn::BitCast(pairs, lower);
    const auto left = hn::Add(hn::And(u, low), hn::And(l, low));
    const auto right = hn::Add(hn::ShiftRight<8>(u), hn::ShiftRight<8>(l));
    return hn::TruncateTo(HalfBytes(), hn::ShiftRight<2>(hn::Add(hn::Add(left, right), bias)));
}

void halve(const std::uint8_t* upper, const std::uint8_t* lower, int count, int bias,
           std::uint8_t* out) {
    const Bytes bytes;
    const auto biases = hn::Set(Pairs(), static_cast<std::uint16_t>(bias));
    const int step = static_cast<int>(hn::Lanes(bytes)) / 2;
    int i = 0;
    for (; i + step <= count; i += step) {
        hn::Vec<Bytes> u0, u1, u2, l0, l1, l2;
        hn::LoadInterleaved3(bytes, upper + std::ptrdiff_t{6} * i, u0, u1, u2);
        hn::LoadInterleaved3(bytes, lower + std::ptrdiff_t{6} * i, l0, l1, l2);
        hn::StoreInterleaved3(means(u0, l0, biases), means(u1, l1, biases), means(u2, l2, biases),
                              HalfBytes(), out + std::ptrdiff_t{3} * i);
    }
    halveRest(upper, lower, i, count, bias, out);
}
#endif

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(halve);

void halveRgb(const std::uint8_t* upper, const std::uint8_t* lower, int count, int bias,
              std::uint8_t* out) {
    HWY_DYNAMIC_DISPATCH(halve)(upper, lower, count, bias, out);
}

} // namespace kvn::imaging
#endif
