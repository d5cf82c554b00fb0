// What lies behind the transparent parts of a shown picture: a colour, or a tile laid over it
// again and again.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/view/samples.h"

namespace kvn::imaging {

class Backdrop {
  public:
    // Keeps a share of the tile; an empty one leaves the colour.
    Backdrop(const Raster& tile, Rgba color);

    // Pixels x..x+count-1 of row y, both from the place where the first tile begins and not
    // negative. `scratch` is the calling thread's own.
    void row(int x, int y, int count, std::uint32_t* out, std::vector<std::uint8_t>& scratch) const;

  private:
    void tilePart(int x, int y, int count, std::uint32_t* out,
                  std::vector<std::uint8_t>& scratch) const;

    Raster tile_;
    SampleReader reader_;
    std::uint32_t color_;
};

} // namespace kvn::imaging
