#include "imaging/view/samples.h"

#include <algorithm>
#include <cstring>

#include "imaging/view/vectors.h"

namespace kvn::imaging {

namespace {

// Two channels at a time: (value * alpha) / 255, rounded to nearest, in each half of a word.
inline std::uint32_t scalePair(std::uint32_t pair, std::uint32_t alpha) {
    const std::uint32_t t = pair * alpha + 0x00800080u;
    return ((t + ((t >> 8) & 0x00FF00FFu)) >> 8) & 0x00FF00FFu;
}

// Red, green, blue, alpha in memory order.
KVN_VECTORS void premultiply(const std::uint8_t* from, std::uint8_t* to, int count) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        std::uint32_t p;
        std::memcpy(&p, from + 4 * i, 4);
        const std::uint32_t alpha = p >> 24;
        const std::uint32_t rb = scalePair(p & 0x00FF00FFu, alpha);
        const std::uint32_t g = scalePair((p >> 8) & 0xFFu, alpha);
        p = rb | g << 8 | alpha << 24;
        std::memcpy(to + 4 * i, &p, 4);
    }
}

KVN_VECTORS void premultiplyGray(const std::uint8_t* from, std::uint8_t* to, int count) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const std::uint32_t alpha = from[2 * i + 1];
        const std::uint32_t g = scalePair(from[2 * i], alpha);
        const std::uint32_t p = g | g << 8 | g << 16 | alpha << 24;
        std::memcpy(to + 4 * i, &p, 4);
    }
}

// The bits of a byte as eight bytes of 0 or 255, most significant bit first in memory.
constexpr std::array<std::uint64_t, 256> bitMasks = [] {
    std::array<std::uint64_t, 256> masks{};
    for (std::size_t value = 0; value < masks.size(); ++value)
        for (int bit = 0; bit < 8; ++bit)
            if (value >> (7 - bit) & 1) masks[value] |= std::uint64_t{0xFF} << (8 * bit);
    return masks;
}();

bool isGray(Rgba color) {
    return color.r == color.g && color.g == color.b;
}

} // namespace

SampleReader::SampleReader(const Raster& picture) {
    switch (picture.type()) {
    case ImageType::Bit1:
    case ImageType::Indexed8:
        readPalette(picture.palette(), false);
        break;
    case ImageType::Indexed8Alpha:
        readPalette(picture.palette(), true);
        break;
    case ImageType::Gray8:
        form_ = SampleForm::Gray;
        break;
    case ImageType::GrayAlpha16:
    case ImageType::Rgba32:
        form_ = SampleForm::Rgba;
        break;
    case ImageType::Rgb24:
        break;
    }
}

void SampleReader::readPalette(const Palette& palette, bool withAlpha) {
    const auto& colors = palette.colors();
    const bool gray = std::all_of(colors.begin(), colors.end(), isGray);
    form_ = withAlpha ? SampleForm::Rgba : gray ? SampleForm::Gray : SampleForm::Rgb;
    for (std::size_t i = 0; i < lookup_.size(); ++i) {
        const Rgba c = palette[i];
        const std::uint8_t a = withAlpha ? c.a : 255;
        lookup_[i] = {mul255(c.r, a), mul255(c.g, a), mul255(c.b, a), a};
    }
}

// Eight pixels a byte, from the byte that holds column x on. Gives the place of column x.
const std::uint8_t* SampleReader::readBits(const std::uint8_t* row, int x, int count,
                                           std::uint8_t* scratch) const {
    const int first = x / 8, last = (x + count - 1) / 8;
    if (form_ == SampleForm::Gray) {
        constexpr std::uint64_t everyByte = 0x0101010101010101u;
        const std::uint64_t zero = everyByte * lookup_[0][0];
        const std::uint64_t flip = zero ^ everyByte * lookup_[1][0];
        for (int i = first; i <= last; ++i) {
            const std::uint64_t eight = zero ^ (bitMasks[row[i]] & flip);
            std::memcpy(scratch + 8 * (i - first), &eight, 8);
        }
        return scratch + x % 8;
    }
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const int bit = row[(x + i) / 8] >> (7 - (x + i) % 8) & 1;
        std::memcpy(scratch + 3 * i, lookup_[static_cast<std::size_t>(bit)].data(), 4);
    }
    return scratch;
}

// Every store is four bytes; the next one overwrites what is too much.
void SampleReader::lookUp(const std::uint8_t* row, int count, std::uint8_t* scratch) const {
    if (form_ == SampleForm::Gray) {
        for (std::ptrdiff_t i = 0; i < count; ++i)
            scratch[i] = lookup_[row[i]][0];
    } else if (form_ == SampleForm::Rgb) {
        for (std::ptrdiff_t i = 0; i < count; ++i)
            std::memcpy(scratch + 3 * i, lookup_[row[i]].data(), 4);
    } else {
        for (std::ptrdiff_t i = 0; i < count; ++i)
            std::memcpy(scratch + 4 * i, lookup_[row[i]].data(), 4);
    }
}

const std::uint8_t* SampleReader::row(const ConstView& picture, int y, int x, int count,
                                      std::uint8_t* scratch) const {
    const std::uint8_t* from = picture.row(y);
    switch (picture.type) {
    case ImageType::Bit1:
        return readBits(from, x, count, scratch);
    case ImageType::Indexed8:
    case ImageType::Indexed8Alpha:
        lookUp(from + x, count, scratch);
        return scratch;
    case ImageType::Gray8:
        return from + x;
    case ImageType::GrayAlpha16:
        premultiplyGray(from + 2 * x, scratch, count);
        return scratch;
    case ImageType::Rgb24:
        return from + 3 * static_cast<std::ptrdiff_t>(x);
    case ImageType::Rgba32:
        premultiply(from + 4 * static_cast<std::ptrdiff_t>(x), scratch, count);
        return scratch;
    }
    return scratch;
}

} // namespace kvn::imaging
