// Error diffusion onto a palette, row by row.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "imaging/quantize_nearest.h"

namespace kvn::imaging {

// Floyd and Steinberg's weights, the direction changing with every row. The next row needs the
// whole of the last one, so a Diffusion serves one thread.
class Diffusion {
  public:
    Diffusion(const NearestColors& colors, int width, bool leftwards);

    // `spots`: four bytes a pixel, in the space of the metric. `fixed`: the entry that a pixel
    // must get, or -1. A pixel with a fixed entry takes no error and hands none on, so plain
    // areas stay plain.
    void row(const std::uint8_t* spots, const std::int16_t* fixed, std::uint8_t* entries);

    // What a pixel hands on, in sixteenths of a level, by channel.
    using Error = std::array<std::int32_t, 4>;
    struct State {
        const NearestColors* colors;
        std::vector<Error> places; // of the palette entries, in sixteenths
        std::vector<Error> below;  // for the next row, with a margin of one pixel at each end
        int width;
    };

  private:
    State state_;
    bool leftwards_;
};

} // namespace kvn::imaging
