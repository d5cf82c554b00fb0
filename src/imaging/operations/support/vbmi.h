// Moving and replacing bytes in 512-bit vectors, for x86 processors whose byte permutations reach
// over two whole vectors. Functions marked KVN_VBMI may run only where hasVbmi() says so.
#pragma once

namespace kvn::imaging::vbmi {

// Goes with Highway's choice of instructions, which tests can restrict.
bool hasVbmi();

} // namespace kvn::imaging::vbmi

#if defined(__x86_64__)
#define KVN_HAS_VBMI_CODE 1

#include <cstdint>

// gcc 12 takes the undefined parts of vectors in its own header for mistakes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#pragma GCC diagnostic pop

#include "imaging/operations/support/byte_table.h"

#define KVN_VBMI __attribute__((target("avx512f,avx512bw,avx512vbmi")))
#define KVN_VBMI_INLINE KVN_VBMI __attribute__((always_inline)) inline

namespace kvn::imaging::vbmi {

struct alignas(64) BytePlaces {
    std::uint8_t at[64];
};

// Where each byte of a vector comes from: one of the first two of four vectors, or, where the mask
// says so, one of the last two.
struct BytePlan {
    BytePlaces early, late;
    std::uint64_t isLate = 0;

    constexpr void take(int to, int vector, int at) {
        (vector < 2 ? early : late).at[to] = static_cast<std::uint8_t>(vector % 2 * 64 + at);
        isLate |= std::uint64_t{vector >= 2} << to;
    }
};

// One channel of 64 pixels out of the vectors they lie in.
constexpr BytePlan splitPlan(int channels, int channel) {
    BytePlan plan{};
    for (int i = 0; i < 64; ++i)
        plan.take(i, (i * channels + channel) / 64, (i * channels + channel) % 64);
    return plan;
}

// One vector of pixels out of the vectors of the channels.
constexpr BytePlan mergePlan(int channels, int part) {
    BytePlan plan{};
    for (int i = 0; i < 64; ++i)
        plan.take(i, (part * 64 + i) % channels, (part * 64 + i) / channels);
    return plan;
}

KVN_VBMI_INLINE __m512i gather(const BytePlan& plan, const __m512i (&v)[4]) {
    const __m512i early = _mm512_permutex2var_epi8(v[0], _mm512_load_si512(plan.early.at), v[1]);
    const __m512i late = _mm512_permutex2var_epi8(v[2], _mm512_load_si512(plan.late.at), v[3]);
    return _mm512_mask_mov_epi8(early, plan.isLate, late);
}

// 64 pixels of 3 or 4 bytes as vectors of their channels; a missing alpha is 255.
template <int channels>
KVN_VBMI_INLINE void split(const std::uint8_t* from, __m512i (&planes)[4]) {
    static constexpr BytePlan plans[] = {splitPlan(channels, 0), splitPlan(channels, 1),
                                         splitPlan(channels, 2), splitPlan(channels, channels - 1)};
    const __m512i pixels[4] = {_mm512_loadu_si512(from), _mm512_loadu_si512(from + 64),
                               _mm512_loadu_si512(from + 128),
                               _mm512_loadu_si512(from + (channels - 1) * 64)};
    planes[0] = gather(plans[0], pixels);
    planes[1] = gather(plans[1], pixels);
    planes[2] = gather(plans[2], pixels);
    planes[3] = channels == 4 ? gather(plans[3], pixels) : _mm512_set1_epi8(-1);
}

template <int channels>
KVN_VBMI_INLINE void merge(const __m512i (&planes)[4], std::uint8_t* to) {
    static constexpr BytePlan plans[] = {mergePlan(channels, 0), mergePlan(channels, 1),
                                         mergePlan(channels, 2), mergePlan(channels, channels - 1)};
    _mm512_storeu_si512(to, gather(plans[0], planes));
    _mm512_storeu_si512(to + 64, gather(plans[1], planes));
    _mm512_storeu_si512(to + 128, gather(plans[2], planes));
    if constexpr (channels == 4) _mm512_storeu_si512(to + 192, gather(plans[3], planes));
}

// A table of 256 bytes in four registers: two lookups of 128 entries, chosen by the top bit.
struct TableRegisters {
    __m512i part[4];
};

KVN_VBMI_INLINE TableRegisters load(const ByteTable& table) {
    TableRegisters r;
    for (int i = 0; i < 4; ++i)
        r.part[i] = _mm512_loadu_si512(table.data() + i * 64);
    return r;
}

KVN_VBMI_INLINE __m512i lookUp(__m512i v, const TableRegisters& r) {
    const __m512i low = _mm512_permutex2var_epi8(r.part[0], v, r.part[1]);
    const __m512i high = _mm512_permutex2var_epi8(r.part[2], v, r.part[3]);
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(v), low, high);
}

} // namespace kvn::imaging::vbmi
#endif
