// Plain loops as vector code: function clones, and four channels as one value.
#pragma once

#include <cstdint>
#include <cstring>

// KVN_VECTORS before a function: compiled a second time for processors with 256-bit vectors, the
// right one taken when the program starts. Sanitizers are not up yet when that choice is made.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) &&                             \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define KVN_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define KVN_VECTORS
#endif

namespace kvn::imaging {

// The channels of one pixel.
typedef std::uint32_t Four __attribute__((vector_size(16)));
typedef std::uint16_t FourShorts __attribute__((vector_size(8)));
typedef std::uint8_t FourBytes __attribute__((vector_size(4)));

inline __attribute__((always_inline)) Four loadFour(const std::uint16_t* from) {
    FourShorts shorts;
    std::memcpy(&shorts, from, sizeof shorts);
    return __builtin_convertvector(shorts, Four);
}

} // namespace kvn::imaging
