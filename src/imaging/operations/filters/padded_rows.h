// The rows around a row of a picture, continued on all sides by repeating the edge pixels: what
// small-window kernels read.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "imaging/raster.h"

namespace kvn::imaging {

// Keeps the last rows made, so going down the picture makes each row once.
class PaddedRows {
  public:
    // `above`, `below`, `side`: pixels that the window reaches beyond its middle. 256 bytes behind
    // each row may be read.
    PaddedRows(const ConstView& view, int above, int below, int side);
    // Rows that are made when they are first wanted, as many and as wide as those of `shape`.
    using Make = std::function<void(int y, std::uint8_t* row)>;
    PaddedRows(const ConstView& shape, int above, int below, int side, Make make);

    // rows()[k] is the row y - above + k; its entry 0 is the pixel `side` left of the picture.
    const std::uint8_t* const* around(int y);

  private:
    const std::uint8_t* padded(int y);

    ConstView shape_;
    Make make_;
    int above_, count_, side_;
    std::vector<std::vector<std::uint8_t>> rows_;
    std::vector<int> kept_;
    std::vector<const std::uint8_t*> pointers_;
};

// Continues a row of pixels that begins at `row + side pixels` by `side` pixels on both ends.
void repeatEdges(std::uint8_t* row, int width, int side, int channels);

} // namespace kvn::imaging
