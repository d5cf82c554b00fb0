#include "imaging/codecs/tiff_samples.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <type_traits>

#include "imaging/codecs/tiff_color.h"
#include "imaging/codecs/tiff_numbers.h"

namespace kvn::imaging {

namespace {

constexpr std::uint8_t narrow(std::uint8_t value) {
    return value;
}
// Exactly value / 257, rounded to nearest.
constexpr std::uint8_t narrow(std::uint16_t value) {
    return static_cast<std::uint8_t>((value * 255u + 32895u) >> 16);
}

template <typename T>
constexpr std::uint32_t full = std::numeric_limits<T>::max();

template <typename T>
T divided(std::uint32_t color, std::uint32_t alpha) {
    if (alpha == 0) return 0;
    return static_cast<T>(std::min(full<T>, (color * full<T> + alpha / 2) / alpha));
}

template <typename T>
T multiplied(std::uint32_t a, std::uint32_t b) {
    return static_cast<T>((std::uint64_t{a} * b + full<T> / 2) / full<T>);
}

// One pixel's colour channels, alpha left out.
template <typename T>
class Composer {
  public:
    explicit Composer(const TiffLayout& layout) : layout_(layout) {}

    void row(const T* from, int count, std::uint8_t* to) const {
        switch (layout_.color) {
        case TiffColor::Gray:
            return gray(from, count, to);
        case TiffColor::Palette:
            return each(from, count, to, [&](const T* s) { return layout_.manyColors[s[0]]; });
        case TiffColor::Cmyk:
            return each(from, count, to, cmyk);
        case TiffColor::CieLab:
            return each(from, count, to, cieLab);
        case TiffColor::IccLab:
            return each(from, count, to, iccLab);
        default:
            return rgb(from, count, to);
        }
    }

  private:
    void gray(const T* from, int count, std::uint8_t* to) const {
        const int alpha = layout_.alpha;
        for (int i = 0; i < count; ++i, from += layout_.samples) {
            T value = from[0];
            if (layout_.premultiplied) value = divided<T>(value, from[alpha]);
            if (layout_.inverted) value = static_cast<T>(full<T> - value);
            *to++ = narrow(value);
            if (alpha >= 0) *to++ = narrow(from[alpha]);
        }
    }

    void rgb(const T* from, int count, std::uint8_t* to) const {
        const int alpha = layout_.alpha, samples = layout_.samples;
        if (alpha < 0) {
            for (int i = 0; i < count; ++i, from += samples, to += 3)
                for (int c = 0; c < 3; ++c)
                    to[c] = narrow(from[c]);
            return;
        }
        for (int i = 0; i < count; ++i, from += samples, to += 4) {
            for (int c = 0; c < 3; ++c)
                to[c] = narrow(layout_.premultiplied ? divided<T>(from[c], from[alpha]) : from[c]);
            to[3] = narrow(from[alpha]);
        }
    }

    template <typename Convert>
    void each(const T* from, int count, std::uint8_t* to, const Convert& convert) const {
        const int alpha = layout_.alpha;
        for (int i = 0; i < count; ++i, from += layout_.samples) {
            const Rgba color = convert(from);
            *to++ = color.r;
            *to++ = color.g;
            *to++ = color.b;
            if (alpha >= 0) *to++ = narrow(from[alpha]);
        }
    }

    static Rgba cmyk(const T* ink) {
        const std::uint32_t light = full<T> - ink[3];
        return {narrow(multiplied<T>(full<T> - ink[0], light)),
                narrow(multiplied<T>(full<T> - ink[1], light)),
                narrow(multiplied<T>(full<T> - ink[2], light)), 255};
    }

    static Rgba cieLab(const T* s) {
        using Signed = std::make_signed_t<T>;
        constexpr float unit = sizeof(T) == 1 ? 1 : 256;
        return rgbFromLab(static_cast<float>(s[0]) * 100 / static_cast<float>(full<T>),
                          static_cast<float>(static_cast<Signed>(s[1])) / unit,
                          static_cast<float>(static_cast<Signed>(s[2])) / unit);
    }

    static Rgba iccLab(const T* s) {
        constexpr float unit = sizeof(T) == 1 ? 1 : 256;
        return rgbFromLab(static_cast<float>(s[0]) * 100 / (255 * unit),
                          static_cast<float>(s[1]) / unit - 128,
                          static_cast<float>(s[2]) / unit - 128);
    }

    const TiffLayout& layout_;
};

// True if the samples are the raster's bytes.
bool samplesFit(const TiffLayout& layout) {
    if (layout.type == ImageType::Bit1) return true;
    if (layout.bits != 8 || layout.numbers != TiffNumbers::Unsigned) return false;
    if (layout.inverted || layout.premultiplied) return false;
    const bool same = layout.samples == bytesPerPixel(layout.type);
    const bool alphaLast = layout.alpha < 0 || layout.alpha == layout.samples - 1;
    const bool plain = layout.color == TiffColor::Gray || layout.color == TiffColor::Rgb ||
                       (layout.color == TiffColor::Palette && layout.alpha < 0);
    return same && alphaLast && plain;
}

template <int Samples>
void interleave(const std::uint8_t* const* planes, int count, std::uint8_t* to) {
    std::array<const std::uint8_t*, Samples> from;
    std::copy_n(planes, Samples, from.begin());
    for (int i = 0; i < count; ++i)
        for (const std::uint8_t* plane : from)
            *to++ = plane[i];
}

} // namespace

TiffRowConverter::TiffRowConverter(const TiffLayout& layout)
    : layout_(layout), fits_(samplesFit(layout)) {}

void TiffRowConverter::convertPalette(const std::uint8_t* const* planes, int count,
                                      std::uint8_t* to) {
    const auto pixels = static_cast<std::size_t>(count);
    const auto samples = static_cast<std::size_t>(layout_.samples);
    const std::size_t step = layout_.planar ? 1 : samples;
    bytes_.resize(pixels * step);
    unpackTiffIndices(planes[0], bytes_.size(), layout_.bits, bytes_.data());
    if (layout_.alpha < 0) {
        for (std::size_t i = 0; i < pixels; ++i)
            to[i] = bytes_[i * step];
        return;
    }
    const auto alpha = static_cast<std::size_t>(layout_.alpha);
    const unsigned most = (1u << layout_.bits) - 1;
    plane_.resize(pixels);
    if (layout_.planar) unpackTiffIndices(planes[alpha], pixels, layout_.bits, plane_.data());
    for (std::size_t i = 0; i < pixels; ++i, to += 4) {
        Rgba color = layout_.palette[bytes_[i * step]];
        const unsigned opacity = layout_.planar ? plane_[i] : bytes_[i * step + alpha];
        color.a = static_cast<std::uint8_t>(opacity * 255 / most);
        std::memcpy(to, &color, 4);
    }
}

template <typename T>
void TiffRowConverter::convertAs(const std::uint8_t* const* planes, int count, std::uint8_t* to) {
    constexpr bool bytes = sizeof(T) == 1;
    auto& all = [this]() -> std::vector<T>& {
        if constexpr (bytes)
            return bytes_;
        else
            return words_;
    }();
    const auto pixels = static_cast<std::size_t>(count);
    const auto samples = static_cast<std::size_t>(layout_.samples);
    all.resize(pixels * samples);
    if (!layout_.planar) {
        unpackTiffSamples(layout_, planes[0], all.size(), all.data());
    } else {
        auto& one = [this]() -> std::vector<T>& {
            if constexpr (bytes)
                return plane_;
            else
                return widePlane_;
        }();
        one.resize(pixels);
        for (std::size_t s = 0; s < samples; ++s) {
            unpackTiffSamples(layout_, planes[s], pixels, one.data());
            for (std::size_t i = 0; i < pixels; ++i)
                all[i * samples + s] = one[i];
        }
    }
    Composer<T>(layout_).row(all.data(), count, to);
}

void TiffRowConverter::convert(const std::uint8_t* const* planes, int count, std::uint8_t* to) {
    if (copies())
        std::memcpy(to, planes[0], rowBytes(layout_.type, count));
    else if (fits_ && layout_.samples == 2)
        interleave<2>(planes, count, to);
    else if (fits_ && layout_.samples == 3)
        interleave<3>(planes, count, to);
    else if (fits_)
        interleave<4>(planes, count, to);
    else if (layout_.color == TiffColor::Palette && layout_.manyColors.empty())
        convertPalette(planes, count, to);
    else if (layout_.bits <= 8 && layout_.numbers == TiffNumbers::Unsigned)
        convertAs<std::uint8_t>(planes, count, to);
    else
        convertAs<std::uint16_t>(planes, count, to);
}

} // namespace kvn::imaging
