#include "imaging/operations/texture/noise_kernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/texture/noise_kernels.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

// A plain loop that the compiler turns into vector code for each of the instruction sets.
HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

HWY_INLINE std::uint32_t mixed(std::uint32_t x) {
    x ^= x >> 16;
    x *= 0x7feb352dU;
    x ^= x >> 15;
    x *= 0x846ca68bU;
    return x ^ x >> 16;
}

void random(std::uint32_t seed, std::uint32_t row, std::uint16_t* HWY_RESTRICT out,
            std::size_t count) {
    const std::uint32_t start = mixed(seed ^ mixed(row + 0x9e3779b9U));
    for (std::size_t i = 0; i < count; ++i)
        out[i] = static_cast<std::uint16_t>(mixed(start + static_cast<std::uint32_t>(i)) >> 16);
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(random);

void randomRow(std::uint32_t seed, std::uint32_t row, std::uint16_t* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(random)(seed, row, out, count);
}

} // namespace kvn::imaging
#endif
