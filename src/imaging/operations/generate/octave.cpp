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

// The mean of the point and its eight neighbours with weights 4, 2 and 1.
float smoothedValue(int x, int y, std::uint32_t seed) {
    float sum = 0;
    for (int j = -1; j <= 1; ++j)
        for (int i = -1; i <= 1; ++i)
            sum += randomValue(x + i, y + j, seed) * static_cast<float>((2 - i * i) * (2 - j * j));
    return sum / 16;
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

// Smooth steps from 0 to 1: without a jump in the second derivative, and half a cosine wave.
float faded(float t) {
    return t * t * t * (t * (t * 6 - 15) + 10);
}
float rounded(float t) {
    return 0.5f - 0.5f * std::cos(t * std::numbers::pi_v<float>);
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

KVN_CLONES void addValues(const float* __restrict base, float cells, float weight, int count,
                          float* __restrict out) {
    for (int x = 0; x < count; ++x) {
        const float place = static_cast<float>(x) * cells;
        const int i = static_cast<int>(place);
        // Half a cosine wave by its series about the middle, within 2e-6.
        const float u = (place - static_cast<float>(i) - 0.5f) * std::numbers::pi_v<float>;
        const float q = u * u;
        const float sine =
            u * (1 + q * (-1.0f / 6 + q * (1.0f / 120 + q * (-1.0f / 5040 + q * (1.0f / 362880)))));
        out[x] += weight * (base[i] + (0.5f + 0.5f * sine) * (base[i + 1] - base[i]));
    }
}

} // namespace

Octave::Octave(NoiseKind kind, int width, double cell, std::uint32_t seed)
    : kind_(kind), width_(width), cell_(cell), seed_(seed) {
    const auto points = static_cast<std::size_t>(width / cell) + 3;
    for (Line* line : {&upper_, &lower_}) {
        line->x.resize(points);
        line->y.resize(points);
    }
    base_.resize(points);
    slope_.resize(points);
}

void Octave::fillLine(int gridY, Line& line) const {
    static const auto table = directions();
    for (std::size_t i = 0; i < line.x.size(); ++i) {
        const int gridX = static_cast<int>(i);
        if (kind_ == NoiseKind::Value)
            line.x[i] = smoothedValue(gridX, gridY, seed_);
        else
            std::tie(line.x[i], line.y[i]) = table[hashed(gridX, gridY, seed_) % directionCount];
    }
}

void Octave::addRow(int y, float weight, float* out) {
    const double place = y / cell_;
    const int gridY = static_cast<int>(place);
    if (gridY == gridY_ + 1) {
        std::swap(upper_, lower_);
        fillLine(gridY + 1, lower_);
    } else if (gridY != gridY_) {
        fillLine(gridY, upper_);
        fillLine(gridY + 1, lower_);
    }
    gridY_ = gridY;
    const auto t = static_cast<float>(place - gridY);
    const auto cells = static_cast<float>(1 / cell_);
    if (kind_ == NoiseKind::Value) {
        const float share = rounded(t);
        for (std::size_t i = 0; i < base_.size(); ++i)
            base_[i] = upper_.x[i] + share * (lower_.x[i] - upper_.x[i]);
        return addValues(base_.data(), cells, weight, width_, out);
    }
    const float share = faded(t);
    for (std::size_t i = 0; i < base_.size(); ++i) {
        const float above = upper_.y[i] * t, below = lower_.y[i] * (t - 1);
        base_[i] = above + share * (below - above);
        slope_[i] = upper_.x[i] + share * (lower_.x[i] - upper_.x[i]);
    }
    constexpr double wide = 24;
    const auto add = cell_ >= wide ? addWideGradients : addGradients;
    add(base_.data(), slope_.data(), cells, weight, width_, out);
}

} // namespace kvn::imaging
