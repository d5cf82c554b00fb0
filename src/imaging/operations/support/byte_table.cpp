#include "imaging/operations/support/byte_table.h"

#if defined(__aarch64__)
#include <arm_neon.h>
#endif

#include "imaging/operations/support/vbmi.h"

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

#if defined(KVN_HAS_VBMI_CODE)

KVN_VBMI void lookUpVbmi(const std::uint8_t* in, std::uint8_t* out, std::size_t count,
                         const ByteTable& table) {
    const vbmi::TableRegisters r = vbmi::load(table);
    std::size_t i = 0;
    for (; i + 64 <= count; i += 64)
        _mm512_storeu_si512(out + i, vbmi::lookUp(_mm512_loadu_si512(in + i), r));
    if (i < count) {
        const __mmask64 rest = (~__mmask64{0}) >> (64 - (count - i));
        const __m512i v = _mm512_maskz_loadu_epi8(rest, in + i);
        _mm512_mask_storeu_epi8(out + i, rest, vbmi::lookUp(v, r));
    }
}

// Two channels, or four of which the first three share a table: both tables for every vector.
KVN_VBMI std::size_t lookUpInTurn(const std::uint8_t* in, std::uint8_t* out, std::size_t count,
                                  const ByteTable& first, const ByteTable& second,
                                  __mmask64 isSecond) {
    const vbmi::TableRegisters a = vbmi::load(first), b = vbmi::load(second);
    std::size_t i = 0;
    for (; i + 64 <= count; i += 64) {
        const __m512i v = _mm512_loadu_si512(in + i);
        _mm512_storeu_si512(out + i,
                            _mm512_mask_mov_epi8(vbmi::lookUp(v, a), isSecond, vbmi::lookUp(v, b)));
    }
    return i;
}

// The channels sorted apart, so that each goes through its own table alone.
template <int channels>
KVN_VBMI std::size_t lookUpApart(const std::uint8_t* in, std::uint8_t* out, std::size_t count,
                                 const ByteTable* const* tables) {
    vbmi::TableRegisters r[channels];
    for (int c = 0; c < channels; ++c)
        r[c] = vbmi::load(*tables[c]);
    constexpr std::size_t block = std::size_t{64} * channels;
    std::size_t i = 0;
    for (; i + block <= count; i += block) {
        __m512i planes[4];
        vbmi::split<channels>(in + i, planes);
        for (int c = 0; c < channels; ++c)
            planes[c] = vbmi::lookUp(planes[c], r[c]);
        vbmi::merge<channels>(planes, out + i);
    }
    return i;
}

// Gives the number of bytes done.
std::size_t lookUpChannelsVbmi(const std::uint8_t* in, std::uint8_t* out, std::size_t count,
                               const ByteTable* const* tables, int channels) {
    if (channels == 2)
        return lookUpInTurn(in, out, count, *tables[0], *tables[1], 0xaaaaaaaaaaaaaaaa);
    if (channels == 3) return lookUpApart<3>(in, out, count, tables);
    if (*tables[0] == *tables[1] && *tables[1] == *tables[2])
        return lookUpInTurn(in, out, count, *tables[0], *tables[3], 0x8888888888888888);
    return lookUpApart<4>(in, out, count, tables);
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
#if defined(KVN_HAS_VBMI_CODE)
    if (vbmi::hasVbmi()) return lookUpVbmi(in, out, count, table);
#elif defined(__aarch64__)
    return lookUpNeon(in, out, count, table);
#endif
    lookUpPlain(in, out, count, table);
}

void lookUpChannels(const std::uint8_t* in, std::uint8_t* out, std::size_t pixels,
                    const ByteTable* const* tables, int channels) {
    std::size_t done = 0;
#if defined(KVN_HAS_VBMI_CODE)
    if (vbmi::hasVbmi())
        done = lookUpChannelsVbmi(in, out, pixels * static_cast<std::size_t>(channels), tables,
                                  channels);
#endif
    lookUpChannelsPlain(in + done, out + done, pixels - done / static_cast<std::size_t>(channels),
                        tables, channels);
}

} // namespace kvn::imaging
