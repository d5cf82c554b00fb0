#include "imaging/operations/art/streaks.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "imaging/operations/filters/padded_rows.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

// Sums are kept in 1/128 of a level, weights in 1/65536.
constexpr int fraction = 7;

struct Tap {
    int row, column;
    std::uint16_t weight;
};

struct Taps {
    std::vector<Tap> list{};
    int rows = 0, columns = 0; // how far they reach on either side
};

// The line: `major` pixels along the longer axis, on which it moves by `slope` along the other.
struct Line {
    double major, slope;
    bool steep; // the longer axis is the vertical one
};

// One pixel of the line, `place` along the longer axis. Between two pixels of the other axis it
// counts for both.
void addPlace(Taps& taps, const Line& line, int place, double weight) {
    const double minor = place * line.slope, floor = std::floor(minor + 1e-9);
    const double shares[2] = {1 - (minor - floor), minor - floor};
    for (int i = 0; i < 2; ++i) {
        const auto units = std::lround(weight * shares[i] * 65536);
        if (units <= 0) continue;
        const int other = static_cast<int>(floor) + i;
        const Tap tap{line.steep ? place : other, line.steep ? other : place,
                      static_cast<std::uint16_t>(std::min(units, 65535L))};
        taps.list.push_back(tap);
        taps.rows = std::max(taps.rows, std::abs(tap.row));
        taps.columns = std::max(taps.columns, std::abs(tap.column));
    }
}

// The line as `count` means of `block` pixels each, and the single pixels that are left at its
// ends. Count and block are odd, so that everything has a middle.
struct Kernel {
    Taps block{}, blocks{}, singles{};

    explicit Kernel(const Line& line) {
        const int reach = static_cast<int>(std::ceil((line.major - 1) / 2 - 1e-9));
        const int inner = 2 * reach - 1;
        const double weight = 1 / line.major, end = (line.major - inner) / 2;
        int length = 1, count = 1;
        for (int n = 3; n <= inner / 3; n += 2) {
            const int m = inner / n - 1 + inner / n % 2;
            const auto cost = [&](int a, int b) { return a + b + (inner - a * b); };
            if (m >= 3 && cost(n, m) < (count == 1 ? inner : cost(length, count)))
                length = n, count = m;
        }
        const int covered = count == 1 ? -1 : length * count / 2;
        if (count > 1) {
            for (int k = -(length / 2); k <= length / 2; ++k)
                addPlace(block, line, k, 1.0 / length);
            for (int k = -(count / 2); k <= count / 2; ++k)
                addPlace(blocks, line, k * length, weight * length);
        }
        for (int k = -reach; k <= reach; ++k)
            if (std::abs(k) > covered)
                addPlace(singles, line, k, std::abs(k) == reach ? weight * end : weight);
    }
};

constexpr std::size_t piece = 1024;

KVN_CLONES void addTap(const std::uint8_t* __restrict in, std::uint16_t weight,
                       std::uint16_t* __restrict sums, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto value = static_cast<std::uint16_t>(in[i] << fraction);
        sums[i] = static_cast<std::uint16_t>(sums[i] +
                                             ((static_cast<std::uint32_t>(value) * weight) >> 16));
    }
}

KVN_CLONES void addTap(const std::uint16_t* __restrict in, std::uint16_t weight,
                       std::uint16_t* __restrict sums, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        sums[i] = static_cast<std::uint16_t>(sums[i] +
                                             ((static_cast<std::uint32_t>(in[i]) * weight) >> 16));
}

KVN_CLONES void toLevels(const std::uint16_t* __restrict sums, std::uint8_t* __restrict out,
                         std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const int level = (sums[i] + (1 << (fraction - 1))) >> fraction;
        out[i] = static_cast<std::uint8_t>(level < 255 ? level : 255);
    }
}

// Adds up the entries from `begin` on; `rows[k]` is the row k - reach, `origin` the entry of column
// 0.
template <class T>
void addTaps(const Taps& taps, const T* const* rows, std::size_t origin, int channels,
             std::size_t begin, std::uint16_t* sums, std::size_t count) {
    for (const Tap& tap : taps.list)
        addTap(rows[tap.row + taps.rows] + static_cast<std::ptrdiff_t>(origin + begin) +
                   static_cast<std::ptrdiff_t>(tap.column) * channels,
               tap.weight, sums, count);
}

// Every product loses half a unit on average.
std::uint16_t startFor(const Taps& a, const Taps& b) {
    return static_cast<std::uint16_t>((a.list.size() + b.list.size()) / 2);
}

// Makes the rows of one band, from the top downwards.
class Rows {
  public:
    Rows(const ConstView& view, const Kernel& kernel)
        : view_(view), kernel_(kernel),
          channels_(static_cast<std::size_t>(bytesPerPixel(view.type))),
          side_(static_cast<std::size_t>(kernel.blocks.columns)),
          inner_(view, kernel.block.rows, kernel.block.rows,
                 kernel.blocks.columns + kernel.block.columns),
          outer_(view, kernel.singles.rows, kernel.singles.rows, kernel.singles.columns),
          means_(static_cast<std::size_t>(2 * kernel.blocks.rows + 1)), made_(means_.size(), none),
          around_(means_.size()) {}

    void make(int y, std::uint8_t* out) {
        const bool hasBlocks = !kernel_.blocks.list.empty();
        const int reach = kernel_.blocks.rows;
        for (int k = -reach; hasBlocks && k <= reach; ++k)
            around_[static_cast<std::size_t>(k + reach)] = meansOf(y + k);
        const std::uint8_t* const* rows = outer_.around(y);
        const std::size_t count = channels_ * static_cast<std::size_t>(view_.width);
        const std::size_t outerSide = static_cast<std::size_t>(kernel_.singles.columns) * channels_;
        std::uint16_t sums[piece];
        for (std::size_t i = 0; i < count; i += piece) {
            const std::size_t n = std::min(piece, count - i);
            std::fill_n(sums, n, startFor(kernel_.blocks, kernel_.singles));
            addTaps(kernel_.blocks, around_.data(), side_ * channels_, static_cast<int>(channels_),
                    i, sums, n);
            addTaps(kernel_.singles, rows, outerSide, static_cast<int>(channels_), i, sums, n);
            toLevels(sums, out + i, n);
        }
    }

  private:
    static constexpr int none = -1'000'000;

    // The means of the blocks around the pixels of row y, `side_` pixels wider on both sides.
    const std::uint16_t* meansOf(int y) {
        const int size = static_cast<int>(means_.size());
        const auto place = static_cast<std::size_t>((y % size + size) % size);
        std::vector<std::uint16_t>& row = means_[place];
        if (made_[place] == y) return row.data();
        const std::size_t count = channels_ * (static_cast<std::size_t>(view_.width) + 2 * side_);
        row.resize(count);
        const std::uint8_t* const* rows = inner_.around(y);
        const std::size_t origin = static_cast<std::size_t>(kernel_.block.columns) * channels_;
        for (std::size_t i = 0; i < count; i += piece) {
            const std::size_t n = std::min(piece, count - i);
            std::fill_n(row.data() + i, n, startFor(kernel_.block, {}));
            addTaps(kernel_.block, rows, origin, static_cast<int>(channels_), i, row.data() + i, n);
        }
        made_[place] = y;
        return row.data();
    }

    const ConstView view_;
    const Kernel& kernel_;
    const std::size_t channels_, side_;
    PaddedRows inner_, outer_;
    std::vector<std::vector<std::uint16_t>> means_;
    std::vector<int> made_;
    std::vector<const std::uint16_t*> around_;
};

} // namespace

Raster streaked(const Raster& source, double length, double across, double down, Task& task) {
    const bool steep = std::abs(down) > std::abs(across);
    const double longer = steep ? down : across, shorter = steep ? across : down;
    const Line line{length * std::abs(longer), shorter / longer, steep};
    if (line.major < 1.01) return source;
    const Kernel kernel(line);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    const int reach = kernel.block.rows + kernel.blocks.rows + kernel.singles.rows;
    parallelRows(
        from.height, task,
        [&](int y0, int y1) {
            Rows rows(from, kernel);
            for (int y = y0; y < y1; ++y)
                rows.make(y, to.row(y));
        },
        std::max(200, 2 * reach));
    return result;
}

} // namespace kvn::imaging
