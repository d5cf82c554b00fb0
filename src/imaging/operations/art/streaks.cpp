#include "imaging/operations/art/streaks.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <vector>

#include "imaging/operations/art/streak_kernels.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

// Weights are in 1/65536, sums in 1/256 of a level.
struct Tap {
    int row, column;
    std::uint16_t weight;
};

struct Taps {
    std::vector<Tap> list{};
    int first = 0, last = 0; // the rows that they reach from the middle
    int columns = 0;         // how far they reach on either side

    int rows() const { return last - first + 1; }
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
        const bool isFirst = taps.list.empty();
        taps.first = isFirst ? tap.row : std::min(taps.first, tap.row);
        taps.last = isFirst ? tap.row : std::max(taps.last, tap.row);
        taps.columns = std::max(taps.columns, std::abs(tap.column));
        taps.list.push_back(tap);
    }
}

// Gives what rounding lost to the middle tap, so that flat places stay as they are.
void makeWhole(Taps& middle, std::initializer_list<const Taps*> all) {
    long rest = 65536;
    for (const Taps* taps : all)
        for (const Tap& tap : taps->list)
            rest -= tap.weight;
    std::uint16_t& weight = middle.list[middle.list.size() / 2].weight;
    weight = static_cast<std::uint16_t>(std::clamp(weight + rest, 1L, 65535L));
}

// The line as `count` means of `block` pixels each, and the single pixels that are left: those
// before the blocks and those behind them, or all of them behind. Count and block are odd, so that
// everything has a middle.
struct Kernel {
    Taps block{}, blocks{}, before{}, behind{};

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
            makeWhole(block, {&block});
        }
        for (int k = -reach; k <= reach; ++k)
            if (std::abs(k) > covered)
                addPlace(k < 0 && count > 1 ? before : behind, line, k,
                         std::abs(k) == reach ? weight * end : weight);
        makeWhole(count > 1 ? blocks : behind, {&blocks, &before, &behind});
    }
    int reach() const {
        return std::max({block.last + blocks.last, behind.last, -behind.first, -before.first});
    }
};

constexpr std::size_t piece = 1024;
constexpr std::size_t slack = 256; // entries behind a row that whole vectors reach

// Rows of samples that are made when they are first wanted; the last ones are kept.
template <class T>
class Ring {
  public:
    Ring(int rows, std::size_t samples)
        : rows_(static_cast<std::size_t>(rows)), made_(rows_.size(), none), samples_(samples) {}

    template <class Make>
    const T* row(int y, const Make& make) {
        const int size = static_cast<int>(rows_.size());
        const auto place = static_cast<std::size_t>((y % size + size) % size);
        if (made_[place] != y) {
            rows_[place].resize(samples_ + slack);
            make(rows_[place].data());
            made_[place] = y;
        }
        return rows_[place].data();
    }

  private:
    static constexpr int none = -1'000'000'000;
    std::vector<std::vector<T>> rows_;
    std::vector<int> made_;
    std::size_t samples_;
};

// The sum over some taps in rows of their own.
template <class T>
class TapSum {
  public:
    explicit TapSum(const Taps& taps) : taps_(taps) {
        for (const Tap& tap : taps.list)
            weights_.push_back(tap.weight);
        starts_.resize(weights_.size());
        shifted_.resize(weights_.size());
    }
    // Every product loses half a unit on average.
    std::size_t lost() const { return weights_.size(); }

    // `rowAt(k)` is the row k below the middle one and begins as far before as the taps reach.
    template <class RowAt>
    void moveTo(int channels, const RowAt& rowAt) {
        for (std::size_t k = 0; k < starts_.size(); ++k)
            starts_[k] = rowAt(taps_.list[k].row) +
                         std::ptrdiff_t{taps_.list[k].column + taps_.columns} * channels;
    }
    void add(std::size_t begin, std::uint16_t* sums, std::size_t count) {
        if (starts_.empty()) return;
        shiftTo(begin);
        addTaps(shifted_.data(), weights_.data(), weights_.size(), sums, count);
    }
    void mean(std::size_t begin, std::uint16_t start, std::uint8_t* out, std::size_t count) {
        shiftTo(begin);
        meanOfTaps(shifted_.data(), weights_.data(), weights_.size(), start, out, count);
    }

  private:
    void shiftTo(std::size_t begin) {
        for (std::size_t k = 0; k < starts_.size(); ++k)
            shifted_[k] = starts_[k] + begin;
    }

    const Taps& taps_;
    std::vector<std::uint16_t> weights_;
    std::vector<const T*> starts_, shifted_;
};

void readPixels(const std::uint8_t* pixels, std::uint8_t* out, int count, int channels) {
    std::memcpy(out, pixels, static_cast<std::size_t>(count) * static_cast<std::size_t>(channels));
}

// In 1/256 of a level, and colours times alpha.
template <int channels>
inline __attribute__((always_inline)) void
multiplyPixels(const std::uint8_t* __restrict pixels, std::uint16_t* __restrict out, int count) {
    for (int x = 0; x < count; ++x, pixels += channels, out += channels) {
        const int alpha = pixels[channels - 1];
        for (int c = 0; c < channels - 1; ++c)
            out[c] = static_cast<std::uint16_t>(
                static_cast<float>(pixels[c] * alpha) * (256.0f / 255) + 0.5f);
        out[channels - 1] = static_cast<std::uint16_t>(alpha << 8);
    }
}
KVN_CLONES void readPixels(const std::uint8_t* pixels, std::uint16_t* out, int count,
                           int channels) {
    if (channels == 4) return multiplyPixels<4>(pixels, out, count);
    multiplyPixels<2>(pixels, out, count);
}

// The pixels from `begin` to `end` of a row, which may lie beyond its ends.
template <class T>
void readRow(const ConstView& view, int y, int begin, int end, T* out) {
    const int channels = bytesPerPixel(view.type), first = std::max(begin, 0);
    const int last = std::min(end, view.width);
    T* const inside = out + std::ptrdiff_t{first - begin} * channels;
    readPixels(view.row(y) + std::ptrdiff_t{first} * channels, inside, last - first, channels);
    for (T* to = out; to != inside; to += channels)
        std::copy_n(inside, channels, to);
    T* to = inside + std::ptrdiff_t{last - first} * channels;
    for (int x = last; x < end; ++x, to += channels)
        std::copy_n(to - channels, channels, to);
}

KVN_CLONES void toLevels(const std::uint16_t* __restrict sums, std::uint8_t* __restrict out,
                         std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const int level = (sums[i] + 128) >> 8;
        out[i] = static_cast<std::uint8_t>(level < 255 ? level : 255);
    }
}

template <int channels>
inline __attribute__((always_inline)) void
toStraight(const std::uint16_t* __restrict sums, const std::uint8_t* __restrict pixels,
           std::uint8_t* __restrict out, std::size_t count) {
    for (std::size_t i = 0; i < count; i += channels) {
        const int alpha = sums[i + channels - 1], level = (alpha + 128) >> 8;
        const float scale = 255.0f / static_cast<float>(alpha > 0 ? alpha : 1);
        for (std::size_t c = 0; c < channels - 1; ++c) {
            const int color = static_cast<int>(static_cast<float>(sums[i + c]) * scale + 0.5f);
            out[i + c] = static_cast<std::uint8_t>(level == 0    ? pixels[i + c]
                                                   : color < 255 ? color
                                                                 : 255);
        }
        out[i + channels - 1] = static_cast<std::uint8_t>(level < 255 ? level : 255);
    }
}
// Back from colours times alpha; where nothing is visible, those of `pixels`.
KVN_CLONES void toStraight(int channels, const std::uint16_t* sums, const std::uint8_t* pixels,
                           std::uint8_t* out, std::size_t count) {
    if (channels == 4) return toStraight<4>(sums, pixels, out, count);
    toStraight<2>(sums, pixels, out, count);
}

// Makes some columns of one band, from the top downwards. T: bytes, or words for colours that are
// multiplied by their alpha.
template <class T>
class Stripe {
  public:
    Stripe(const ConstView& view, const Kernel& kernel, int begin, int end)
        : view_(view), kernel_(kernel), begin_(begin), end_(end),
          channels_(bytesPerPixel(view.type)), block_(kernel.block), before_(kernel.before),
          behind_(kernel.behind), blocks_(kernel.blocks),
          inner_(kernel.block.rows(), samples(kernel.blocks.columns + kernel.block.columns)),
          upper_(kernel.before.rows(), samples(kernel.before.columns)),
          lower_(kernel.behind.rows(), samples(kernel.behind.columns)),
          means_(kernel.blocks.rows(), samples(kernel.blocks.columns)) {}

    void make(int y, std::uint8_t* out) {
        if (blocks_.lost() > 0) blocks_.moveTo(channels_, [&](int k) { return meansOf(y + k); });
        aim(before_, upper_, kernel_.before.columns, y);
        aim(behind_, lower_, kernel_.behind.columns, y);
        const auto start =
            static_cast<std::uint16_t>((blocks_.lost() + before_.lost() + behind_.lost()) / 2);
        const auto skip = std::ptrdiff_t{begin_} * channels_;
        std::uint16_t sums[piece + slack];
        for (std::size_t i = 0; i < samples(0); i += piece) {
            const std::size_t n = std::min(piece, samples(0) - i);
            if constexpr (sizeof(T) == 1)
                if (n == piece && blocks_.lost() == 0) {
                    behind_.mean(i, start, out + skip + i, n);
                    continue;
                }
            std::fill_n(sums, piece, start);
            blocks_.add(i, sums, n);
            before_.add(i, sums, n);
            behind_.add(i, sums, n);
            if constexpr (sizeof(T) == 1)
                toLevels(sums, out + skip + i, n);
            else
                toStraight(channels_, sums, view_.row(y) + skip + i, out + skip + i, n);
        }
    }

  private:
    // Of the columns and so many more on both sides.
    std::size_t samples(int side) const {
        return static_cast<std::size_t>(end_ - begin_ + 2 * side) *
               static_cast<std::size_t>(channels_);
    }
    void aim(TapSum<T>& sum, Ring<T>& rows, int side, int y) const {
        sum.moveTo(channels_, [&](int k) {
            const int from = std::clamp(y + k, 0, view_.height - 1);
            return rows.row(from,
                            [&](T* row) { readRow(view_, from, begin_ - side, end_ + side, row); });
        });
    }
    // The means of the blocks around the pixels of row y.
    const std::uint16_t* meansOf(int y) {
        return means_.row(y, [&](std::uint16_t* row) {
            const std::size_t count = samples(kernel_.blocks.columns);
            aim(block_, inner_, kernel_.blocks.columns + kernel_.block.columns, y);
            std::fill_n(row, count + slack, static_cast<std::uint16_t>(block_.lost() / 2));
            for (std::size_t i = 0; i < count; i += piece)
                block_.add(i, row + i, std::min(piece, count - i));
        });
    }

    const ConstView view_;
    const Kernel& kernel_;
    const int begin_, end_, channels_;
    TapSum<T> block_, before_, behind_;
    TapSum<std::uint16_t> blocks_;
    Ring<T> inner_, upper_, lower_;
    Ring<std::uint16_t> means_;
};

template <class T>
void streak(const ConstView& from, const View& to, const Kernel& kernel, Task& task) {
    // Stripes whose rows of means take 16 MB.
    constexpr int mostMeans = 8 << 20, narrowest = 512;
    const int widest =
        std::max(narrowest, mostMeans / (kernel.blocks.rows() * bytesPerPixel(from.type)));
    const int stripes = (from.width + widest - 1) / widest;
    const int width = (from.width + stripes - 1) / stripes;
    parallelRows(
        from.height, task,
        [&](int y0, int y1) {
            for (int begin = 0; begin < from.width; begin += width) {
                Stripe<T> stripe(from, kernel, begin, std::min(begin + width, from.width));
                for (int y = y0; y < y1; ++y)
                    stripe.make(y, to.row(y));
            }
        },
        std::max(200, 2 * kernel.reach()));
}

} // namespace

Raster streaked(const Raster& source, double length, double across, double down, Task& task) {
    const bool steep = std::abs(down) > std::abs(across);
    const double longer = steep ? down : across, shorter = steep ? across : down;
    const Line line{length * std::abs(longer), shorter / longer, steep};
    if (line.major < 1.01) return source;
    const Kernel kernel(line);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const auto work = isOpaque(source) ? streak<std::uint8_t> : streak<std::uint16_t>;
    work(source.view(), result.edit(), kernel, task);
    return result;
}

} // namespace kvn::imaging
