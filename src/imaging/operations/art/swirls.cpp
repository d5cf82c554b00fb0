#include "imaging/operations/art/swirls.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <utility>

namespace kvn::imaging {
namespace {

// A turn or a change of size about the middle of the picture: where a pixel comes from.
struct Move {
    double along, across; // source x grows by `along` a column and by `-across` a row
};

// Eight words: two pixels of four channels each. What a smaller pixel leaves is filled by its
// neighbours and not used.
typedef std::uint16_t Words __attribute__((vector_size(16)));
typedef std::uint8_t Bytes __attribute__((vector_size(8)));

// Two neighbouring pixels. Joined in a register: storing halves and loading the whole is slow.
template <int channels>
inline Words pairAt(const std::uint8_t* pixel) {
    std::uint64_t both;
    if constexpr (channels == 4) {
        std::memcpy(&both, pixel, 8);
    } else {
        std::uint32_t left, right;
        std::memcpy(&left, pixel, 4);
        std::memcpy(&right, pixel + channels, 4);
        both = std::uint64_t{right} << 32 | left;
    }
    return __builtin_convertvector(std::bit_cast<Bytes>(both), Words);
}

// The weights of the four pixels around a place in sixteenths of a pixel, in 1/256.
struct Weights {
    Words upper, lower;
};

const Weights* weightTable() {
    static const auto table = [] {
        std::array<Weights, 256> all;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x)
                for (int i = 0; i < 8; ++i) {
                    const int across = i < 4 ? 16 - x : x;
                    Weights& weights = all[static_cast<std::size_t>(y * 16 + x)];
                    weights.upper[i] = static_cast<std::uint16_t>(across * (16 - y));
                    weights.lower[i] = static_cast<std::uint16_t>(across * y);
                }
        return all;
    }();
    return table.data();
}

// A walk over the source in 1/65536 of a pixel.
struct Walk {
    std::int64_t x, y, stepX, stepY;

    Walk after(int steps) const { return {x + steps * stepX, y + steps * stepY, stepX, stepY}; }
    void step() {
        x += stepX;
        y += stepY;
    }
};

// The steps from begin to end at which `start + k * step` lies between 0 and `limit`, both
// included.
void keepInside(std::int64_t start, std::int64_t step, std::int64_t limit, int& begin, int& end) {
    if (step < 0) return keepInside(limit - start, -step, limit, begin, end);
    const auto stepsTo = [&](std::int64_t way) { // until `way` is reached
        if (way <= 0) return std::int64_t{0};
        return step == 0 ? std::int64_t{end} : (way + step - 1) / step;
    };
    begin = static_cast<int>(std::max<std::int64_t>(begin, stepsTo(-start)));
    end = static_cast<int>(std::min<std::int64_t>(end, stepsTo(limit - start + 1)));
    begin = std::min(begin, end);
}

// Linear between the four pixels around a place, times 256: in the sum of the words 0..3 and 4..7.
template <int channels>
inline Words sampleInside(const ConstView& view, const Weights* table, std::int64_t x,
                          std::int64_t y) {
    const std::uint8_t* upper =
        view.data + static_cast<std::ptrdiff_t>(view.stride) * (y >> 16) + (x >> 16) * channels;
    const Weights& weights = table[(y >> 8 & 0xf0) | (x >> 12 & 15)];
    return pairAt<channels>(upper) * weights.upper +
           pairAt<channels>(upper + view.stride) * weights.lower;
}

// The same for places anywhere. The last row has none below it; a pixel beyond the row counts
// nothing.
template <int channels>
Words sampleAnywhere(const ConstView& view, const Weights* table, const Walk& walk) {
    const auto x = std::clamp<std::int64_t>(walk.x, 0, std::int64_t{view.width - 1} << 16);
    const auto y = std::clamp<std::int64_t>(walk.y, 0, std::int64_t{view.height - 1} << 16);
    if (y >> 16 < view.height - 1) return sampleInside<channels>(view, table, x, y);
    const std::uint8_t* last = view.row(view.height - 1) + (x >> 16) * channels;
    return pairAt<channels>(last) * table[x >> 12 & 15].upper;
}

// Every pixel as the mean of itself and of the two that come to its place by the moves.
template <int channels>
inline void putMean(const Words& forth, const Words& back, const std::uint8_t* own,
                    std::uint8_t* out) {
    const Words sides = forth / 4 + back / 4;
    const Words right = __builtin_shufflevector(sides, sides, 4, 5, 6, 7, 4, 5, 6, 7);
    const Words thrice = (sides + right + pairAt<channels>(own) * 64 + 32) / 64;
    // Times 85.33 / 256: a third.
    const Words mean = (thrice * 85 + thrice / 4 + thrice / 16 + thrice / 64 + 128) / 256;
    const auto bytes = std::bit_cast<std::uint64_t>(__builtin_convertvector(mean, Bytes));
    std::memcpy(out, &bytes, channels);
}

template <int channels>
void meanOfThree(const ConstView& view, int y, const Walk& forth, const Walk& back,
                 std::uint8_t* out) {
    const Weights* table = weightTable();
    const std::uint8_t* own = view.row(y);
    const std::int64_t limitX = (std::int64_t{view.width - 1} << 16) - 1;
    const std::int64_t limitY = (std::int64_t{view.height - 1} << 16) - 1;
    int begin = 0, end = view.width;
    for (const Walk& walk : {forth, back}) {
        keepInside(walk.x, walk.stepX, limitX, begin, end);
        keepInside(walk.y, walk.stepY, limitY, begin, end);
    }
    const auto anywhere = [&](int x) {
        putMean<channels>(sampleAnywhere<channels>(view, table, forth.after(x)),
                          sampleAnywhere<channels>(view, table, back.after(x)), own + x * channels,
                          out + x * channels);
    };
    for (int x = 0; x < begin; ++x)
        anywhere(x);
    Walk a = forth.after(begin), b = back.after(begin);
    for (int x = begin; x < end; ++x, a.step(), b.step())
        putMean<channels>(sampleInside<channels>(view, table, a.x, a.y),
                          sampleInside<channels>(view, table, b.x, b.y), own + x * channels,
                          out + x * channels);
    for (int x = end; x < view.width; ++x)
        anywhere(x);
}

Walk walkAlong(const ConstView& view, int y, const Move& move) {
    const double middleX = (view.width - 1) / 2.0, middleY = (view.height - 1) / 2.0;
    const double fromX = -middleX, fromY = y - middleY;
    const auto fixed = [](double v) { return static_cast<std::int64_t>(std::llround(v * 65536)); };
    return {fixed(middleX + move.along * fromX - move.across * fromY + 1.0 / 32),
            fixed(middleY + move.across * fromX + move.along * fromY + 1.0 / 32), fixed(move.along),
            fixed(move.across)};
}

Raster averaged(const Raster& source, const Move& forth, const Move& back, Task& task) {
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    constexpr decltype(&meanOfThree<1>) kernels[] = {meanOfThree<1>, meanOfThree<2>, meanOfThree<3>,
                                                     meanOfThree<4>};
    const auto kernel = kernels[bytesPerPixel(from.type) - 1];
    parallelRows(from.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            kernel(from, y, walkAlong(from, y, forth), walkAlong(from, y, back), to.row(y));
    });
    return result;
}

// Means of three, of which each next one is three times as wide, are the mean of 3^n places. At the
// corners, which go farthest, the places lie at most two pixels apart, which is what linear
// samples cover.
template <class MoveBy>
Raster swept(Raster result, double way, Task& task, const MoveBy& moveBy) {
    const double corner = std::hypot(result.width(), result.height()) / 2;
    int passes = 0;
    double places = 1;
    for (; passes < 9 && places * 2 < std::abs(way) * corner; ++passes)
        places *= 3;
    double step = way / places;
    for (int pass = 0; pass < passes; ++pass, step *= 3) {
        const Task::Stage stage(task, static_cast<double>(pass) / passes,
                                static_cast<double>(pass + 1) / passes);
        result = averaged(result, moveBy(step), moveBy(-step), task);
    }
    return result;
}

} // namespace

Raster spun(Raster source, double angle, Task& task) {
    return swept(std::move(source), angle, task, [](double by) {
        return Move{std::cos(by), std::sin(by)};
    });
}

Raster zoomed(Raster source, double growth, Task& task) {
    // Equal steps of the logarithm, so that the passes add up.
    return swept(std::move(source), std::log1p(growth), task, [](double by) {
        return Move{std::exp(by), 0};
    });
}

} // namespace kvn::imaging
