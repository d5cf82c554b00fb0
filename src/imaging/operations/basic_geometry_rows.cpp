#include "imaging/operations/basic_geometry_rows.h"

#include <cstddef>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/basic_geometry_rows.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR || HWY_HAVE_SCALABLE

// Vectors of one byte, or of a length not known here: no reversal of a vector.
template <int step>
int reverseVectors(const std::uint8_t*, std::uint8_t*, int) {
    return 0;
}

#else

using Bytes = hn::ScalableTag<std::uint8_t>;
using ByteVector = hn::Vec<Bytes>;

HWY_INLINE ByteVector reversed(ByteVector v) {
    alignas(16) static constexpr std::uint8_t order[16] = {15, 14, 13, 12, 11, 10, 9, 8,
                                                           7,  6,  5,  4,  3,  2,  1, 0};
    const Bytes d;
    return hn::ReverseBlocks(d, hn::TableLookupBytes(v, hn::LoadDup128(d, order)));
}

template <int step>
HWY_INLINE void reverseVector(const std::uint8_t* from, std::uint8_t* to) {
    const Bytes d;
    ByteVector a, b, c, e;
    if constexpr (step == 1) {
        hn::StoreU(reversed(hn::LoadU(d, from)), d, to);
    } else if constexpr (step == 2) {
        hn::LoadInterleaved2(d, from, a, b);
        hn::StoreInterleaved2(reversed(a), reversed(b), d, to);
    } else if constexpr (step == 3) {
        hn::LoadInterleaved3(d, from, a, b, c);
        hn::StoreInterleaved3(reversed(a), reversed(b), reversed(c), d, to);
    } else {
        hn::LoadInterleaved4(d, from, a, b, c, e);
        hn::StoreInterleaved4(reversed(a), reversed(b), reversed(c), reversed(e), d, to);
    }
}

// Gives the number of pixels done.
template <int step>
int reverseVectors(const std::uint8_t* from, std::uint8_t* to, int width) {
    const int lanes = static_cast<int>(hn::Lanes(Bytes()));
    int x = 0;
    for (; x + lanes <= width; x += lanes)
        reverseVector<step>(from + std::ptrdiff_t{x} * step,
                            to + std::ptrdiff_t{width - x - lanes} * step);
    return x;
}

#endif

template <int step>
void reverseRow(const std::uint8_t* from, std::uint8_t* to, int width) {
    for (int x = reverseVectors<step>(from, to, width); x < width; ++x)
        std::memcpy(to + std::ptrdiff_t{width - 1 - x} * step, from + std::ptrdiff_t{x} * step,
                    step);
}

void reverseAny(const std::uint8_t* from, std::uint8_t* to, int width, int step) {
    switch (step) {
    case 1:
        reverseRow<1>(from, to, width);
        break;
    case 2:
        reverseRow<2>(from, to, width);
        break;
    case 3:
        reverseRow<3>(from, to, width);
        break;
    default:
        reverseRow<4>(from, to, width);
        break;
    }
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(reverseAny);

void reversePixels(const std::uint8_t* from, std::uint8_t* to, int width, int step) {
    HWY_DYNAMIC_DISPATCH(reverseAny)(from, to, width, step);
}

} // namespace kvn::imaging
#endif
