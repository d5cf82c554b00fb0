// One octave of noise over a picture, a row at a time. Knows nothing of the other octaves.
#pragma once

#include <cstdint>
#include <vector>

namespace kvn::imaging {

enum class NoiseKind {
    Value,    // random values at the grid points, smoothed, cosines between them; 0..1
    Gradient, // random slopes at the grid points, which are 0; about -0.7..0.7
};

// Depends on nothing but its arguments. A row needs the two lines of grid points around it, which
// are kept for the rows that follow.
class Octave {
  public:
    // `cell`: pixels between grid points, at least 1.
    Octave(NoiseKind kind, int width, double cell, std::uint32_t seed);

    // out[x] += weight * noise, for all pixels of the row.
    void addRow(int y, float weight, float* out);

  private:
    // The grid points of one line, a value each, or the two parts of a slope.
    struct Line {
        std::vector<float> x, y;
    };
    void fillLine(int gridY, Line& line) const;

    NoiseKind kind_;
    int width_;
    double cell_;
    std::uint32_t seed_;
    int gridY_ = -2; // of the upper line; none yet
    Line upper_, lower_;
    std::vector<float> base_, slope_; // of each grid point at the height of the row
};

} // namespace kvn::imaging
