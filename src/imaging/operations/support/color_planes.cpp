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
void splitLoop(const std::uint8_t* pixels, int count, ColorPlanes& planes) {
    const int lanes = static_cast<int>(hn::Lanes(Bytes()));
    int x = 0;
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
void mergeLoop(const ColorPlanes& planes, int count, std::uint8_t* pixels) {
    const int lanes = static_cast<int>(hn::Lanes(Bytes()));
    int x = 0;
    for (; x + lanes <= count; x += lanes)
        mergeVector<channels>(planes, x, pixels + std::ptrdiff_t{x} * channels);
    if (x >= count) return;
    constexpr int most = static_cast<int>(hn::MaxLanes(Bytes()));
    const auto bytes = static_cast<std::size_t>(std::min(count - x, most)) * channels;
    std::uint8_t rest[most * channels];
    mergeVector<channels>(planes, x, rest);
    std::memcpy(pixels + std::ptrdiff_t{x} * channels, rest, bytes);
}

void split(int channels, const std::uint8_t* pixels, int count, ColorPlanes& planes) {
    switch (channels) {
    case 1:
        return splitLoop<1>(pixels, count, planes);
    case 2:
        return splitLoop<2>(pixels, count, planes);
    case 3:
        return splitLoop<3>(pixels, count, planes);
    default:
        return splitLoop<4>(pixels, count, planes);
    }
}

void merge(const ColorPlanes& planes, int count, int channels, std::uint8_t* pixels) {
    switch (channels) {
    case 1:
        return mergeLoop<1>(planes, count, pixels);
    case 2:
        return mergeLoop<2>(planes, count, pixels);
    case 3:
        return mergeLoop<3>(planes, count, pixels);
    default:
        return mergeLoop<4>(planes, count, pixels);
    }
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include "imaging/convert.h"

namespace kvn::imaging {

HWY_EXPORT(split);
HWY_EXPORT(merge);

void splitPlanes(ImageType type, const std::uint8_t* pixels, int count, ColorPlanes& planes) {
    HWY_DYNAMIC_DISPATCH(split)(bytesPerPixel(type), pixels, count, planes);
}

void mergePlanes(const ColorPlanes& planes, int count, ImageType type, std::uint8_t* pixels) {
    HWY_DYNAMIC_DISPATCH(merge)(planes, count, bytesPerPixel(type), pixels);
}

namespace {

ImageType resultType(ImageType from, PlaneResult form) {
    using enum PlaneResult;
    const bool adds = form == WithAlpha || form == ColorWithAlpha;
    const bool drops = form == WithoutAlpha || form == ColorWithoutAlpha;
    const bool alpha = adds || (hasAlpha(from) && !drops);
    if (from == ImageType::Bit1 && !alpha) return from;
    if (hasPalette(from)) return alpha ? ImageType::Indexed8Alpha : ImageType::Indexed8;
    const bool colors = form == Color || form == ColorWithAlpha || form == ColorWithoutAlpha;
    const bool gray = from == ImageType::Gray8 || from == ImageType::GrayAlpha16;
    if (gray && !colors) return alpha ? ImageType::GrayAlpha16 : ImageType::Gray8;
    return alpha ? ImageType::Rgba32 : ImageType::Rgb24;
}

Raster mapPalette(const Raster& source, ImageType to, Task& task, const PlaneKernel& kernel) {
    Palette palette = source.palette();
    if (source.type() == ImageType::Bit1 && palette.isEmpty()) palette = Palette::blackAndWhite();
    ColorPlanes planes = {};
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const Rgba c = palette[i];
        planes.r[i] = c.r;
        planes.g[i] = c.g;
        planes.b[i] = c.b;
        planes.a[i] = hasAlpha(source.type()) ? c.a : 255;
    }
    kernel(planes);
    for (std::size_t i = 0; i < palette.size(); ++i)
        palette.set(i, {planes.r[i], planes.g[i], planes.b[i],
                        hasAlpha(to) ? planes.a[i] : std::uint8_t{255}});
    Raster result = source;
    if (source.type() == ImageType::Bit1) {
        result = convertType(source, to, task);
    } else if (to != source.type()) {
        // The bytes of both indexed types are the same.
        result = Raster::uninitialized(to, source.width(), source.height());
        const View out = result.edit();
        for (int y = 0; y < source.height(); ++y)
            std::memcpy(out.row(y), source.view().row(y), source.rowBytes());
    }
    result.setPalette(std::move(palette));
    return result;
}

} // namespace

Raster mapPlanes(const Raster& source, PlaneResult form, Task& task, const PlaneKernel& kernel) {
    const ImageType to = resultType(source.type(), form);
    if (hasPalette(source.type())) return mapPalette(source, to, task, kernel);
    Raster result = Raster::uninitialized(to, source.width(), source.height());
    const ConstView in = source.view();
    const View out = result.edit();
    const std::ptrdiff_t inStep = bytesPerPixel(in.type), outStep = bytesPerPixel(to);
    parallelRows(in.height, task, [&](int y0, int y1) {
        ColorPlanes planes = {};
        for (int y = y0; y < y1; ++y)
            for (int x = 0; x < in.width; x += ColorPlanes::size) {
                const int count = std::min(ColorPlanes::size, in.width - x);
                splitPlanes(in.type, in.row(y) + x * inStep, count, planes);
                kernel(planes);
                mergePlanes(planes, count, to, out.row(y) + x * outStep);
            }
    });
    return result;
}

} // namespace kvn::imaging
#endif
