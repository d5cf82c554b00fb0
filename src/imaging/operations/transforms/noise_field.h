// Smooth noise over a picture, computed on a coarse grid and read between its points.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/geometry.h"

namespace kvn::imaging {

// Gradient noise (K. Perlin, Improving Noise, 2002) at a place in cells, about -1..1; zero at whole
// numbers. Depends on nothing but its arguments.
double gradientNoise(double x, double y, std::uint32_t seed);

class NoiseField {
  public:
    // A cell is `cellWidth` by `cellHeight` pixels, at least 2.
    NoiseField(Size size, double cellWidth, double cellHeight, std::uint32_t seed);

    // The noise of the pixels x0 .. x0 + count - 1 of row y.
    void row(int y, int x0, int count, float* out) const;

  private:
    int step_; // pixels between grid points
    int gridWidth_ = 0;
    std::vector<float> grid_;
};

} // namespace kvn::imaging
