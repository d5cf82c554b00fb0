#include "imaging/operations/transforms/noise_field.h"

#include <algorithm>
#include <cmath>

namespace kvn::imaging {
namespace {

// The finalizer of MurmurHash3 over place and seed.
std::uint32_t hashed(std::int32_t x, std::int32_t y, std::uint32_t seed) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x9E3779B1u +
                      static_cast<std::uint32_t>(y) * 0x85EBCA77u + seed * 0xC2B2AE3Du;
    h = (h ^ (h >> 16)) * 0x85EBCA6Bu;
    h = (h ^ (h >> 13)) * 0xC2B2AE35u;
    return h ^ (h >> 16);
}

// The slope of the lattice point, eight directions, times the way from it.
double slope(std::int32_t x, std::int32_t y, std::uint32_t seed, double dx, double dy) {
    constexpr double diagonal = 0.70710678118654752;
    constexpr double directions[8][2] = {{1, 0},
                                         {-1, 0},
                                         {0, 1},
                                         {0, -1},
                                         {diagonal, diagonal},
                                         {-diagonal, diagonal},
                                         {diagonal, -diagonal},
                                         {-diagonal, -diagonal}};
    const auto& direction = directions[hashed(x, y, seed) & 7];
    return direction[0] * dx + direction[1] * dy;
}

double faded(double t) {
    return t * t * t * (t * (t * 6 - 15) + 10);
}

double mixed(double a, double b, double t) {
    return a + (b - a) * t;
}

} // namespace

double gradientNoise(double x, double y, std::uint32_t seed) {
    const double left = std::floor(x), top = std::floor(y);
    const auto ix = static_cast<std::int32_t>(left), iy = static_cast<std::int32_t>(top);
    const double dx = x - left, dy = y - top, u = faded(dx), v = faded(dy);
    const double above = mixed(slope(ix, iy, seed, dx, dy), slope(ix + 1, iy, seed, dx - 1, dy), u);
    const double below =
        mixed(slope(ix, iy + 1, seed, dx, dy - 1), slope(ix + 1, iy + 1, seed, dx - 1, dy - 1), u);
    // The plain sum stays within 0.71.
    return std::clamp(mixed(above, below, v) * 1.4, -1.0, 1.0);
}

NoiseField::NoiseField(Size size, double cellWidth, double cellHeight, std::uint32_t seed) {
    cellWidth = std::max(2.0, cellWidth);
    cellHeight = std::max(2.0, cellHeight);
    step_ = static_cast<int>(std::clamp(std::min(cellWidth, cellHeight) / 8, 1.0, 16.0));
    gridWidth_ = size.width / step_ + 3;
    const int gridHeight = size.height / step_ + 3;
    grid_.reserve(static_cast<std::size_t>(gridWidth_) * static_cast<std::size_t>(gridHeight));
    for (int j = 0; j < gridHeight; ++j)
        for (int i = 0; i < gridWidth_; ++i)
            grid_.push_back(static_cast<float>(
                gradientNoise(i * step_ / cellWidth + 0.37, j * step_ / cellHeight + 0.61, seed)));
}

void NoiseField::row(int y, int x0, int count, float* out) const {
    const float scale = 1 / static_cast<float>(step_);
    const float* above =
        &grid_[static_cast<std::size_t>(y / step_) * static_cast<std::size_t>(gridWidth_)];
    const float* below = above + gridWidth_;
    const float v = static_cast<float>(y % step_) * scale;
    for (int i = 0; i < count;) {
        const int index = (x0 + i) / step_, first = (x0 + i) % step_;
        const int end = std::min(count, i + step_ - first);
        const float left = above[index] + (below[index] - above[index]) * v;
        const float right = above[index + 1] + (below[index + 1] - above[index + 1]) * v;
        for (int place = first; i < end; ++i, ++place)
            out[i] = left + (right - left) * (static_cast<float>(place) * scale);
    }
}

} // namespace kvn::imaging
