// Clustering of weighted points: from the colours of a picture to the entries of a palette.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "imaging/task.h"

namespace kvn::imaging {

// Points on a whole-number grid of eight steps a colour level, axis by axis. Distances squared
// stay below 2^24 and so are exact in single precision: every machine finds the same clusters.
struct Cloud {
    static constexpr int axes = 4;
    static constexpr int stepsPerLevel = 8;
    std::array<std::vector<float>, axes> place;
    std::vector<std::uint32_t> weight;

    std::size_t size() const { return weight.size(); }
    void add(const std::array<float, axes>& point, std::uint32_t count) {
        for (std::size_t i = 0; i < axes; ++i)
            place[i].push_back(point[i]);
        weight.push_back(count);
    }
};

using Center = std::array<double, Cloud::axes>;

// Cuts the cloud across its longest direction, the piece first whose cut gains most, until there
// are `count` pieces or no piece can be cut. Gives their means.
std::vector<Center> cutCloud(const Cloud& cloud, std::size_t count);

// Moves the centres to the means of the points nearest to each, again and again, until that
// gains little, or `rounds` times (S. Lloyd 1982). Centres that no point is near to are set where
// the error is largest.
void refineCenters(const Cloud& cloud, std::vector<Center>& centers, int rounds, Task& task);

} // namespace kvn::imaging
