#include "imaging/operations/art/cells.h"

#include <algorithm>
#include <cmath>

#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

constexpr int margin = 3;
constexpr int reach = 2; // squares around a place that are looked at
constexpr int candidates = (2 * reach + 1) * (2 * reach + 1);
constexpr int lanes = 16;

typedef float Reals __attribute__((vector_size(64)));
typedef std::int32_t Wholes __attribute__((vector_size(64)));

struct Candidates {
    float x[candidates], y[candidates];
    int seed[candidates];
};

// The two nearest candidates of sixteen places, by number. The number of a candidate replaces the
// last bits of its squared distance, so that ordering the distances orders the numbers as well.
KVN_CLONES void nearestTwo(const Candidates& all, const float* placeX, const float* placeY,
                           std::int32_t* first, std::int32_t* second) {
    constexpr std::int32_t numberBits = 31;
    Reals x, y;
    __builtin_memcpy(&x, placeX, sizeof x);
    __builtin_memcpy(&y, placeY, sizeof y);
    Reals least = x * 0 + 1e30f, next = least;
    for (std::int32_t k = 0; k < candidates; ++k) {
        const Reals dx = x - all.x[k], dy = y - all.y[k];
        const Reals squared = dx * dx + dy * dy;
        const Reals numbered = (Reals)(((Wholes)squared & ~numberBits) | k);
        const Reals greater = numbered > least ? numbered : least;
        least = numbered < least ? numbered : least;
        next = greater < next ? greater : next;
    }
    const Wholes a = (Wholes)least & numberBits, b = (Wholes)next & numberBits;
    __builtin_memcpy(first, &a, sizeof a);
    __builtin_memcpy(second, &b, sizeof b);
}

} // namespace

std::uint32_t randomBits(std::uint32_t number, std::uint32_t seed) {
    // The finalizer of MurmurHash3.
    std::uint32_t h = number * 0x9E3779B1u + seed * 0xC2B2AE3Du;
    h = (h ^ (h >> 16)) * 0x85EBCA6Bu;
    h = (h ^ (h >> 13)) * 0xC2B2AE35u;
    return h ^ (h >> 16);
}

float randomShare(std::uint32_t number, std::uint32_t seed) {
    return static_cast<float>(randomBits(number, seed) >> 8) * 0x1p-24f;
}

NearSeeds::NearSeeds(int count) {
    const auto size = static_cast<std::size_t>(count);
    seed.resize(size);
    for (std::vector<float>* values : {&x, &y, &otherX, &otherY})
        values->resize(size);
    placeX.resize(size + lanes);
    placeY.resize(size + lanes);
}

Cells::Cells(Size picture, double side, double jitter, std::uint32_t seed)
    : side_(static_cast<float>(side)),
      columns_(static_cast<int>(picture.width / side) + 2 * margin + 1),
      rows_(static_cast<int>(picture.height / side) + 2 * margin + 1) {
    const auto count = static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_);
    x_.reserve(count);
    y_.reserve(count);
    for (int row = 0; row < rows_; ++row)
        for (int column = 0; column < columns_; ++column) {
            const auto number = static_cast<std::uint32_t>(row * columns_ + column);
            const auto placed = [&](int square, std::uint32_t axis) {
                const double off = (randomShare(number, seed + axis) - 0.5) * jitter;
                return static_cast<float>((square - margin + 0.5 + off) * side);
            };
            x_.push_back(placed(column, 0));
            y_.push_back(placed(row, 1));
        }
}

void Cells::find(int y, int count, NearSeeds& near) const {
    const int row = static_cast<int>(static_cast<float>(y) / side_) + margin;
    for (int begin = 0; begin < count;) {
        const int column = static_cast<int>(static_cast<float>(begin) / side_);
        const int next = static_cast<int>(std::ceil(static_cast<float>(column + 1) * side_));
        const int end = std::min(count, std::max(next, begin + 1));
        findRun(column + margin, row, begin, end, near);
        begin = end;
    }
}

void Cells::findRun(int column, int row, int begin, int end, NearSeeds& near) const {
    Candidates all;
    int k = 0;
    for (int j = row - reach; j <= row + reach; ++j)
        for (int i = column - reach; i <= column + reach; ++i, ++k) {
            const int seed =
                std::clamp(j, 0, rows_ - 1) * columns_ + std::clamp(i, 0, columns_ - 1);
            all.seed[k] = seed;
            all.x[k] = seedX(seed);
            all.y[k] = seedY(seed);
        }
    std::int32_t first[lanes], second[lanes];
    for (int at = begin; at < end; at += lanes) {
        nearestTwo(all, near.placeX.data() + at, near.placeY.data() + at, first, second);
        for (int i = 0; i < lanes && at + i < end; ++i) {
            const auto place = static_cast<std::size_t>(at + i);
            near.seed[place] = all.seed[first[i]];
            near.x[place] = all.x[first[i]];
            near.y[place] = all.y[first[i]];
            near.otherX[place] = all.x[second[i]];
            near.otherY[place] = all.y[second[i]];
        }
    }
}

} // namespace kvn::imaging
