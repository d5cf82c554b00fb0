// Rows of a picture to rows of palette entries: the inner loops of mapping to a palette.
//
// Pixels come as four bytes each, in the space of the metric (spotOf). Where `fixed` is not -1,
// it is the entry that the pixel gets, whatever the search would give.
#pragma once

#include <array>
#include <cstdint>
#include <span>
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
    // How much of it is handed on, in sixteenths.
    static constexpr int fullStrength = 16;

    Diffusion(NearestColors& colors, int width, bool leftwards);

    // `strength`: 0 to fullStrength, for each pixel.
    struct Row {
        const std::uint8_t* spots;
        const std::int16_t* fixed;
        const std::uint8_t* strength;
        std::uint8_t* entries;
    };
    struct Lane {
        Diffusion* diffusion;
        Row row;
    };
    // A row of each, of the same width, colours and direction. Two take less time together than
    // one after the other, four still less.
    static void rows(std::span<const Lane> lanes);

    // The shares of the pixel ahead, and of the three below: behind, straight and diagonal. Each
    // is a fraction of 65536, the same for all channels.
    using Weights = std::array<Error, 4>;
    struct State {
        NearestColors& colors;
        std::vector<Error> places;    // of the palette entries, in sixteenths of a level
        std::vector<Weights> weights; // by strength
        std::vector<Error> below;     // for the next row, with a margin of one pixel at each end
        int width;
    };

    State& state() { return state_; }

  private:
    State state_;
    bool leftwards_;
};

} // namespace kvn::imaging
