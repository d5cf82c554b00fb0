#include "imaging/operations/support/byte_table.h"

#include <algorithm>

#if defined(__x86_64__)
#include <immintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace kvn::imaging {
namespace {

void lookUpPlain(const std::uint8_t* in, std::uint8_t* out, std::size_t count,
                 const ByteTable& table) {
    for (std::size_t i = 0; i < count; ++i)
        out[i] = table[in[i]];
}

void lookUpChannelsPlain(const std::uint8_t* in, std::uint8_t* out, std::size_t pixels,
                         const ByteTable* const* tables, int channels) {
    for (std::size_t i = 0; i < pixels; ++i)
        for (int c = 0; c < channels; ++c, ++in, ++out)
            *out = (*tables[c])[*in];
}

#if defined(__x86_64__)

#define KVN_VBMI __attribute__((target("avx512f,avx512bw,avx512vbmi")))

// A table of 256 bytes in four registers: two lookups of 128 entries, chosen by the top bit.
struct Registers {
    __m512i part[4];
};

KVN_VBMI inline Registers load(const ByteTable& table) {
    Registers r;
    for (int i = 0; i < 4; ++i)
        r.part[i] = _mm512_loadu_si512(table.data() + i * 64);
    return r;
}

KVN_VBMI inline __m512i lookUp64(__m512i v, const Registers& r) {
    const __m512i low = _mm512_permutex2var_epi8(r.part[0], v, r.part[1]);
    const __m512i high = _mm512_permutex2var_epi8(r.part[2], v, r.part[3]);
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(v), low, high);
}

KVN_VBMI void lookUpVbmi(const std::uint8_t* in, std::uint8_t* out, std::size_t count,
                         const ByteTable& table) {
    const Registers r = load(table);
    std::size_t i = 0;
    for (; i + 64 <= count; i += 64)
        _mm512_storeu_si512(out + i, lookUp64(_mm512_loadu_si512(in + i), r));
    if (i < count) {
        const __mmask64 rest = (~__mmask64{0}) >> (64 - (count - i));
        const __m512i v = _mm512_maskz_loadu_epi8(rest, in + i);
        _mm512_mask_storeu_epi8(out + i, rest, lookUp64(v, r));
    }
}

// A block of `channels` vectors begins at channel 0, so the lanes of each channel are known.
KVN_VBMI void lookUpChannelsVbmi(const std::uint8_t* in, std::uint8_t* out, std::size_t pixels,
                                 const ByteTable* const* tables, int channels) {
    Registers r[4];
    __mmask64 lanes[4][4] = {};
    for (int c = 0; c < channels; ++c)
        r[c] = load(*tables[c]);
    for (int i = 0; i < channels * 64; ++i)
        lanes[i / 64][i % channels] |= __mmask64{1} << (i % 64);
    const auto block = static_cast<std::size_t>(channels) * 64;
    const std::size_t count = pixels * static_cast<std::size_t>(channels);
    std::size_t i = 0;
    for (; i + block <= count; i += block)
        for (int k = 0; k < channels; ++k) {
            const __m512i v = _mm512_loadu_si512(in + i + k * 64);
            __m512i result = lookUp64(v, r[0]);
            for (int c = 1; c < channels; ++c)
                result = _mm512_mask_blend_epi8(lanes[k][c], result, lookUp64(v, r[c]));
            _mm512_storeu_si512(out + i + k * 64, result);
        }
    lookUpChannelsPlain(in + i, out + i, (count - i) / static_cast<std::size_t>(channels), tables,
                        channels);
}

bool hasVbmi() {
    static const bool has =
        __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512bw");
    return has;
}

#elif defined(__aarch64__)

void lookUpNeon(const std::uint8_t* in, std::uint8_t* out, std::size_t count,
                const ByteTable& table) {
    uint8x16x4_t part[4];
    for (int i = 0; i < 4; ++i)
        part[i] = vld1q_u8_x4(table.data() + i * 64);
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        const uint8x16_t v = vld1q_u8(in + i);
        uint8x16_t result = vqtbl4q_u8(part[0], v);
        for (int k = 1; k < 4; ++k)
            result = vqtbx4q_u8(result, part[k],
                                vsubq_u8(v, vdupq_n_u8(static_cast<std::uint8_t>(k * 64))));
        vst1q_u8(out + i, result);
    }
    lookUpPlain(in + i, out + i, count - i, table);
}

#endif

} // namespace

ByteTable identityTable() {
    ByteTable table;
    for (int i = 0; i < 256; ++i)
        table[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(i);
    return table;
}

void lookUp(const std::uint8_t* in, std::uint8_t* out, std::size_t count, const ByteTable& table) {
#if defined(__x86_64__)
    if (hasVbmi()) return lookUpVbmi(in, out, count, table);
#elif defined(__aarch64__)
    return lookUpNeon(in, out, count, table);
#endif
    lookUpPlain(in, out, count, table);
}

void lookUpChannels(const std::uint8_t* in, std::uint8_t* out, std::size_t pixels,
                    const ByteTable* const* tables, int channels) {
#if defined(__x86_64__)
    if (hasVbmi()) return lookUpChannelsVbmi(in, out, pixels, tables, channels);
#endif
    lookUpChannelsPlain(in, out, pixels, tables, channels);
}

} // namespace kvn::imaging
