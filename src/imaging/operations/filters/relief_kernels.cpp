#include "imaging/operations/filters/relief_kernels.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/filters/relief_kernels.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Reals = hn::ScalableTag<float>;

HWY_INLINE hn::Vec<Reals> realAt(const std::uint8_t* from) {
    const Reals d;
    const hn::RebindToSigned<Reals> whole;
    const hn::Rebind<std::uint8_t, Reals> bytes;
    return hn::ConvertTo(d, hn::PromoteTo(whole, hn::LoadU(bytes, from)));
}

// The rows have room to read whole vectors behind their ends, and so has `shade` to write.
void shade(const std::uint8_t* above, const std::uint8_t* middle, const std::uint8_t* below,
           int reach, const Light& light, float flat, float* out, std::size_t count) {
    const Reals d;
    const auto s = static_cast<std::size_t>(reach);
    const auto z = hn::Set(d, flat), square = hn::Set(d, flat * flat);
    for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
        // The ground falls away where the next height is less, so the normal leans that way.
        const auto x = hn::Sub(realAt(middle + i), realAt(middle + i + 2 * s));
        const auto y = hn::Sub(realAt(below + i + s), realAt(above + i + s));
        const auto length = hn::Sqrt(hn::MulAdd(x, x, hn::MulAdd(y, y, square)));
        auto dot = hn::Mul(x, hn::Set(d, light.x));
        dot = hn::MulAdd(y, hn::Set(d, light.y), dot);
        dot = hn::MulAdd(z, hn::Set(d, light.z), dot);
        const auto lit = hn::Div(hn::Mul(dot, hn::Set(d, 255.0f)), length);
        hn::StoreU(hn::Max(lit, hn::Zero(d)), d, out + i);
    }
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(shade);

void shadeRow(const std::uint8_t* above, const std::uint8_t* middle, const std::uint8_t* below,
              int reach, const Light& light, float flat, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(shade)(above, middle, below, reach, light, flat, out, count);
}

} // namespace kvn::imaging
#endif
