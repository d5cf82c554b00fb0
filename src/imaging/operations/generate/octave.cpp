#include "imaging/operations/generate/octave.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <tuple>
#include <utility>

#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

// The finalizer of MurmurHash3 over place and seed.
std::uint32_t hashed(int x, int y, std::uint32_t seed) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x9E3779B1u +
                      static_cast<std::uint32_t>(y) * 0x85EBCA77u + seed * 0xC2B2AE3Du;
    h = (h ^ (h >> 16)) * 0x85EBCA6Bu;
    h = (h ^ (h >> 13)) * 0xC2B2AE35u;
    return h ^ (h >> 16);
}

float randomValue(int x, int y, std::uint32_t seed) {
    return static_cast<float>(hashed(x, y, seed) >> 8) * 0x1p-24f;
}

// Sixty-four directions: few enough for a table, too many for the eye to see.
constexpr unsigned directionCount = 64;
std::array<std::pair<float, float>, directionCount> directions() {
    std::array<std::pair<float, float>, directionCount> all;
    for (unsigned i = 0; i < directionCount; ++i) {
        const double angle = 2 * std::numbers::pi * (i + 0.5) / directionCount;
        all[i] = {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle))};
    }
    return all;
}

// A smooth step from 0 to 1, without a jump in the second derivative.
float faded(float t) {
    return t * t * t * (t * (t * 6 - 15) + 10);
}

// A row from its grid points: left and right of each pixel there is a line through base and slope.
inline float between(float leftBase, float leftSlope, float rightBase, float rightSlope, float t) {
    const float left = leftBase + leftSlope * t;
    const float right = rightBase + rightSlope * (t - 1);
    return left + t * t * t * (t * (t * 6 - 15) + 10) * (right - left);
}

KVN_CLONES void addGradients(const float* __restrict base, const float* __restrict slope,
                             float cells, float weight, int count, float* __restrict out) {
    for (int x = 0; x < count; ++x) {
        const float place = static_cast<float>(x) * cells;
        const int i = static_cast<int>(place);
        out[x] += weight * between(base[i], slope[i], base[i + 1], slope[i + 1],
                                   place - static_cast<float>(i));
    }
}

// The same a cell at a time, so that nothing has to be looked up for each pixel.
KVN_CLONES void addWideGradients(const float* __restrict base, const float* __restrict slope,
                                 float cells, float weight, int count, float* __restrict out) {
    for (int x0 = 0, i = 0; x0 < count; ++i) {
        const int x1 =
            std::min(count, static_cast<int>(std::ceil(static_cast<float>(i + 1) / cells)));
        const float first = base[i], second = base[i + 1];
        const float firstSlope = slope[i], secondSlope = slope[i + 1];
        for (int x = x0; x < x1; ++x)
            out[x] += weight * between(first, firstSlope, second, secondSlope,
                                       static_cast<float>(x) * cells - static_cast<float>(i));
        x0 = x1;
    }
}

// What each cell adds at t, the place in it from 0 to 1: c0 + c1 t + c2 t^2 + c3 t^3, times the
// weight. `points` begins one grid point to the left of the first cell.
KVN_CLONES void splineCells(const float* __restrict points, float weight, std::size_t cells,
                            float* __restrict c0, float* __restrict c1, float* __restrict c2,
                            float* __restrict c3) {
    const float sixth = weight / 6;
    for (std::size_t i = 0; i < cells; ++i) {
        const float a = points[i], b = points[i + 1], c = points[i + 2], d = points[i + 3];
        c0[i] = (a + 4 * b + c) * sixth;
        c1[i] = (c - a) * 3 * sixth;
        c2[i] = (a - 2 * b + c) * 3 * sixth;
        c3[i] = (d - a + 3 * (b - c)) * sixth;
    }
}

KVN_CLONES void addSpline(const float* __restrict c0, const float* __restrict c1,
                          const float* __restrict c2, const float* __restrict c3, float cells,
                          int count, float* __restrict out) {
    for (int x = 0; x < count; ++x) {
        const float place = static_cast<float>(x) * cells;
        const int i = static_cast<int>(place);
        const float t = place - static_cast<float>(i);
        out[x] += c0[i] + t * (c1[i] + t * (c2[i] + t * c3[i]));
    }
}

// The same a cell at a time.
KVN_CLONES void addWideSpline(const float* __restrict c0, const float* __restrict c1,
                              const float* __restrict c2, const float* __restrict c3, float cells,
                              int count, float* __restrict out) {
    for (int x0 = 0, i = 0; x0 < count; ++i) {
        const int x1 =
            std::min(count, static_cast<int>(std::ceil(static_cast<float>(i + 1) / cells)));
        const float a = c0[i], b = c1[i], c = c2[i], d = c3[i];
        for (int x = x0; x < x1; ++x) {
            const float t = static_cast<float>(x) * cells - static_cast<float>(i);
            out[x] += a + t * (b + t * (c + t * d));
        }
        x0 = x1;
    }
}

constexpr double wide = 24; // cells of so many pixels are worth a loop each

} // namespace

Octave::Octave(NoiseKind kind, int width, double cell, std::uint32_t seed)
    : kind_(kind), width_(width), cell_(cell), seed_(seed) {
    const auto points = static_cast<std::size_t>(width / cell) + 3;
    for (Line& line : lines_) {
        line.x.resize(points + 3);
        line.y.resize(points);
    }
    base_.resize(points + 3);
    for (auto& numbers : cells_)
        numbers.resize(points);
}

void Octave::fillLine(int gridY, Line& line) const {
    static const auto table = directions();
    if (kind_ == NoiseKind::Value) {
        for (std::size_t i = 0; i < line.x.size(); ++i)
            line.x[i] = randomValue(static_cast<int>(i) - 1, gridY, seed_);
        return;
    }
    for (std::size_t i = 0; i < line.y.size(); ++i)
        std::tie(line.x[i], line.y[i]) =
            table[hashed(static_cast<int>(i), gridY, seed_) % directionCount];
}

// The first `count` lines from `first` on into lines_.
void Octave::seek(int first, int count) {
    if (first == firstLine_ + 1) {
        std::rotate(lines_, lines_ + 1, lines_ + count);
        fillLine(first + count - 1, lines_[count - 1]);
    } else if (first != firstLine_) {
        for (int i = 0; i < count; ++i)
            fillLine(first + i, lines_[i]);
    }
    firstLine_ = first;
}

void Octave::addRow(int y, float weight, float* out) {
    const double place = y / cell_;
    const int gridY = static_cast<int>(place);
    const auto t = static_cast<float>(place - gridY);
    if (kind_ == NoiseKind::Value)
        addValues(gridY, t, weight, out);
    else
        addSlopes(gridY, t, weight, out);
}

void Octave::addValues(int gridY, float t, float weight, float* out) {
    seek(gridY - 1, 4);
    const float back = 1 - t;
    const float shares[4] = {back * back * back / 6, (4 + t * t * (3 * t - 6)) / 6,
                             (4 + back * back * (3 * back - 6)) / 6, t * t * t / 6};
    for (std::size_t i = 0; i < base_.size(); ++i)
        base_[i] = shares[0] * lines_[0].x[i] + shares[1] * lines_[1].x[i] +
                   shares[2] * lines_[2].x[i] + shares[3] * lines_[3].x[i];
    auto& [c0, c1, c2, c3] = cells_;
    splineCells(base_.data(), weight, c0.size(), c0.data(), c1.data(), c2.data(), c3.data());
    const auto add = cell_ >= wide ? addWideSpline : addSpline;
    add(c0.data(), c1.data(), c2.data(), c3.data(), static_cast<float>(1 / cell_), width_, out);
}

void Octave::addSlopes(int gridY, float t, float weight, float* out) {
    seek(gridY, 2);
    const Line &upper = lines_[0], &lower = lines_[1];
    std::vector<float>& slope = cells_[0];
    const float share = faded(t);
    for (std::size_t i = 0; i < slope.size(); ++i) {
        const float above = upper.y[i] * t, below = lower.y[i] * (t - 1);
        base_[i] = above + share * (below - above);
        slope[i] = upper.x[i] + share * (lower.x[i] - upper.x[i]);
    }
    const auto add = cell_ >= wide ? addWideGradients : addGradients;
    add(base_.data(), slope.data(), static_cast<float>(1 / cell_), weight, width_, out);
}

} // namespace kvn::imaging
