#include "imaging/quantize_cluster.h"

#include <algorithm>
#include <cmath>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/quantize_cluster.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// The nearest centre of each of the points from `first` to `last`, the lowest of several, and
// the squared distance. Points and outputs are padded to whole vectors.
template <int axes>
void searchNearest(const Cloud& cloud, const std::vector<std::array<float, 4>>& centers,
                   std::size_t first, std::size_t last, std::int32_t* nearest, float* distance) {
    const hn::ScalableTag<float> d;
    const hn::RebindToSigned<decltype(d)> di;
    for (std::size_t i = first; i < last; i += hn::Lanes(d)) {
        const auto x = hn::LoadU(d, &cloud.place[0][i]), y = hn::LoadU(d, &cloud.place[1][i]);
        const auto z = hn::LoadU(d, &cloud.place[2][i]), w = hn::LoadU(d, &cloud.place[3][i]);
        auto best = hn::Set(d, std::numeric_limits<float>::max());
        auto bestIndex = hn::Zero(di);
        auto index = hn::Zero(di);
        for (const auto& c : centers) {
            const auto square = [&](auto v, float at) {
                const auto difference = hn::Sub(v, hn::Set(d, at));
                return hn::Mul(difference, difference);
            };
            auto sum = hn::Add(hn::Add(square(x, c[0]), square(y, c[1])), square(z, c[2]));
            if constexpr (axes == 4) sum = hn::Add(sum, square(w, c[3]));
            const auto closer = hn::Lt(sum, best);
            best = hn::IfThenElse(closer, sum, best);
            bestIndex = hn::IfThenElse(hn::RebindMask(di, closer), index, bestIndex);
            index = hn::Add(index, hn::Set(di, 1));
        }
        hn::StoreU(best, d, distance + i);
        hn::StoreU(bestIndex, di, nearest + i);
    }
}

void searchAny(const Cloud& cloud, const std::vector<std::array<float, 4>>& centers, bool flat,
               std::size_t first, std::size_t last, std::int32_t* nearest, float* distance) {
    if (flat)
        searchNearest<3>(cloud, centers, first, last, nearest, distance);
    else
        searchNearest<4>(cloud, centers, first, last, nearest, distance);
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(searchAny);

namespace {

constexpr std::size_t axes = Cloud::axes;
constexpr std::size_t padding = 64; // floats: the longest vector there is

// One round of the search: which centre each point belongs to, and how far away it is.
class Assignment {
  public:
    Assignment(const Cloud& cloud, int threads)
        : cloud_(cloud), nearest_(cloud.size() + padding), distance_(cloud.size() + padding),
          flat_(std::ranges::all_of(cloud.place[3],
                                    [&](float a) { return a == cloud.place[3][0]; })) {
        quiet_.threads = threads;
        for (auto& axis : cloud_.place)
            axis.resize(cloud.size() + padding);
    }

    // Gives the sum of the weighted squared distances.
    double search(const std::vector<Center>& centers) {
        std::vector<std::array<float, axes>> grid;
        for (const Center& center : centers) {
            std::array<float, axes> place;
            for (std::size_t k = 0; k < axes; ++k)
                place[k] = static_cast<float>(std::nearbyint(center[k]));
            grid.push_back(place);
        }
        constexpr int chunk = 256; // points
        const int chunks = static_cast<int>((cloud_.size() + chunk - 1) / chunk);
        parallelRows(chunks, quiet_, [&](int c0, int c1) {
            const std::size_t first = static_cast<std::size_t>(c0) * chunk;
            const std::size_t last = std::min(static_cast<std::size_t>(c1) * chunk, cloud_.size());
            HWY_DYNAMIC_DISPATCH(searchAny)
            (cloud_, grid, flat_, first, last, nearest_.data(), distance_.data());
        });
        double error = 0;
        for (std::size_t i = 0; i < cloud_.size(); ++i)
            error += errorOf(i);
        return error;
    }

    void moveToMeans(std::vector<Center>& centers) {
        std::vector<Center> sums(centers.size(), Center{});
        std::vector<double> weights(centers.size());
        for (std::size_t i = 0; i < cloud_.size(); ++i) {
            const auto c = static_cast<std::size_t>(nearest_[i]);
            const double w = cloud_.weight[i];
            weights[c] += w;
            for (std::size_t k = 0; k < axes; ++k)
                sums[c][k] += w * cloud_.place[k][i];
        }
        for (std::size_t c = 0; c < centers.size(); ++c) {
            if (weights[c] <= 0) {
                centers[c] = takeWorst();
                continue;
            }
            for (std::size_t k = 0; k < axes; ++k)
                centers[c][k] = sums[c][k] / weights[c];
        }
    }

  private:
    double errorOf(std::size_t i) const {
        return static_cast<double>(distance_[i]) * cloud_.weight[i];
    }
    // The point with the largest error, which then counts as served.
    Center takeWorst() {
        std::size_t worst = 0;
        for (std::size_t i = 1; i < cloud_.size(); ++i)
            if (errorOf(i) > errorOf(worst)) worst = i;
        distance_[worst] = 0;
        Center place;
        for (std::size_t k = 0; k < axes; ++k)
            place[k] = cloud_.place[k][worst];
        return place;
    }

    Cloud cloud_; // padded
    Task quiet_;  // a round is too short to report
    std::vector<std::int32_t> nearest_;
    std::vector<float> distance_;
    bool flat_;
};

} // namespace

void refineCenters(const Cloud& cloud, std::vector<Center>& centers, int rounds, Task& task) {
    constexpr double leastGain = 0.002;
    Assignment assignment(cloud, task.threads);
    double before = assignment.search(centers);
    for (int round = 0; round < rounds; ++round) {
        task.report(static_cast<double>(round) / rounds);
        assignment.moveToMeans(centers);
        const double after = assignment.search(centers);
        if (after > before * (1 - leastGain)) break;
        before = after;
    }
}

} // namespace kvn::imaging
#endif
