#include "imaging/operations/retouch/red_patches.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <span>

namespace kvn::imaging {
namespace {

constexpr int reach = 2; // pixels from one to the next that count as touching

// Sets of runs that have been found to touch: each points to an earlier one.
class Sets {
  public:
    explicit Sets(std::size_t count) : parent_(count) {
        std::iota(parent_.begin(), parent_.end(), std::size_t{0});
    }
    std::size_t find(std::size_t i) {
        while (parent_[i] != i)
            i = parent_[i] = parent_[parent_[i]];
        return i;
    }
    void join(std::size_t a, std::size_t b) {
        a = find(a);
        b = find(b);
        parent_[std::max(a, b)] = std::min(a, b);
    }

  private:
    std::vector<std::size_t> parent_;
};

using Row = std::span<const MarkedRun>;

// The runs of each row.
std::vector<Row> rowsOf(const std::vector<MarkedRun>& runs) {
    std::vector<Row> rows;
    for (std::size_t begin = 0, end; begin < runs.size(); begin = end) {
        end = begin;
        while (end < runs.size() && runs[end].y == runs[begin].y)
            ++end;
        rows.push_back({&runs[begin], end - begin});
    }
    return rows;
}

// Both rows are in order: whichever run ends first touches nothing further.
void joinRows(Row a, Row b, const MarkedRun* first, Sets& sets) {
    for (std::size_t i = 0, k = 0; i < a.size() && k < b.size();) {
        if (a[i].x0 < b[k].x1 + reach && b[k].x0 < a[i].x1 + reach)
            sets.join(static_cast<std::size_t>(&a[i] - first),
                      static_cast<std::size_t>(&b[k] - first));
        if (a[i].x1 < b[k].x1)
            ++i;
        else
            ++k;
    }
}

void joinTouching(const std::vector<MarkedRun>& runs, Sets& sets) {
    const std::vector<Row> rows = rowsOf(runs);
    for (std::size_t r = 0; r < rows.size(); ++r) {
        if (rows[r].size() > 1)
            joinRows(rows[r].first(rows[r].size() - 1), rows[r].subspan(1), runs.data(), sets);
        for (std::size_t above = r; above-- > 0 && rows[above][0].y >= rows[r][0].y - reach;)
            joinRows(rows[above], rows[r], runs.data(), sets);
    }
}

struct Moments {
    double n = 0, x = 0, y = 0, xx = 0, yy = 0, xy = 0;

    void add(const MarkedRun& run) {
        for (double px = run.x0; px < run.x1; ++px) {
            n += 1;
            x += px;
            xx += px * px;
        }
        const double count = run.x1 - run.x0, sumX = count * (run.x0 + run.x1 - 1) / 2;
        y += count * run.y;
        yy += count * run.y * run.y;
        xy += sumX * run.y;
    }
};

void finish(Patch& patch, const Moments& m) {
    patch.area = static_cast<std::int64_t>(m.n);
    patch.middleX = m.x / m.n;
    patch.middleY = m.y / m.n;
    // A pixel has an extent of its own: 1/12.
    const double a = m.xx / m.n - patch.middleX * patch.middleX + 1.0 / 12;
    const double b = m.yy / m.n - patch.middleY * patch.middleY + 1.0 / 12;
    const double c = m.xy / m.n - patch.middleX * patch.middleY;
    const double root = std::sqrt((a - b) * (a - b) / 4 + c * c);
    patch.elongation = std::sqrt(((a + b) / 2 + root) / std::max(1e-9, (a + b) / 2 - root));
    const double box = double(patch.bounds.width) * patch.bounds.height;
    patch.filling = m.n / (box * std::numbers::pi / 4);
}

} // namespace

std::vector<Patch> joinRuns(std::vector<MarkedRun>& runs) {
    Sets sets(runs.size());
    joinTouching(runs, sets);
    std::vector<Patch> patches;
    std::vector<Moments> moments;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const std::size_t root = sets.find(i);
        if (root == i) {
            runs[i].patch = static_cast<int>(patches.size());
            patches.emplace_back();
            moments.emplace_back();
        } else {
            runs[i].patch = runs[root].patch;
        }
        const auto index = static_cast<std::size_t>(runs[i].patch);
        Patch& patch = patches[index];
        patch.bounds = patch.bounds.united({runs[i].x0, runs[i].y, runs[i].x1 - runs[i].x0, 1});
        moments[index].add(runs[i]);
    }
    for (std::size_t i = 0; i < patches.size(); ++i)
        finish(patches[i], moments[i]);
    return patches;
}

} // namespace kvn::imaging
