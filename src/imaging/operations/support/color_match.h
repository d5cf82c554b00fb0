// Which pixels have a colour, more or less.
#pragma once

#include "imaging/operations/support/color_planes.h"

namespace kvn::imaging {

class ColorMatch {
  public:
    // A pixel matches if none of red, green and blue differs by more than `tolerance` (0..100,
    // clamped) percent of 255. Alpha is not looked at.
    ColorMatch(Rgba color, double tolerance);

    // 255 where a pixel of the block matches, 0 elsewhere.
    void find(const ColorPlanes& planes, std::uint8_t* mask) const;

  private:
    std::uint8_t low_[3], high_[3];
};

} // namespace kvn::imaging
