// A plane cut into irregular cells: every square of a grid has a seed at a random place in it, and
// every place belongs to the seed nearest to it (S. Worley, A cellular texture basis function,
// 1996). Knows nothing of pictures.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/geometry.h"

namespace kvn::imaging {

// 32 random bits for a number.
std::uint32_t randomBits(std::uint32_t number, std::uint32_t seed);
// The same as a real number from 0 to 1.
float randomShare(std::uint32_t number, std::uint32_t seed);

// What is near the places of a row, an entry a place.
struct NearSeeds {
    explicit NearSeeds(int count);
    std::vector<int> seed;             // the number of the nearest one
    std::vector<float> x, y;           // where it is
    std::vector<float> otherX, otherY; // and the second nearest
    std::vector<float> placeX, placeY; // room for the places themselves, 16 entries more
};

class Cells {
  public:
    // `side` (at least 1) is the width of a square; `jitter` 0..1 how far seeds leave its middle.
    Cells(Size picture, double side, double jitter, std::uint32_t seed);

    int count() const { return static_cast<int>(x_.size()); }
    float seedX(int seed) const { return x_[static_cast<std::size_t>(seed)]; }
    float seedY(int seed) const { return y_[static_cast<std::size_t>(seed)]; }

    // For the places near.placeX, near.placeY of the pixels 0 .. count - 1 of row y, which may lie
    // up to half a square beside them.
    void find(int y, int count, NearSeeds& near) const;

  private:
    void findRun(int column, int row, int begin, int end, NearSeeds& near) const;

    float side_;
    int columns_, rows_; // with `margin` squares around the picture
    std::vector<float> x_, y_;
};

} // namespace kvn::imaging
