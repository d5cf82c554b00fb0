#include "imaging/operations/filters/convolve.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "basic/error.h"
#include "imaging/operations/filters/convolve_kernels.h"
#include "imaging/operations/filters/gauss_kernels.h"
#include "imaging/operations/filters/window_rows.h"
#include "imaging/operations/support/hidden_colors.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

constexpr int mostRows = 99;

void checkSize(const char* operation, const Matrix& matrix, int rows) {
    if (matrix.columns == 3 && matrix.rows <= rows) return;
    const std::string name = operation;
    throw RuntimeError(errors::invalidCall, name + ": the table must be 3 numbers wide", name);
}

// The coefficients divided once and for all; the bias comes to the sums later.
std::vector<float> dividedBy(const Matrix& matrix, double divisor) {
    std::vector<float> result;
    for (const double value : matrix.values)
        result.push_back(
            static_cast<float>(std::clamp(value / (divisor == 0 ? 1 : divisor), -1e9, 1e9)));
    return result;
}

constexpr double largestBias = 100000;

constexpr Argument applyFilterArguments[] = {
    {"coefficients", ArgumentKind::Matrix, 0, 0, "", "3 wide, 1 to 99 high"},
    {"divisor", ArgumentKind::Number, -1000, 1000, "", "of the sum; 0 counts as 1"},
    {"bias", ArgumentKind::Integer, -255, 255, "", "added to the quotient"},
};

// Entries of a row that are finished before the next ones are begun: they stay in the fastest
// cache. A multiple of every number of channels.
constexpr std::size_t piece = 960;

// The coefficients times the smallest power of two that makes them whole; empty if there is none,
// or if their sums would not fit into 16 bits.
struct WholeTable {
    std::vector<std::int16_t> coefficients{};
    double scale = 1;

    explicit WholeTable(const Matrix& matrix) {
        for (; scale <= 64; scale *= 2) {
            double size = 0;
            bool whole = true;
            for (const double value : matrix.values) {
                size += std::abs(value * scale);
                whole = whole && value * scale == std::floor(value * scale);
            }
            if (size * 255 > 32767) return;
            if (!whole) continue;
            for (const double value : matrix.values)
                coefficients.push_back(static_cast<std::int16_t>(value * scale));
            return;
        }
    }
};

KVN_CLONES void addWholeRow(const std::uint8_t* __restrict row, const std::int16_t* c,
                            std::size_t step, std::int16_t* __restrict sums, std::size_t count) {
    const std::int16_t left = c[0], middle = c[1], right = c[2];
    for (std::size_t i = 0; i < count; ++i)
        sums[i] = static_cast<std::int16_t>(sums[i] + left * row[i] + middle * row[i + step] +
                                            right * row[i + 2 * step]);
}

KVN_CLONES void toReals(const std::int16_t* __restrict sums, float unit, float* __restrict out,
                        std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        out[i] = static_cast<float>(sums[i]) * unit;
}

struct Correlation {
    std::vector<float> coefficients;
    float bias;
    WholeTable whole; // the same in whole numbers, which is quicker
    float unit;       // what 1 of their sums is worth
    std::vector<const std::uint8_t*> shifted{};

    void sum(int step, float* sums, std::size_t count) const {
        const std::size_t height = shifted.size();
        if (whole.coefficients.empty())
            return correlate(shifted.data(), coefficients.data(), static_cast<int>(height), step,
                             sums, count);
        std::int16_t wholeSums[piece];
        std::fill_n(wholeSums, count, std::int16_t{0});
        for (std::size_t k = 0; k < height; ++k) {
            const std::int16_t* c = whole.coefficients.data() + 3 * k;
            if (c[0] != 0 || c[1] != 0 || c[2] != 0)
                addWholeRow(shifted[k], c, static_cast<std::size_t>(step), wholeSums, count);
        }
        toReals(wholeSums, unit, sums, count);
    }

    // Calls `finish(begin, sums, count)` for the sums of a row, piece by piece.
    template <class Finish>
    void row(const std::uint8_t* const* rows, const ConstView& view, const Finish& finish) {
        const std::size_t height = coefficients.size() / 3, all = rowBytes(view.type, view.width);
        float sums[piece];
        shifted.resize(height);
        for (std::size_t begin = 0; begin < all; begin += piece) {
            const std::size_t count = std::min(piece, all - begin);
            for (std::size_t k = 0; k < height; ++k)
                shifted[k] = rows[k] + begin;
            sum(bytesPerPixel(view.type), sums, count);
            finish(begin, sums, count);
        }
    }
};

Correlation correlationOf(const Arguments& arguments) {
    const double bias =
        std::clamp(static_cast<double>(arguments.integer(2)), -largestBias, largestBias);
    const WholeTable whole(arguments.matrix(0));
    const double divisor = arguments.number(1) == 0 ? 1 : arguments.number(1);
    return {dividedBy(arguments.matrix(0), divisor), static_cast<float>(bias), whole,
            static_cast<float>(std::clamp(1 / (divisor * whole.scale), -1e9, 1e9))};
}

Raster correlated(const Raster& source, const Matrix& matrix, Correlation correlation, Task& task) {
    return throughWindow(
        source, {matrix.rows / 2, matrix.rows - 1 - matrix.rows / 2, 1}, true, task,
        [work = std::move(correlation)](const std::uint8_t* const* rows, std::uint8_t* out,
                                        const ConstView& view) mutable {
            work.row(rows, view, [&](std::size_t begin, const float* sums, std::size_t count) {
                addBias(sums, work.bias, out + begin, count);
            });
        });
}

// Half the size of the coefficients of a table whose sum is 0; 0 for any other table. Such a table
// measures differences: its sum over this number is how far the values on its one side lie above
// those on its other one.
double weightOfSides(const Matrix& matrix) {
    double sum = 0, size = 0;
    for (const double value : matrix.values) {
        sum += value;
        size += std::abs(value);
    }
    return std::abs(sum) <= size * 1e-9 ? size / 2 : 0;
}

constexpr float reliefGain = 8;
constexpr float grain = 3;           // levels; smaller differences are noise
constexpr float steepestRelief = 70; // levels that a relief never adds

// out[i] = pixels[i] + the relief of sums[i]: smaller by the grain, then bent towards the limit.
KVN_CLONES void addRelief(const float* __restrict sums, float flat,
                          const std::uint8_t* __restrict pixels, std::uint8_t* __restrict out,
                          std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float size = sums[i] < 0 ? -sums[i] : sums[i];
        float over = (size - flat) * reliefGain;
        over = over > 0 ? over : 0;
        const float bent = over / (1 + over * (1 / steepestRelief));
        const float value = static_cast<float>(pixels[i]) + (sums[i] < 0 ? -bent : bent);
        const float low = value > 0 ? value : 0;
        out[i] = static_cast<std::uint8_t>(static_cast<int>((low < 255 ? low : 255) + 0.5f));
    }
}

Raster applyFilter(const Raster& source, const Arguments& arguments, Task& task) {
    const Matrix& matrix = arguments.matrix(0);
    checkSize("Effects.ApplyFilter", matrix, mostRows);
    Correlation correlation = correlationOf(arguments);
    const double weight = weightOfSides(matrix), divisor = arguments.number(1);
    if (weight == 0 || arguments.integer(2) != 0)
        return correlated(source, matrix, std::move(correlation), task);
    const auto flat =
        static_cast<float>(std::min(1e9, grain * weight / std::abs(divisor == 0 ? 1 : divisor)));
    const auto middle = static_cast<std::size_t>(matrix.rows / 2);
    return throughWindow(
        source, {matrix.rows / 2, matrix.rows - 1 - matrix.rows / 2, 1}, true, task,
        [=, work = std::move(correlation)](const std::uint8_t* const* rows, std::uint8_t* out,
                                           const ConstView& view) mutable {
            const std::uint8_t* own = rows[middle] + bytesPerPixel(view.type);
            work.row(rows, view, [&](std::size_t begin, const float* sums, std::size_t count) {
                addRelief(sums, flat, own + begin, out + begin, count);
            });
        });
}

constexpr Argument applyMatrixArguments[] = {
    {"coefficients", ArgumentKind::Matrix, 0, 0, "", "3 wide, 3 high"},
    {"divisor", ArgumentKind::Number, -1000, 1000, "", "of the sum; 0 counts as 1"},
    {"bias", ArgumentKind::Integer, -255, 255, "", "added to the quotient"},
    {"difference", ArgumentKind::Boolean, 0, 0, "", "takes the result from the picture"},
    {"opposed green", ArgumentKind::Boolean, 0, 0, "", "turns the sign for green"},
};

// What becomes of the filtered value m of a channel: base + own * v + factor * m.
struct Combination {
    float base, own, factor;
};

// The same for every entry of a piece.
struct Combinations {
    std::vector<float> base, own, factor;

    Combinations(const Combination* channels, std::size_t count)
        : base(piece), own(piece), factor(piece) {
        for (std::size_t i = 0; i < piece; ++i) {
            const Combination& k = channels[i % count];
            base[i] = k.base;
            own[i] = k.own;
            factor[i] = k.factor;
        }
    }
};

KVN_CLONES void combine(const float* __restrict base, const float* __restrict own,
                        const float* __restrict factor, const float* __restrict sums, float bias,
                        const std::uint8_t* __restrict pixels, std::uint8_t* __restrict out,
                        std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float value =
            base[i] + own[i] * static_cast<float>(pixels[i]) + factor[i] * (sums[i] + bias);
        const float low = value > 0 ? value : 0;
        out[i] = static_cast<std::uint8_t>(static_cast<int>((low < 255 ? low : 255) + 0.5f));
    }
}

constexpr float lineGain = 24;   // faint lines
constexpr float lineLimit = 340; // bright ones are bent towards it

// out[i] = bias + the brightness of a line that is sums[i] strong.
KVN_CLONES void drawLines(const float* __restrict sums, float bias, std::uint8_t* __restrict out,
                          std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float line = (sums[i] < 0 ? -sums[i] : sums[i]) * lineGain;
        const float value = line / (1 + line * (1 / lineLimit)) + bias;
        const float low = value > 0 ? value : 0;
        out[i] = static_cast<std::uint8_t>(static_cast<int>((low < 255 ? low : 255) + 0.5f));
    }
}

Raster lines(const Raster& picture, const Arguments& arguments, Task& task) {
    return throughWindow(
        picture, {1, 1, 1}, true, task,
        [work = correlationOf(arguments)](const std::uint8_t* const* rows, std::uint8_t* out,
                                          const ConstView& view) mutable {
            work.row(rows, view, [&](std::size_t begin, const float* sums, std::size_t count) {
                drawLines(sums, work.bias, out + begin, count);
            });
        });
}

Raster applyMatrix(const Raster& picture, const Arguments& arguments, Task& task) {
    checkSize("Effects.ApplyMatrix", arguments.matrix(0), 3);
    const bool difference = arguments.boolean(3), opposed = arguments.boolean(4);
    if (!difference && !opposed) {
        if (weightOfSides(arguments.matrix(0)) > 0) return lines(picture, arguments, task);
        return correlated(picture, arguments.matrix(0), correlationOf(arguments), task);
    }
    const Combination plain = difference ? Combination{0, 1, -1} : Combination{0, 0, 1};
    const Combination green = difference ? Combination{0, 1, 1} : Combination{255, 0, -1};
    const Combination channels[] = {plain, opposed ? green : plain, plain, plain};
    const Raster source = opposed ? promotedToColor(picture, task) : promoted(picture, task);
    const Combinations parts(channels, static_cast<std::size_t>(bytesPerPixel(source.type())));
    return throughWindow(
        source, {1, 1, 1}, true, task,
        [&parts, work = correlationOf(arguments)](
            const std::uint8_t* const* rows, std::uint8_t* out, const ConstView& view) mutable {
            const std::uint8_t* own = rows[1] + bytesPerPixel(view.type);
            work.row(rows, view, [&](std::size_t begin, const float* sums, std::size_t count) {
                combine(parts.base.data(), parts.own.data(), parts.factor.data(), sums, work.bias,
                        own + begin, out + begin, count);
            });
        });
}

constexpr Argument edgeDetectionArguments[] = {
    {"amount", ArgumentKind::Integer, 0, 100, "%", "factor of the gradient; clamped"},
};

Raster edgeDetection(const Raster& source, const Arguments& arguments, Task& task) {
    const float gain = static_cast<float>(std::clamp(arguments.integer(0), 0, 100)) / 100;
    if (gain == 0) return source;
    return throughWindow(
        source, {1, 1, 1}, true, task,
        [gain](const std::uint8_t* const* rows, std::uint8_t* out, const ConstView& view) {
            sobelLength(rows, bytesPerPixel(view.type), gain, out, rowBytes(view.type, view.width));
        });
}

} // namespace

const Operation applyFilterOperation = {
    .name = "Effects.ApplyFilter",
    .undoName = "Custom Filter",
    .arguments = applyFilterArguments,
    .run = overVisibleColors<applyFilter>,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Weighs the pixels around every pixel by a table.",
};

const Operation applyMatrixOperation = {
    .name = "Effects.ApplyMatrix",
    .undoName = "Custom Matrix",
    .arguments = applyMatrixArguments,
    .run = overVisibleColors<applyMatrix>,
    .border = 1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Weighs the nine pixels around every pixel, on their own or against the picture.",
};

const Operation edgeDetectionOperation = {
    .name = "Effects.EdgeDetection",
    .undoName = "Edge Detection",
    .arguments = edgeDetectionArguments,
    .run = overVisibleColors<edgeDetection>,
    .border = 1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Bright edges on black.",
};

} // namespace kvn::imaging
