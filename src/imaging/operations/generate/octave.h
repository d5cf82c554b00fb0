// One octave of noise over a picture, a row at a time. Knows nothing of the other octaves.
#pragma once

#include <cstdint>
#include <vector>

namespace kvn::imaging {

enum class NoiseKind {
    Value,    // random values as the control points of a cubic B-spline; 0..1
    Gradient, // random slopes at the grid points, which are 0; about -0.7..0.7
};

// Depends on nothing but its arguments. A row needs the two or four lines of grid points around
// it, which are kept for the rows that follow.
class Octave {
  public:
    // `cell`: pixels between grid points, at least 1.
    Octave(NoiseKind kind, int width, double cell, std::uint32_t seed);

    // out[x] += weight * noise, for all pixels of the row.
    void addRow(int y, float weight, float* out);

  private:
    // The grid points of one line: the two parts of a slope, or a value each, from the one left of
    // the picture on.
    struct Line {
        std::vector<float> x, y;
    };
    void fillLine(int gridY, Line& line) const;
    void seek(int first, int count);
    // `t`: how far the row lies below the line of grid points gridY, 0..1 of a cell.
    void addValues(int gridY, float t, float weight, float* out);
    void addSlopes(int gridY, float t, float weight, float* out);

    NoiseKind kind_;
    int width_;
    double cell_;
    std::uint32_t seed_;
    int firstLine_ = -9; // the line of grid points in lines_[0]; none yet
    Line lines_[4];
    std::vector<float> base_;     // of each grid point at the height of the row
    std::vector<float> cells_[4]; // and what follows from them
};

} // namespace kvn::imaging
