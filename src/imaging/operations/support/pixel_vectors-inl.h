// Pixels of a row as vectors, a channel each, and back: for files that are compiled once for every
// instruction set (to be included after hwy/highway.h). Knows nothing of what is done with them.
#if defined(KVN_PIXEL_VECTORS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KVN_PIXEL_VECTORS_INL
#undef KVN_PIXEL_VECTORS_INL
#else
#define KVN_PIXEL_VECTORS_INL
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/vbmi.h"

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// 512-bit vectors whose bytes can go anywhere: every other machine takes the common way.
#define KVN_BYTES_ANYWHERE (HWY_TARGET <= HWY_AVX3_DL)

// Channels of 16 bits with values 0..255; what is stored is clamped to that range.
using Wide = hn::ScalableTag<std::int16_t>;
using WideVector = hn::Vec<Wide>;

struct WidePixels {
    WideVector r, g, b, a;
};

#if KVN_BYTES_ANYWHERE

using vbmi::BytePlaces;

// Where the low bytes of a channel's 32 values lie in two vectors of pixels.
template <int channels, int channel>
constexpr BytePlaces channelPlaces() {
    BytePlaces places{};
    for (int pixel = 0; pixel < 32; ++pixel)
        places.at[pixel * 2] = static_cast<std::uint8_t>(pixel * channels + channel);
    return places;
}

// Where the bytes of the first or second vector of pixels lie in two vectors that hold red beside
// green, and blue beside alpha, in runs of eight.
template <int channels, int part>
constexpr BytePlaces pixelPlaces() {
    BytePlaces places{};
    for (int i = 0; i < 64; ++i) {
        const int pixel = (part * 64 + i) / channels % 32, channel = (part * 64 + i) % channels;
        places.at[i] = static_cast<std::uint8_t>(channel / 2 * 64 + pixel / 8 * 16 +
                                                 channel % 2 * 8 + pixel % 8);
    }
    return places;
}

template <int channels, int channel>
HWY_INLINE WideVector channelOf(__m512i first, __m512i second) {
    static constexpr BytePlaces places = channelPlaces<channels, channel>();
    constexpr __mmask64 lowBytes = 0x5555555555555555;
    return WideVector{
        _mm512_maskz_permutex2var_epi8(lowBytes, first, _mm512_load_si512(places.at), second)};
}

template <int channels, int part>
HWY_INLINE __m512i pixelBytes(__m512i redGreen, __m512i blueAlpha) {
    static constexpr BytePlaces places = pixelPlaces<channels, part>();
    return _mm512_permutex2var_epi8(redGreen, _mm512_load_si512(places.at), blueAlpha);
}

#endif

// `channels` is 1 (grey), 2 (grey, alpha), 3 or 4. Grey becomes r = g = b; a missing alpha 255.
template <int channels>
HWY_INLINE WidePixels loadPixels(const std::uint8_t* from) {
    const Wide d;
    const hn::Rebind<std::uint8_t, Wide> bytes;
    WidePixels p;
    p.a = hn::Set(d, 255);
    if constexpr (channels == 1) {
        p.r = p.g = p.b = hn::PromoteTo(d, hn::LoadU(bytes, from));
        return p;
    }
#if KVN_BYTES_ANYWHERE
    if constexpr (channels >= 3) {
        const __m512i first = _mm512_loadu_si512(from);
        const __m512i second = channels == 4 ? _mm512_loadu_si512(from + 64)
                                             : _mm512_castsi256_si512(_mm256_loadu_si256(
                                                   reinterpret_cast<const __m256i*>(from + 64)));
        p.r = channelOf<channels, 0>(first, second);
        p.g = channelOf<channels, 1>(first, second);
        p.b = channelOf<channels, 2>(first, second);
        if constexpr (channels == 4) p.a = channelOf<channels, 3>(first, second);
        return p;
    }
#endif
    hn::Vec<decltype(bytes)> r, g, b, a;
    if constexpr (channels == 2) {
        hn::LoadInterleaved2(bytes, from, r, a);
        g = b = r;
    } else if constexpr (channels == 3) {
        hn::LoadInterleaved3(bytes, from, r, g, b);
    } else if constexpr (channels == 4) {
        hn::LoadInterleaved4(bytes, from, r, g, b, a);
    }
    p.r = hn::PromoteTo(d, r);
    p.g = hn::PromoteTo(d, g);
    p.b = hn::PromoteTo(d, b);
    if constexpr (channels % 2 == 0) p.a = hn::PromoteTo(d, a);
    return p;
}

// Grey takes red.
template <int channels>
HWY_INLINE void storePixels(const WidePixels& p, std::uint8_t* to) {
    const hn::Rebind<std::uint8_t, Wide> bytes;
#if KVN_BYTES_ANYWHERE
    if constexpr (channels >= 3) {
        const __m512i redGreen = _mm512_packus_epi16(p.r.raw, p.g.raw);
        const __m512i blueAlpha = _mm512_packus_epi16(p.b.raw, channels == 4 ? p.a.raw : p.b.raw);
        const __m512i second = pixelBytes<channels, 1>(redGreen, blueAlpha);
        _mm512_storeu_si512(to, pixelBytes<channels, 0>(redGreen, blueAlpha));
        if constexpr (channels == 4)
            _mm512_storeu_si512(to + 64, second);
        else
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + 64),
                                _mm512_castsi512_si256(second));
        return;
    }
#endif
    const auto r = hn::DemoteTo(bytes, p.r);
    if constexpr (channels == 1) {
        hn::StoreU(r, bytes, to);
    } else if constexpr (channels == 2) {
        hn::StoreInterleaved2(r, hn::DemoteTo(bytes, p.a), bytes, to);
    } else if constexpr (channels == 3) {
        hn::StoreInterleaved3(r, hn::DemoteTo(bytes, p.g), hn::DemoteTo(bytes, p.b), bytes, to);
    } else {
        hn::StoreInterleaved4(r, hn::DemoteTo(bytes, p.g), hn::DemoteTo(bytes, p.b),
                              hn::DemoteTo(bytes, p.a), bytes, to);
    }
}

// Every pixel through `kernel(WidePixels&)`. The last pixels go through buffers, so that nothing
// beyond the rows is touched.
template <int inChannels, int outChannels, class Kernel>
HWY_INLINE void throughVectors(const PixelRow& row, const Kernel& kernel) {
    constexpr std::size_t most = hn::MaxLanes(Wide());
    const std::size_t lanes = hn::Lanes(Wide());
    auto count = static_cast<std::size_t>(std::max(row.count, 0));
    const std::uint8_t* in = row.in;
    std::uint8_t* out = row.out;
    for (; count >= lanes; count -= lanes, in += lanes * inChannels, out += lanes * outChannels) {
        WidePixels p = loadPixels<inChannels>(in);
        kernel(p);
        storePixels<outChannels>(p, out);
    }
    if (count == 0) return;
    count = std::min(count, most);
    std::uint8_t rest[most * inChannels] = {}, result[most * outChannels];
    std::memcpy(rest, in, count * inChannels);
    WidePixels p = loadPixels<inChannels>(rest);
    kernel(p);
    storePixels<outChannels>(p, result);
    std::memcpy(out, result, count * outChannels);
}

// The one luma of imaging/rgba.h: its factors are 256 times (76, 150, 29) and (139, 70, 47) more,
// and so the upper bytes of the sum come from two sums that fit into 16 bits. Compilers that know
// the factors make three or more shifts and sums of each product, hence the volatile ones.
class LumaOf {
    using D = hn::RebindToUnsigned<Wide>;

  public:
    HWY_INLINE LumaOf() {
        static const volatile std::uint16_t factors[] = {76, 150, 29, 139, 70, 47};
        for (int i = 0; i < 3; ++i) {
            high_[i] = hn::Set(D(), factors[i]);
            low_[i] = hn::Set(D(), factors[i + 3]);
        }
    }
    HWY_INLINE WideVector operator()(const WidePixels& p) const {
        const auto low = hn::ShiftRight<8>(sum(p, low_));
        const auto high = hn::Add(sum(p, high_), hn::Set(D(), 128));
        return hn::BitCast(Wide(), hn::ShiftRight<8>(hn::Add(high, low)));
    }

  private:
    HWY_INLINE static hn::Vec<D> sum(const WidePixels& p, const hn::Vec<D>* factors) {
        const auto red = hn::Mul(hn::BitCast(D(), p.r), factors[0]);
        const auto green = hn::Mul(hn::BitCast(D(), p.g), factors[1]);
        return hn::Add(hn::Add(red, green), hn::Mul(hn::BitCast(D(), p.b), factors[2]));
    }

    hn::Vec<D> high_[3], low_[3];
};

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif
