// Rows of a picture to rows of palette entries: the inner loops of mapping to a palette.
//
// Pixels come as four bytes each, in the space of the metric (spotOf). Where `fixed` is not -1,
// it is the entry that the pixel gets, whatever the search would give.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "imaging/quantize_nearest.h"

namespace kvn::imaging {

// The nearest entry for each pixel; the lowest of several.
void nearestRow(NearestColors& colors, const std::uint8_t* spots, const std::int16_t* fixed,
                std::uint8_t* entries, int width);

// Error diffusion with Floyd and Steinberg's weights, the direction changing with every row. The
// next row needs the whole of the last one, so a Diffusion serves one thread.
//
// A pixel with a fixed entry takes no error and hands none on, so plain areas stay plain.
class Diffusion {
  public:
    // What a pixel hands on, in sixteenths of a level, by channel.
    using Error = std::array<std::int16_t, 4>;
    // How much of it, in sixteenths. Less than all keeps colours that no mixture of entries
    // reaches from piling up errors, and gives a quieter picture; but the coarser the palette
    // is, the more of the tone would be lost.
    static constexpr int fullStrength = 16;

    Diffusion(NearestColors& colors, int width, int strength, bool leftwards);

    void row(const std::uint8_t* spots, const std::int16_t* fixed, std::uint8_t* entries);

    struct State {
        NearestColors& colors;
        std::vector<Error> places; // of the palette entries, in sixteenths of a level
        std::vector<Error> below;  // for the next row, with a margin of one pixel at each end
        int width;
        int strength;
    };

  private:
    State state_;
    bool leftwards_;
};

} // namespace kvn::imaging
