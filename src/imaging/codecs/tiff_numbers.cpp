#include "imaging/codecs/tiff_numbers.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>

namespace kvn::imaging {

namespace {

// Samples of any width up to 32 bits, most significant bit first.
template <typename Put>
void forPackedSamples(const std::uint8_t* from, std::size_t count, int bits, const Put& put) {
    std::uint64_t held = 0;
    int heldBits = 0;
    for (std::size_t i = 0; i < count; ++i) {
        while (heldBits < bits) {
            held = held << 8 | *from++;
            heldBits += 8;
        }
        heldBits -= bits;
        put(i, static_cast<std::uint32_t>(held >> heldBits & ((std::uint64_t{1} << bits) - 1)));
    }
}

// The same for widths that divide a byte.
template <int Bits, typename Put>
void forDividedBytes(const std::uint8_t* from, std::size_t count, const Put& put) {
    constexpr std::size_t perByte = 8 / Bits;
    for (std::size_t i = 0; i < count; ++i) {
        const int shift = static_cast<int>(perByte - 1 - i % perByte) * Bits;
        put(i, static_cast<std::uint32_t>(from[i / perByte] >> shift & ((1 << Bits) - 1)));
    }
}

template <typename Put>
void forSmallSamples(const std::uint8_t* from, std::size_t count, int bits, const Put& put) {
    if (bits == 1) return forDividedBytes<1>(from, count, put);
    if (bits == 2) return forDividedBytes<2>(from, count, put);
    if (bits == 4) return forDividedBytes<4>(from, count, put);
    forPackedSamples(from, count, bits, put);
}

class Scale {
  public:
    explicit Scale(const TiffLayout& layout)
        : black_(layout.blackAt), factor_(65535 / (layout.whiteAt - layout.blackAt)) {}
    std::uint16_t operator()(double value) const {
        const double scaled = (value - black_) * factor_;
        if (!(scaled > 0)) return 0; // NaN too
        return scaled >= 65535 ? 65535 : static_cast<std::uint16_t>(scaled + 0.5);
    }

  private:
    double black_, factor_;
};

template <typename Stored>
void scaleStored(const Scale& scale, const std::uint8_t* from, std::size_t count,
                 std::uint16_t* to) {
    for (std::size_t i = 0; i < count; ++i) {
        Stored value;
        std::memcpy(&value, from + i * sizeof value, sizeof value);
        to[i] = scale(static_cast<double>(value));
    }
}

// Real numbers of 16 bits (5 of exponent) and 24 (7 of exponent), widened bit by bit.
float widenedFloat(std::uint32_t bits, int exponentBits, int mantissaBits) {
    const std::uint32_t mantissaMask = (1u << mantissaBits) - 1;
    const int most = (1 << exponentBits) - 1, bias = most >> 1;
    const int exponent = static_cast<int>(bits >> mantissaBits) & most;
    const std::uint32_t mantissa = bits & mantissaMask;
    const bool negative = (bits >> (mantissaBits + exponentBits) & 1) != 0;
    float value;
    if (exponent == most)
        value = mantissa ? std::nanf("") : HUGE_VALF;
    else if (exponent == 0)
        value = std::ldexp(static_cast<float>(mantissa), 1 - bias - mantissaBits);
    else
        value = std::ldexp(static_cast<float>(mantissa | (mantissaMask + 1)),
                           exponent - bias - mantissaBits);
    return negative ? -value : value;
}

std::uint32_t triple(const std::uint8_t* from) {
    if constexpr (std::endian::native == std::endian::big)
        return std::uint32_t{from[0]} << 16 | std::uint32_t{from[1]} << 8 | from[2];
    return from[0] | std::uint32_t{from[1]} << 8 | std::uint32_t{from[2]} << 16;
}

void unpackFloats(const Scale& scale, int bits, const std::uint8_t* from, std::size_t count,
                  std::uint16_t* to) {
    if (bits == 64) return scaleStored<double>(scale, from, count, to);
    if (bits == 32) return scaleStored<float>(scale, from, count, to);
    for (std::size_t i = 0; i < count; ++i) {
        std::uint16_t half = 0;
        if (bits == 16) std::memcpy(&half, from + 2 * i, 2);
        to[i] = scale(bits == 16 ? widenedFloat(half, 5, 10)
                                 : widenedFloat(triple(from + 3 * i), 7, 16));
    }
}

} // namespace

void unpackTiffIndices(const std::uint8_t* from, std::size_t count, int bits, std::uint8_t* to) {
    if (bits == 8) {
        std::memcpy(to, from, count);
        return;
    }
    forSmallSamples(from, count, bits, [to](std::size_t i, std::uint32_t value) {
        to[i] = static_cast<std::uint8_t>(value);
    });
}

void unpackTiffSamples(const TiffLayout& layout, const std::uint8_t* from, std::size_t count,
                       std::uint8_t* to) {
    if (layout.bits == 8) {
        std::memcpy(to, from, count);
        return;
    }
    const std::uint32_t most = (1u << layout.bits) - 1;
    std::array<std::uint8_t, 128> levels{};
    for (std::uint32_t value = 0; value <= most; ++value)
        levels[value] = static_cast<std::uint8_t>((value * 255 + most / 2) / most);
    forSmallSamples(from, count, layout.bits,
                    [&levels, to](std::size_t i, std::uint32_t value) { to[i] = levels[value]; });
}

void unpackTiffSamples(const TiffLayout& layout, const std::uint8_t* from, std::size_t count,
                       std::uint16_t* to) {
    const Scale scale(layout);
    const int bits = layout.bits;
    if (layout.numbers == TiffNumbers::Float) return unpackFloats(scale, bits, from, count, to);
    const bool isSigned = layout.numbers == TiffNumbers::Signed;
    if (bits == 8 && isSigned) return scaleStored<std::int8_t>(scale, from, count, to);
    if (bits == 16 && isSigned) return scaleStored<std::int16_t>(scale, from, count, to);
    if (bits == 32 && isSigned) return scaleStored<std::int32_t>(scale, from, count, to);
    if (bits == 32) return scaleStored<std::uint32_t>(scale, from, count, to);
    if (bits == 16) {
        std::memcpy(to, from, count * 2);
        return;
    }
    const double offset = isSigned ? std::ldexp(1.0, bits) : 0;
    const auto widen = [&](std::uint32_t value) {
        const bool negative = isSigned && (value >> (bits - 1) & 1) != 0;
        return scale(negative ? value - offset : value);
    };
    if (bits == 24) {
        for (std::size_t i = 0; i < count; ++i)
            to[i] = widen(triple(from + 3 * i));
        return;
    }
    forPackedSamples(from, count, bits,
                     [&](std::size_t i, std::uint32_t value) { to[i] = widen(value); });
}

} // namespace kvn::imaging
