#include "imaging/operations/support/color_planes.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/support/color_planes.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Bytes = hn::ScalableTag<std::uint8_t>;

// One vector of pixels into the planes, from pixel x on.
template <int channels>
HWY_INLINE void splitVector(const std::uint8_t* from, ColorPlanes& to, int x) {
    const Bytes d;
    hn::Vec<Bytes> r, g, b, a = hn::Set(d, 255);
    if constexpr (channels == 1) {
        r = g = b = hn::LoadU(d, from);
    } else if constexpr (channels == 2) {
        hn::LoadInterleaved2(d, from, r, a);
        g = b = r;
    } else if constexpr (channels == 3) {
        hn::LoadInterleaved3(d, from, r, g, b);
    } else {
        hn::LoadInterleaved4(d, from, r, g, b, a);
    }
    hn::StoreU(r, d, to.r + x);
    hn::StoreU(g, d, to.g + x);
    hn::StoreU(b, d, to.b + x);
    hn::StoreU(a, d, to.a + x);
}

template <int channels>
HWY_INLINE void mergeVector(const ColorPlanes& from, int x, std::uint8_t* to) {
    const Bytes d;
    const auto r = hn::LoadU(d, from.r + x), g = hn::LoadU(d, from.g + x);
    const auto b = hn::LoadU(d, from.b + x), a = hn::LoadU(d, from.a + x);
    if constexpr (channels == 1)
        hn::StoreU(r, d, to);
    else if constexpr (channels == 2)
        hn::StoreInterleaved2(r, a, d, to);
    else if constexpr (channels == 3)
        hn::StoreInterleaved3(r, g, b, d, to);
    else
        hn::StoreInterleaved4(r, g, b, a, d, to);
}

// The last pixels of a row go through a buffer of a whole vector, so that nothing beyond the row
// is touched.
template <int channels>
void splitLoop(const std::uint8_t* pixels, int x, int count, ColorPlanes& planes) {
    const int lanes = static_cast<int>(hn::Lanes(Bytes()));
    for (; x + lanes <= count; x += lanes)
        splitVector<channels>(pixels + std::ptrdiff_t{x} * channels, planes, x);
    if (x >= count) return;
    constexpr int most = static_cast<int>(hn::MaxLanes(Bytes()));
    const auto bytes = static_cast<std::size_t>(std::min(count - x, most)) * channels;
    std::uint8_t rest[most * channels] = {};
    std::memcpy(rest, pixels + std::ptrdiff_t{x} * channels, bytes);
    splitVector<channels>(rest, planes, x);
}

template <int channels>
void mergeLoop(const ColorPlanes& planes, int x, int count, std::uint8_t* pixels) {
    const int lanes = static_cast<int>(hn::Lanes(Bytes()));
    for (; x + lanes <= count; x += lanes)
        mergeVector<channels>(planes, x, pixels + std::ptrdiff_t{x} * channels);
    if (x >= count) return;
    constexpr int most = static_cast<int>(hn::MaxLanes(Bytes()));
    const auto bytes = static_cast<std::size_t>(std::min(count - x, most)) * channels;
    std::uint8_t rest[most * channels];
    mergeVector<channels>(planes, x, rest);
    std::memcpy(pixels + std::ptrdiff_t{x} * channels, rest, bytes);
}

// From pixel x on.
void splitFrom(int channels, const std::uint8_t* pixels, int x, int count, ColorPlanes& planes) {
    switch (channels) {
    case 1:
        return splitLoop<1>(pixels, x, count, planes);
    case 2:
        return splitLoop<2>(pixels, x, count, planes);
    case 3:
        return splitLoop<3>(pixels, x, count, planes);
    default:
        return splitLoop<4>(pixels, x, count, planes);
    }
}

void mergeFrom(const ColorPlanes& planes, int x, int count, int channels, std::uint8_t* pixels) {
    switch (channels) {
    case 1:
        return mergeLoop<1>(planes, x, count, pixels);
    case 2:
        return mergeLoop<2>(planes, x, count, pixels);
    case 3:
        return mergeLoop<3>(planes, x, count, pixels);
    default:
        return mergeLoop<4>(planes, x, count, pixels);
    }
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include "imaging/operations/support/vbmi.h"

namespace kvn::imaging {

HWY_EXPORT(splitFrom);
HWY_EXPORT(mergeFrom);

namespace {

#if defined(KVN_HAS_VBMI_CODE)

// These do whole vectors of 64 pixels and give their number.
template <int channels>
KVN_VBMI int splitVbmi(const std::uint8_t* pixels, int count, ColorPlanes& planes) {
    int x = 0;
    for (; x + 64 <= count; x += 64) {
        __m512i v[4];
        vbmi::split<channels>(pixels + std::ptrdiff_t{x} * channels, v);
        _mm512_store_si512(planes.r + x, v[0]);
        _mm512_store_si512(planes.g + x, v[1]);
        _mm512_store_si512(planes.b + x, v[2]);
        _mm512_store_si512(planes.a + x, v[3]);
    }
    return x;
}

template <int channels>
KVN_VBMI int mergeVbmi(const ColorPlanes& planes, int count, std::uint8_t* pixels) {
    int x = 0;
    for (; x + 64 <= count; x += 64) {
        const __m512i v[4] = {_mm512_load_si512(planes.r + x), _mm512_load_si512(planes.g + x),
                              _mm512_load_si512(planes.b + x), _mm512_load_si512(planes.a + x)};
        vbmi::merge<channels>(v, pixels + std::ptrdiff_t{x} * channels);
    }
    return x;
}

bool usesVbmi(int channels) {
    return channels >= 3 && vbmi::hasVbmi();
}

#endif

void split(int channels, const std::uint8_t* pixels, int count, ColorPlanes& planes) {
    int done = 0;
#if defined(KVN_HAS_VBMI_CODE)
    if (usesVbmi(channels))
        done = channels == 3 ? splitVbmi<3>(pixels, count, planes)
                             : splitVbmi<4>(pixels, count, planes);
#endif
    if (done < count) HWY_DYNAMIC_DISPATCH(splitFrom)(channels, pixels, done, count, planes);
}

void merge(const ColorPlanes& planes, int count, int channels, std::uint8_t* pixels) {
    int done = 0;
#if defined(KVN_HAS_VBMI_CODE)
    if (usesVbmi(channels))
        done = channels == 3 ? mergeVbmi<3>(planes, count, pixels)
                             : mergeVbmi<4>(planes, count, pixels);
#endif
    if (done < count) HWY_DYNAMIC_DISPATCH(mergeFrom)(planes, done, count, channels, pixels);
}

} // namespace

void fetchAhead(const std::uint8_t* in, std::size_t inBytes, const std::uint8_t* out,
                std::size_t outBytes) {
    for (std::size_t i = 0; i < inBytes; i += 64)
        __builtin_prefetch(in + i);
    for (std::size_t i = 0; i < outBytes; i += 64)
        __builtin_prefetch(out + i, 1);
}

void splitPlanes(ImageType type, const std::uint8_t* pixels, int count, ColorPlanes& planes) {
    split(bytesPerPixel(type), pixels, count, planes);
}

void mergePlanes(const ColorPlanes& planes, int count, ImageType type, std::uint8_t* pixels) {
    merge(planes, count, bytesPerPixel(type), pixels);
}

Raster mapPlanes(const Raster& source, ResultForm form, Task& task, const PlaneKernel& kernel) {
    return mapRows(source, form, task, [&](const PixelRow& row) {
        ColorPlanes planes = {};
        for (int x = 0; x < row.count; x += ColorPlanes::size) {
            const int count = std::min(ColorPlanes::size, row.count - x);
            const auto at = static_cast<std::size_t>(x), pixels = static_cast<std::size_t>(count);
            const auto inStep = static_cast<std::size_t>(row.inChannels);
            const auto outStep = static_cast<std::size_t>(row.outChannels);
            const std::uint8_t* in = row.in + at * inStep;
            std::uint8_t* out = row.out + at * outStep;
            split(row.inChannels, in, count, planes);
            fetchAhead(in + pixels * inStep, pixels * inStep, out, pixels * outStep);
            kernel(planes);
            merge(planes, count, row.outChannels, out);
        }
    });
}

} // namespace kvn::imaging
#endif
