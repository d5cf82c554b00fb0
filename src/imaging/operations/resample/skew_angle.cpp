#include "imaging/operations/resample/skew_angle.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

// How much better than the middle one the best of some hundred angles must be, to be more than
// chance: sums of so many random squares come out different by that much now and then.
double leastContrast(int rows) {
    return 1 + 7 * std::sqrt(2.0 / rows);
}

// Edges of the page by upright strips: counts of a strip lie together, top to bottom, with room
// above and below for the slanted lines that leave the page.
struct Strips {
    int count = 0, stripWidth = 8, rows = 0, rowHeight = 1, room = 0;
    std::vector<std::uint8_t> counts;

    void allocate(int pixelWidth) {
        count = (pixelWidth + stripWidth - 1) / stripWidth;
        const double steepest = std::tan((largestSkew + 1) * std::numbers::pi / 180);
        room = static_cast<int>(steepest * pixelWidth / 2 / rowHeight) + 4;
        counts.assign(static_cast<std::size_t>(count) * stripSize(), 0);
    }
    std::size_t stripSize() const {
        return static_cast<std::size_t>(rows) + 2 * static_cast<std::size_t>(room);
    }
    std::uint8_t* strip(int i) {
        return &counts[static_cast<std::size_t>(i) * stripSize() + static_cast<std::size_t>(room)];
    }
    const std::uint8_t* strip(int i) const { return const_cast<Strips*>(this)->strip(i); }
};

// Eight columns of a row from bit `x` on, ink as ones.
class InkRows {
  public:
    InkRows(const ConstView& page, const Rect& area, int paper)
        : page_(page), area_(area), flip_(paper ? 0xFF : 0) {
        const int rest = area.width % 8;
        lastMask_ = rest ? static_cast<std::uint8_t>(0xFF00 >> rest) : 0xFF;
    }
    int bytes() const { return (area_.width + 7) / 8; }
    // A row of the part; beyond its top and bottom there is paper.
    void read(int y, std::uint8_t* out) const {
        const auto size = static_cast<std::size_t>(bytes());
        if (y < 0 || y >= area_.height) {
            std::memset(out, 0, size);
            return;
        }
        const std::uint8_t* row = page_.row(area_.y + y) + area_.x / 8;
        const int shift = area_.x % 8;
        const std::size_t last =
            rowBytes(ImageType::Bit1, page_.width) - 1 - static_cast<std::size_t>(area_.x / 8);
        for (std::size_t i = 0; i < size; ++i) {
            const int pair = row[i] << 8 | (i < last ? row[i + 1] : 0);
            out[i] = static_cast<std::uint8_t>(pair >> (8 - shift) ^ flip_);
        }
        out[size - 1] &= lastMask_;
    }

  private:
    ConstView page_;
    Rect area_;
    int flip_;
    std::uint8_t lastMask_;
};

KVN_CLONES void lowerEdges(const std::uint8_t* above, const std::uint8_t* ink,
                           const std::uint8_t* below, int bytes, std::uint8_t* out) {
    for (int i = 0; i < bytes; ++i) {
        const auto edge = static_cast<std::uint8_t>(ink[i] & ~below[i] & ~above[i]);
        const auto pairs = static_cast<std::uint8_t>(edge - (edge >> 1 & 0x55));
        const auto fours = static_cast<std::uint8_t>((pairs & 0x33) + (pairs >> 2 & 0x33));
        out[i] = static_cast<std::uint8_t>((fours + (fours >> 4)) & 0x0F);
    }
}

// Ink that has paper below it, unless it reaches far up: the lower end of something solid is no
// text. `tall` is how far, in pixels.
Strips edgeStrips(const InkRows& ink, const Rect& area, int tall, Task& task) {
    Strips strips;
    strips.rows = area.height;
    strips.allocate(area.width);
    const auto bytes = static_cast<std::size_t>(ink.bytes());
    parallelRows(area.height, task, [&](int y0, int y1) {
        // Blocks of rows, so that the counts of a strip are written together.
        constexpr int block = 64;
        std::vector<std::uint8_t> above(bytes), own(bytes), below(bytes), edges(block * bytes);
        ink.read(y0, own.data());
        for (int top = y0; top < y1; top += block) {
            const int rows = std::min(block, y1 - top);
            for (int j = 0; j < rows; ++j) {
                ink.read(top + j + 1, below.data());
                ink.read(top + j - tall, above.data());
                lowerEdges(above.data(), own.data(), below.data(), ink.bytes(),
                           &edges[static_cast<std::size_t>(j) * bytes]);
                own.swap(below);
            }
            for (std::size_t i = 0; i < bytes; ++i) {
                std::uint8_t* to = strips.strip(static_cast<int>(i)) + top;
                for (int j = 0; j < rows; ++j)
                    to[j] = edges[static_cast<std::size_t>(j) * bytes + i];
            }
        }
    });
    return strips;
}

// The same with several rows in one, and `columns` strips in one. Counts stay below 256.
Strips reduced(const Strips& fine, int rowsInOne, int columns, int pixelWidth) {
    Strips coarse;
    coarse.stripWidth = fine.stripWidth * columns;
    coarse.rowHeight = rowsInOne;
    coarse.rows = fine.rows / rowsInOne;
    coarse.allocate(pixelWidth);
    for (int i = 0; i < fine.count; ++i) {
        const std::uint8_t* from = fine.strip(i);
        std::uint8_t* to = coarse.strip(i / columns);
        for (int y = 0; y < coarse.rows; ++y)
            for (int k = 0; k < rowsInOne; ++k)
                to[y] = static_cast<std::uint8_t>(to[y] + *from++);
    }
    return coarse;
}

KVN_CLONES void addStrip(const std::uint8_t* __restrict counts, int rows,
                         std::uint16_t* __restrict sums) {
    for (int y = 0; y < rows; ++y)
        sums[y] = static_cast<std::uint16_t>(sums[y] + counts[y]);
}

KVN_CLONES double contrastOf(const std::uint16_t* sums, int rows) {
    float total = 0;
    for (int y = 0; y + 1 < rows; ++y) {
        const auto step = static_cast<float>(sums[y + 1] - sums[y]);
        total += step * step;
    }
    return total;
}

// The sum of the squared differences between neighbouring slanted lines.
double scoreAt(const Strips& strips, double degrees) {
    const double slope = std::tan(degrees * std::numbers::pi / 180);
    std::vector<std::uint16_t> sums(static_cast<std::size_t>(strips.rows), 0);
    const double middle = (strips.count - 1) / 2.0;
    for (int i = 0; i < strips.count; ++i) {
        const double fall = slope * (i - middle) * strips.stripWidth / strips.rowHeight;
        const int shift =
            std::clamp(static_cast<int>(std::lround(fall)), -strips.room, strips.room);
        addStrip(strips.strip(i) + shift, strips.rows, sums.data());
    }
    return contrastOf(sums.data(), strips.rows);
}

struct Sweep {
    double first, step;
    std::vector<double> scores;

    std::size_t best() const {
        return static_cast<std::size_t>(std::ranges::max_element(scores) - scores.begin());
    }
    // Of the best angle: at the top of the parabola through it and its neighbours, or in the middle
    // of several that are equally good, as those are that shift no strip by a whole row.
    double peak() const {
        const std::size_t k = best();
        std::size_t last = k;
        while (last + 1 < scores.size() && scores[last + 1] == scores[k])
            ++last;
        double angle = first + step * static_cast<double>(k + last) / 2;
        if (k == 0 || last != k || k + 1 == scores.size()) return angle;
        const double before = scores[k - 1], top = scores[k], after = scores[k + 1];
        const double bend = before - 2 * top + after;
        if (bend < 0) angle += step * 0.5 * (before - after) / bend;
        return angle;
    }
    double contrast() const {
        std::vector<double> sorted = scores;
        const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
        std::ranges::nth_element(sorted, middle);
        return scores[best()] / std::max(1.0, *middle);
    }
};

Sweep sweep(const Strips& strips, double from, double to, double step, Task& task) {
    const int count = static_cast<int>(std::floor((to - from) / step + 1.5));
    Sweep result{from, step, std::vector<double>(static_cast<std::size_t>(count))};
    parallelRows(
        count, task,
        [&](int k0, int k1) {
            for (int k = k0; k < k1; ++k)
                result.scores[static_cast<std::size_t>(k)] = scoreAt(strips, from + step * k);
        },
        4);
    return result;
}

} // namespace

int paperBit(const ConstView& page, const Rect& area) {
    const InkRows rows(page, area, 0);
    std::vector<std::uint8_t> row(static_cast<std::size_t>(rows.bytes()));
    // A thousand rows are enough to tell.
    const int step = 1 + area.height / 1000;
    std::int64_t more = 0; // ones, less the zeros
    for (int y = 0; y < area.height; y += step) {
        rows.read(y, row.data());
        int ones = 0;
        for (const std::uint8_t byte : row)
            ones += std::popcount(byte);
        more += 2 * ones - area.width;
    }
    return more > 0;
}

double skewAngle(const ConstView& page, const Rect& area, const SkewSearch& search, Task& task) {
    // Where there are fewer pixels each of them tells more.
    const int coarseRows = std::clamp(search.coarseRows, 1, std::clamp(area.width / 400, 1, 8));
    const int fineRows = std::clamp(search.fineRows, 1, std::clamp(area.width / 1000, 1, 8));
    if (area.height < 4 * coarseRows || area.width < 16) return 0;
    const double step = std::clamp(search.step, 0.1, 1.0);
    const InkRows ink(page, area, paperBit(page, area));
    Strips edges;
    {
        const Task::Stage counting(task, 0, 0.3);
        edges = edgeStrips(ink, area, std::max(24, area.width / 36), task);
    }
    Sweep all;
    {
        const Task::Stage sweeping(task, 0.3, 0.7);
        all = sweep(reduced(edges, coarseRows, 2, area.width), -largestSkew - 2 * step,
                    largestSkew + 2 * step, step, task);
    }
    if (all.contrast() < leastContrast(area.height / coarseRows)) return 0;
    const Task::Stage refining(task, 0.7, 1);
    const double about = all.peak();
    const Strips fine = reduced(edges, fineRows, 1, area.width);
    return sweep(fine, about - 1.5 * step, about + 1.5 * step, step / 5, task).peak();
}

} // namespace kvn::imaging
