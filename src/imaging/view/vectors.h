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

// The channels of one pixel. The shuffles are spelled out because the compiler turns plain
// conversions between these sizes into single steps.
typedef std::uint32_t Four __attribute__((vector_size(16)));
typedef std::uint16_t EightShorts __attribute__((vector_size(16)));
typedef std::uint8_t SixteenBytes __attribute__((vector_size(16)));

inline __attribute__((always_inline)) Four loadFour(const std::uint16_t* from) {
    EightShorts shorts = {};
    std::memcpy(&shorts, from, 8);
    return (Four)__builtin_shufflevector(shorts, EightShorts{}, 0, 8, 1, 9, 2, 10, 3, 11);
}

// Each channel below 256: one byte each, the first in the lowest.
inline __attribute__((always_inline)) std::uint32_t packFour(Four channels) {
    const auto wide = (SixteenBytes)channels;
    const auto bytes =
        __builtin_shufflevector(wide, wide, 0, 4, 8, 12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    std::uint32_t packed;
    std::memcpy(&packed, &bytes, 4);
    return packed;
}

} // namespace kvn::imaging
