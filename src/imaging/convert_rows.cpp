#include "imaging/convert_rows.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/convert_rows.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Bytes = hn::ScalableTag<std::uint8_t>;
using ByteVector = hn::Vec<Bytes>;

struct Pixels {
    ByteVector r, g, b, a;
};

template <ImageType type>
HWY_INLINE Pixels load(const std::uint8_t* from) {
    const Bytes d;
    Pixels p;
    p.a = hn::Set(d, 255);
    if constexpr (type == ImageType::Gray8) {
        p.r = hn::LoadU(d, from);
    } else if constexpr (type == ImageType::GrayAlpha16) {
        hn::LoadInterleaved2(d, from, p.r, p.a);
    } else if constexpr (type == ImageType::Rgb24) {
        hn::LoadInterleaved3(d, from, p.r, p.g, p.b);
    } else {
        hn::LoadInterleaved4(d, from, p.r, p.g, p.b, p.a);
    }
    if constexpr (type == ImageType::Gray8 || type == ImageType::GrayAlpha16) p.g = p.b = p.r;
    return p;
}

#if HWY_TARGET == HWY_SCALAR // one lane, which cannot be seen as four bytes

HWY_INLINE ByteVector lumaOf(const Pixels& p) {
    return hn::Set(Bytes(), luma(hn::GetLane(p.r), hn::GetLane(p.g), hn::GetLane(p.b)));
}

#else

using Words = hn::Repartition<std::uint32_t, Bytes>;

// Luma of the bytes at `shift` of each 32-bit lane, left in place there.
template <int shift, class V>
HWY_INLINE V lumaAt(V r, V g, V b) {
    const Words d;
    const V low = hn::Set(d, 0xFF);
    const auto byte = [&](V v) { return hn::And(hn::ShiftRight<shift>(v), low); };
    const V sum =
        hn::Add(hn::Add(hn::Mul(byte(r), hn::Set(d, 19595)), hn::Mul(byte(g), hn::Set(d, 38470))),
                hn::Add(hn::Mul(byte(b), hn::Set(d, 7471)), hn::Set(d, 32768)));
    return hn::ShiftLeft<shift>(hn::ShiftRight<16>(sum));
}

HWY_INLINE ByteVector lumaOf(const Pixels& p) {
    const Words d;
    const auto r = hn::BitCast(d, p.r), g = hn::BitCast(d, p.g), b = hn::BitCast(d, p.b);
    const auto low = hn::Or(lumaAt<0>(r, g, b), lumaAt<8>(r, g, b));
    const auto high = hn::Or(lumaAt<16>(r, g, b), lumaAt<24>(r, g, b));
    return hn::BitCast(Bytes(), hn::Or(low, high));
}

#endif

template <ImageType from, ImageType to>
HWY_INLINE void store(const Pixels& p, std::uint8_t* target) {
    const Bytes d;
    if constexpr (to == ImageType::Rgb24) {
        hn::StoreInterleaved3(p.r, p.g, p.b, d, target);
    } else if constexpr (to == ImageType::Rgba32) {
        hn::StoreInterleaved4(p.r, p.g, p.b, p.a, d, target);
    } else {
        constexpr bool isGray = from == ImageType::Gray8 || from == ImageType::GrayAlpha16;
        const ByteVector gray = isGray ? p.r : lumaOf(p);
        if constexpr (to == ImageType::Gray8)
            hn::StoreU(gray, d, target);
        else
            hn::StoreInterleaved2(gray, p.a, d, target);
    }
}

template <ImageType from, ImageType to>
void loop(const std::uint8_t* source, std::uint8_t* target, int width) {
    constexpr int in = bytesPerPixel(from), out = bytesPerPixel(to);
    constexpr int most = static_cast<int>(hn::MaxLanes(Bytes()));
    const int lanes = static_cast<int>(hn::Lanes(Bytes()));
    int x = 0;
    for (; x + lanes <= width; x += lanes)
        store<from, to>(load<from>(source + std::ptrdiff_t{x} * in),
                        target + std::ptrdiff_t{x} * out);
    if (x >= width) return;
    const auto rest = static_cast<std::size_t>(std::min(width - x, most));
    std::uint8_t head[most * in] = {}, tail[most * out];
    std::memcpy(head, source + std::ptrdiff_t{x} * in, rest * in);
    store<from, to>(load<from>(head), tail);
    std::memcpy(target + std::ptrdiff_t{x} * out, tail, rest * out);
}

template <ImageType from>
void convertFrom(ImageType to, const std::uint8_t* source, std::uint8_t* target, int width) {
    switch (to) {
    case ImageType::Gray8:
        loop<from, ImageType::Gray8>(source, target, width);
        break;
    case ImageType::GrayAlpha16:
        loop<from, ImageType::GrayAlpha16>(source, target, width);
        break;
    case ImageType::Rgb24:
        loop<from, ImageType::Rgb24>(source, target, width);
        break;
    default:
        loop<from, ImageType::Rgba32>(source, target, width);
        break;
    }
}

void convertAny(ImageType from, ImageType to, const std::uint8_t* source, std::uint8_t* target,
                int width) {
    switch (from) {
    case ImageType::Gray8:
        convertFrom<ImageType::Gray8>(to, source, target, width);
        break;
    case ImageType::GrayAlpha16:
        convertFrom<ImageType::GrayAlpha16>(to, source, target, width);
        break;
    case ImageType::Rgb24:
        convertFrom<ImageType::Rgb24>(to, source, target, width);
        break;
    default:
        convertFrom<ImageType::Rgba32>(to, source, target, width);
        break;
    }
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(convertAny);

void convertRow(ImageType from, ImageType to, const std::uint8_t* source, std::uint8_t* target,
                int width) {
    if (from == to)
        std::memcpy(target, source, rowBytes(from, width));
    else
        HWY_DYNAMIC_DISPATCH(convertAny)(from, to, source, target, width);
}

namespace {

using Expanded = std::array<std::uint8_t, 8>;

// The eight bits of every byte, spread out.
constexpr std::array<Expanded, 256> expandedBytes = [] {
    std::array<Expanded, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte)
        for (std::size_t i = 0; i < 8; ++i)
            table[byte][i] = static_cast<std::uint8_t>((byte >> (7 - i)) & 1);
    return table;
}();

} // namespace

void expandBits(const std::uint8_t* bits, std::uint8_t* bytes, int width) {
    for (; width >= 8; width -= 8, ++bits, bytes += 8)
        std::memcpy(bytes, expandedBytes[*bits].data(), 8);
    if (width > 0) std::memcpy(bytes, expandedBytes[*bits].data(), static_cast<std::size_t>(width));
}

void packBits(const std::uint8_t* bytes, std::uint8_t* bits, int width) {
    int x = 0;
    for (; x + 8 <= width; x += 8) {
        const std::uint8_t* p = bytes + x;
        bits[x >> 3] = static_cast<std::uint8_t>(p[0] << 7 | p[1] << 6 | p[2] << 5 | p[3] << 4 |
                                                 p[4] << 3 | p[5] << 2 | p[6] << 1 | p[7]);
    }
    if (x == width) return;
    int last = 0;
    for (int i = x; i < width; ++i)
        last |= bytes[i] << (7 - (i - x));
    bits[x >> 3] = static_cast<std::uint8_t>(last);
}

RowReader::RowReader(const Raster& source, ImageType form) : view_(source.view()), form_(form) {
    if (!hasPalette(view_.type)) return;
    for (std::size_t i = 0; i < table_.size(); ++i) {
        Rgba color = source.palette()[i];
        if (!hasAlpha(view_.type)) color.a = 255;
        const std::uint8_t bytes[4] = {color.r, color.g, color.b, color.a};
        convertRow(ImageType::Rgba32, form, bytes, table_[i].data(), 1);
    }
}

void RowReader::read(int y, std::uint8_t* target) const {
    const std::uint8_t* row = view_.row(y);
    if (view_.type == ImageType::Bit1) {
        constexpr int block = 1024; // a multiple of 8
        std::uint8_t indices[block];
        for (int x = 0; x < view_.width; x += block) {
            const int count = std::min(block, view_.width - x);
            expandBits(row + x / 8, indices, count);
            expand(indices, target + std::ptrdiff_t{x} * bytesPerPixel(form_), count);
        }
    } else if (hasPalette(view_.type)) {
        expand(row, target, view_.width);
    } else {
        convertRow(view_.type, form_, row, target, view_.width);
    }
}

void RowReader::expand(const std::uint8_t* indices, std::uint8_t* target, int width) const {
    switch (bytesPerPixel(form_)) {
    case 1:
        for (int x = 0; x < width; ++x)
            target[x] = table_[indices[x]][0];
        break;
    case 2:
        for (int x = 0; x < width; ++x)
            std::memcpy(target + 2 * x, table_[indices[x]].data(), 2);
        break;
    case 3:
        // Four bytes at a time are one store; the fourth is written over by the next pixel.
        for (int x = 0; x + 1 < width; ++x)
            std::memcpy(target + 3 * std::ptrdiff_t{x}, table_[indices[x]].data(), 4);
        std::memcpy(target + 3 * std::ptrdiff_t{width - 1}, table_[indices[width - 1]].data(), 3);
        break;
    default:
        for (int x = 0; x < width; ++x)
            std::memcpy(target + 4 * std::ptrdiff_t{x}, table_[indices[x]].data(), 4);
        break;
    }
}

} // namespace kvn::imaging
#endif
