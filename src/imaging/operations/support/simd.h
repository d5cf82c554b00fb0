// Plain loops as vector code, chosen when the program starts.
#pragma once

// KVN_CLONES before a function: compiled once for every machine and again for processors with
// 256-bit and 512-bit vectors. What it calls must be inline. Sanitizers are not up yet when the
// choice is made.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) &&                             \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define KVN_CLONES __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define KVN_CLONES
#endif

#include <bit>
#include <cstdint>

namespace kvn::imaging {

// 1 / sqrt(x) for normal x above 0, within 5e-6 of it: a first guess from the exponent and two
// steps of Newton's. The library's root reports errors, which keeps loops from becoming vector
// code.
inline float inverseRoot(float x) {
    const float half = 0.5f * x;
    float y = std::bit_cast<float>(0x5f375a86 - (std::bit_cast<std::int32_t>(x) >> 1));
    y *= 1.5f - half * y * y;
    return y * (1.5f - half * y * y);
}

} // namespace kvn::imaging
