#include "imaging/operations/filters/mean_kernels.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/filters/mean_kernels.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Reals = hn::ScalableTag<float>;
using Wholes = hn::RebindToSigned<Reals>;
using Real = hn::Vec<Reals>;

// 2^x for x of 0..8: the whole part goes into the exponent, the rest (-0.5..0.5) through the
// series of e^(x ln 2), which is exact to seven digits there.
HWY_INLINE Real powerOfTwo(Real x) {
    const Reals d;
    const Wholes whole;
    const auto n = hn::NearestInt(x);
    const Real y = hn::Mul(hn::Sub(x, hn::ConvertTo(d, n)), hn::Set(d, 0.69314718f));
    constexpr float factors[] = {1.0f / 720, 1.0f / 120, 1.0f / 24, 1.0f / 6, 0.5f, 1.0f, 1.0f};
    Real sum = hn::Zero(d);
    for (const float factor : factors)
        sum = hn::MulAdd(sum, y, hn::Set(d, factor));
    const auto scale = hn::ShiftLeft<23>(hn::Add(n, hn::Set(whole, 127)));
    return hn::Mul(sum, hn::BitCast(d, scale));
}

template <MeanKind kind>
HWY_INLINE Real valueOf(Real mean) {
    const Reals d;
    if constexpr (kind == MeanKind::Geometric)
        return powerOfTwo(hn::Mul(mean, hn::Set(d, 7.9943534f))); // log2 255
    if constexpr (kind == MeanKind::Harmonic) return hn::Div(hn::Set(d, 1.0f), mean);
    if constexpr (kind == MeanKind::PowerPlus) return hn::Mul(hn::Sqrt(mean), hn::Set(d, 255.0f));
    return hn::Div(hn::Set(d, 1.0f), hn::Sqrt(mean));
}

template <MeanKind kind>
HWY_INLINE void convert(const std::int32_t* means, std::uint8_t* out, std::size_t count) {
    const Reals d;
    const Wholes whole;
    const hn::Rebind<std::uint8_t, Wholes> bytes;
    const std::size_t lanes = hn::Lanes(d);
    std::int32_t last[HWY_MAX_BYTES / 4] = {};
    std::uint8_t lastOut[HWY_MAX_BYTES / 4];
    for (std::size_t i = 0; i < count; i += lanes) {
        const bool full = i + lanes <= count;
        if (!full) std::copy(means + i, means + count, last);
        const auto mean = hn::LoadU(whole, full ? means + i : last);
        const Real scaled =
            hn::Mul(hn::ConvertTo(d, hn::Max(mean, hn::Set(whole, 1))), hn::Set(d, 0x1p-30f));
        const Real value = hn::Min(valueOf<kind>(scaled), hn::Set(d, 255.0f));
        const auto rounded = hn::NearestInt(value);
        const auto kept = hn::IfThenElse(hn::Lt(mean, hn::Zero(whole)), hn::Zero(whole), rounded);
        hn::StoreU(hn::DemoteTo(bytes, kept), bytes, full ? out + i : lastOut);
        if (!full) std::copy(lastOut, lastOut + (count - i), out + i);
    }
}

void geometric(const std::int32_t* means, std::uint8_t* out, std::size_t count) {
    convert<MeanKind::Geometric>(means, out, count);
}
void harmonic(const std::int32_t* means, std::uint8_t* out, std::size_t count) {
    convert<MeanKind::Harmonic>(means, out, count);
}
void powerPlus(const std::int32_t* means, std::uint8_t* out, std::size_t count) {
    convert<MeanKind::PowerPlus>(means, out, count);
}
void powerMinus(const std::int32_t* means, std::uint8_t* out, std::size_t count) {
    convert<MeanKind::PowerMinus>(means, out, count);
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(geometric);
HWY_EXPORT(harmonic);
HWY_EXPORT(powerPlus);
HWY_EXPORT(powerMinus);

void valuesOfMeans(MeanKind kind, const std::int32_t* means, std::uint8_t* out, std::size_t count) {
    switch (kind) {
    case MeanKind::Geometric:
        return HWY_DYNAMIC_DISPATCH(geometric)(means, out, count);
    case MeanKind::Harmonic:
        return HWY_DYNAMIC_DISPATCH(harmonic)(means, out, count);
    case MeanKind::PowerPlus:
        return HWY_DYNAMIC_DISPATCH(powerPlus)(means, out, count);
    case MeanKind::PowerMinus:
        return HWY_DYNAMIC_DISPATCH(powerMinus)(means, out, count);
    }
}

} // namespace kvn::imaging
#endif
