#include "imaging/operations/support/luma_planes.h"

#include <cstring>

#include "imaging/operations/support/simd.h"

namespace kvn::imaging {

// Through a buffer of its own: a loop that may write to what it reads is no vector code.
KVN_CLONES void lumaOf(const ColorPlanes& planes, std::uint8_t* out) {
    alignas(64) std::uint8_t gray[ColorPlanes::size];
    for (int i = 0; i < ColorPlanes::size; ++i)
        gray[i] = luma(planes.r[i], planes.g[i], planes.b[i]);
    std::memcpy(out, gray, sizeof gray);
}

} // namespace kvn::imaging
