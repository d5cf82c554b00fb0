#include "imaging/operations/support/luma_planes.h"

#include <cstring>

#include "imaging/operations/support/simd.h"

namespace kvn::imaging {

// In 16 bits, as in support/pixel_vectors-inl.h. Through a buffer of its own: a loop that may write
// to what it reads is no vector code.
KVN_CLONES void lumaOf(const ColorPlanes& planes, std::uint8_t* out) {
    alignas(64) std::uint8_t gray[ColorPlanes::size];
    static const volatile std::uint16_t factors[] = {76, 150, 29, 139, 70, 47};
    const std::uint16_t r1 = factors[0], g1 = factors[1], b1 = factors[2];
    const std::uint16_t r0 = factors[3], g0 = factors[4], b0 = factors[5];
    for (int i = 0; i < ColorPlanes::size; ++i) {
        const std::uint16_t r = planes.r[i], g = planes.g[i], b = planes.b[i];
        const auto low = static_cast<std::uint16_t>(r * r0 + g * g0 + b * b0);
        const auto sum = static_cast<std::uint16_t>(r * r1 + g * g1 + b * b1 + 128 + (low >> 8));
        gray[i] = static_cast<std::uint8_t>(sum >> 8);
    }
    std::memcpy(out, gray, sizeof gray);
}

} // namespace kvn::imaging
