#include "imaging/operations/channels/flatten_row.h"

#define HWY_WANT_AVX3_DL
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/channels/flatten_row.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

#include "imaging/operations/support/pixel_vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

void flatten(const PixelRow& row, const Rgba& under) {
    const hn::RebindToUnsigned<Wide> d;
    const auto r = hn::Set(d, under.r), g = hn::Set(d, under.g), b = hn::Set(d, under.b);
    const auto kernel = [&](WidePixels& p) HWY_ATTR {
        const auto alpha = hn::BitCast(d, p.a), rest = hn::Sub(hn::Set(d, 255), alpha);
        const auto over = [&](WideVector v, auto below) HWY_ATTR {
            const auto mixed = hn::Add(hn::Mul(hn::BitCast(d, v), alpha), hn::Mul(below, rest));
            const auto sum = hn::Add(mixed, hn::Set(d, 128));
            return hn::BitCast(Wide(), hn::ShiftRight<8>(hn::Add(sum, hn::ShiftRight<8>(sum))));
        };
        p.r = over(p.r, r);
        p.g = over(p.g, g);
        p.b = over(p.b, b);
    };
    if (row.outChannels == 4)
        throughVectors<4, 4>(row, kernel);
    else if (row.inChannels == 4)
        throughVectors<4, 3>(row, kernel);
    else if (row.outChannels == 3)
        throughVectors<2, 3>(row, kernel);
    else
        throughVectors<2, 1>(row, kernel);
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(flatten);

void flattenRow(const PixelRow& row, const Rgba& under) {
    HWY_DYNAMIC_DISPATCH(flatten)(row, under);
}

} // namespace kvn::imaging
#endif
