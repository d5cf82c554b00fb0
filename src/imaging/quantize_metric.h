// The space in which colours are compared when a picture gets a palette.
//
// Opaque colours are compared by red, green and blue. With alpha, two colours are as far apart as
// they look on average over black and over white: with p the premultiplied channel that is the
// mean of dp^2 and (dp - da)^2, which equals (dp - da/2)^2 + (da/2)^2. So the space has the
// colour laid over mid-grey, and alpha times the root of 3/4.
#pragma once

#include <array>
#include <cstdint>

#include "imaging/rgba.h"

namespace kvn::imaging {

// Channels 0..255.
using Spot = std::array<int, 4>;
// The same in one number, sixteen bits a channel, the first lowest.
using PackedSpot = std::uint64_t;

inline constexpr double alphaAxis = 0.8660254037844386;

constexpr Spot spotOf(Rgba color) {
    const int a = color.a;
    const auto mixed = [a](int c) { return (2 * c * a + 255 * (255 - a) + 255) / 510; };
    return {mixed(color.r), mixed(color.g), mixed(color.b), static_cast<int>(a * alphaAxis + 0.5)};
}

constexpr Spot unpackedSpot(PackedSpot spot) {
    return {static_cast<int>(spot & 0xFF), static_cast<int>(spot >> 16 & 0xFF),
            static_cast<int>(spot >> 32 & 0xFF), static_cast<int>(spot >> 48 & 0xFF)};
}

// The colour at a place of the space given in `scale` steps a level.
Rgba colorOf(const std::array<double, 4>& place, double scale, bool withAlpha);

} // namespace kvn::imaging
