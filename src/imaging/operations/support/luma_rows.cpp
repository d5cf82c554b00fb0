#include "imaging/operations/support/luma_rows.h"

#include <algorithm>

#define HWY_WANT_AVX3_DL
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/support/luma_rows.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

#include "imaging/operations/support/pixel_vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

template <class Kernel>
HWY_INLINE void throughRow(const PixelRow& row, const Kernel& kernel) {
    switch (row.inChannels) {
    case 1:
        return throughVectors<1, 1>(row, kernel);
    case 2:
        return throughVectors<2, 2>(row, kernel);
    case 3:
        return throughVectors<3, 3>(row, kernel);
    default:
        return throughVectors<4, 4>(row, kernel);
    }
}

void desaturate(const PixelRow& row) {
    const LumaOf luma;
    throughRow(row, [&](WidePixels& p) HWY_ATTR { p.r = p.g = p.b = luma(p); });
}

// Sixteen times the distance by the level in 1/2048 is the product in 1/32768.
void saturate(const PixelRow& row, int level) {
    const LumaOf luma;
    const auto factor = hn::Set(Wide(), static_cast<std::int16_t>(level));
    throughRow(row, [&](WidePixels& p) HWY_ATTR {
        const auto gray = luma(p);
        const auto spread = [&](WideVector v) HWY_ATTR {
            const auto distance = hn::ShiftLeft<4>(hn::Sub(v, gray));
            return hn::Add(gray, hn::MulFixedPoint15(distance, factor));
        };
        p.r = spread(p.r);
        p.g = spread(p.g);
        p.b = spread(p.b);
    });
}

void threshold(const PixelRow& row, const LumaRange& range) {
    const LumaOf luma;
    const auto below = static_cast<std::int16_t>(std::clamp(range.low, 0, 256) - 1);
    const auto above = static_cast<std::int16_t>(std::clamp(range.high, -1, 255) + 1);
    throughRow(row, [&](WidePixels& p) HWY_ATTR {
        const Wide d;
        const auto cut = [&](WideVector v) HWY_ATTR {
            const auto inside = hn::And(hn::Gt(v, hn::Set(d, below)), hn::Lt(v, hn::Set(d, above)));
            return hn::IfThenElseZero(inside, hn::Set(d, 255));
        };
        p.r = p.g = p.b = cut(luma(p));
        if (range.cutsAlpha) p.a = cut(p.a);
    });
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(desaturate);
HWY_EXPORT(saturate);
HWY_EXPORT(threshold);

void desaturateRow(const PixelRow& row) {
    HWY_DYNAMIC_DISPATCH(desaturate)(row);
}

void saturateRow(const PixelRow& row, int level) {
    HWY_DYNAMIC_DISPATCH(saturate)(row, level);
}

void thresholdRow(const PixelRow& row, const LumaRange& range) {
    HWY_DYNAMIC_DISPATCH(threshold)(row, range);
}

} // namespace kvn::imaging
#endif
