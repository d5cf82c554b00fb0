#include <algorithm>
#include <cmath>
#include <numeric>
#include <queue>
#include <span>
#include <vector>

#include "imaging/quantize_cluster.h"

namespace kvn::imaging {

namespace {

constexpr std::size_t axes = Cloud::axes;
using Square = std::array<Center, axes>;

struct Moments {
    double weight = 0;
    Center mean{};
    Square scatter{}; // sum of weight * (x - mean)(x - mean)^T
};

using Indices = std::span<std::uint32_t>;

Center placeOf(const Cloud& cloud, std::uint32_t i) {
    Center place;
    for (std::size_t k = 0; k < axes; ++k)
        place[k] = cloud.place[k][i];
    return place;
}

Moments momentsOf(const Cloud& cloud, Indices indices) {
    Moments m;
    for (const std::uint32_t i : indices) {
        const double w = cloud.weight[i];
        const Center p = placeOf(cloud, i);
        m.weight += w;
        for (std::size_t k = 0; k < axes; ++k) {
            m.mean[k] += w * p[k];
            for (std::size_t l = 0; l <= k; ++l)
                m.scatter[k][l] += w * p[k] * p[l];
        }
    }
    for (double& value : m.mean)
        value /= m.weight;
    for (std::size_t k = 0; k < axes; ++k)
        for (std::size_t l = 0; l <= k; ++l) {
            m.scatter[k][l] -= m.weight * m.mean[k] * m.mean[l];
            m.scatter[l][k] = m.scatter[k][l];
        }
    return m;
}

// The direction of the largest spread, by power iteration. Length 1; zero for a single point.
Center longestDirection(const Square& scatter) {
    std::size_t widest = 0;
    for (std::size_t k = 1; k < axes; ++k)
        if (scatter[k][k] > scatter[widest][widest]) widest = k;
    Center direction = scatter[widest];
    for (int round = 0; round < 24; ++round) {
        Center next{};
        for (std::size_t k = 0; k < axes; ++k)
            for (std::size_t l = 0; l < axes; ++l)
                next[k] += scatter[k][l] * direction[l];
        double length = 0;
        for (const double value : next)
            length += value * value;
        if (length <= 1e-12) return {};
        for (double& value : next)
            value /= std::sqrt(length);
        direction = next;
    }
    return direction;
}

double along(const Center& direction, const Center& place) {
    double sum = 0;
    for (std::size_t k = 0; k < axes; ++k)
        sum += direction[k] * place[k];
    return sum;
}

// A part of the cloud and the best cut through it.
struct Piece {
    Indices indices;
    Center mean{};
    Center direction{};
    double threshold = 0;
    double gain = 0; // how much the cut lowers the sum of squared distances; 0: no cut
    bool operator<(const Piece& other) const { return gain < other.gain; }
};

// Projects the points on the direction, sorts them into slots, and finds the slot border where
// the two sides' means are farthest apart, weighted (N. Otsu 1979).
void findCut(const Cloud& cloud, Piece& piece) {
    constexpr std::size_t slots = 256;
    double low = INFINITY, high = -INFINITY;
    for (const std::uint32_t i : piece.indices) {
        const double t = along(piece.direction, placeOf(cloud, i));
        low = std::min(low, t);
        high = std::max(high, t);
    }
    if (!(high - low > 1e-9)) return;
    const double width = (high - low) / slots;
    std::array<double, slots> weight{}, sum{};
    double totalWeight = 0, totalSum = 0;
    for (const std::uint32_t i : piece.indices) {
        const double t = along(piece.direction, placeOf(cloud, i)), w = cloud.weight[i];
        const auto slot = std::min(slots - 1, static_cast<std::size_t>((t - low) / width));
        weight[slot] += w;
        sum[slot] += w * t;
        totalWeight += w;
        totalSum += w * t;
    }
    double leftWeight = 0, leftSum = 0;
    for (std::size_t slot = 0; slot + 1 < slots; ++slot) {
        leftWeight += weight[slot];
        leftSum += sum[slot];
        const double rightWeight = totalWeight - leftWeight;
        if (leftWeight <= 0 || rightWeight <= 0) continue;
        const double apart = leftSum / leftWeight - (totalSum - leftSum) / rightWeight;
        const double gain = apart * apart * leftWeight * rightWeight / totalWeight;
        if (gain <= piece.gain) continue;
        piece.gain = gain;
        piece.threshold = low + width * static_cast<double>(slot + 1);
    }
}

Piece makePiece(const Cloud& cloud, Indices indices) {
    const Moments moments = momentsOf(cloud, indices);
    Piece piece{indices, moments.mean, longestDirection(moments.scatter)};
    if (indices.size() > 1) findCut(cloud, piece);
    return piece;
}

} // namespace

std::vector<Center> cutCloud(const Cloud& cloud, std::size_t count) {
    std::vector<std::uint32_t> order(cloud.size());
    std::iota(order.begin(), order.end(), 0u);
    std::priority_queue<Piece> open;
    std::vector<Center> centers;
    open.push(makePiece(cloud, order));
    while (!open.empty()) {
        const Piece piece = open.top();
        open.pop();
        const auto isLeft = [&](std::uint32_t i) {
            return along(piece.direction, placeOf(cloud, i)) < piece.threshold;
        };
        const auto middle =
            std::stable_partition(piece.indices.begin(), piece.indices.end(), isLeft);
        const auto left = static_cast<std::size_t>(middle - piece.indices.begin());
        if (piece.gain <= 0 || left == 0 || left == piece.indices.size() ||
            centers.size() + open.size() + 1 >= count) {
            centers.push_back(piece.mean);
            continue;
        }
        open.push(makePiece(cloud, piece.indices.first(left)));
        open.push(makePiece(cloud, piece.indices.subspan(left)));
    }
    return centers;
}

} // namespace kvn::imaging
