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

// One row of sums plus the bias, in memory of its own.
struct Correlation {
    std::vector<float> coefficients;
    float bias;
    std::vector<float> sums{};

    const float* row(const std::uint8_t* const* rows, const ConstView& view) {
        sums.resize(rowBytes(view.type, view.width));
        correlate(rows, coefficients.data(), static_cast<int>(coefficients.size() / 3),
                  bytesPerPixel(view.type), sums.data(), sums.size());
        return sums.data();
    }
};

Correlation correlationOf(const Arguments& arguments) {
    const double bias =
        std::clamp(static_cast<double>(arguments.integer(2)), -largestBias, largestBias);
    return {dividedBy(arguments.matrix(0), arguments.number(1)), static_cast<float>(bias)};
}

Raster correlated(const Raster& source, const Matrix& matrix, Correlation correlation, Task& task) {
    return throughWindow(
        source, {matrix.rows / 2, matrix.rows - 1 - matrix.rows / 2, 1}, true, task,
        [work = std::move(correlation)](const std::uint8_t* const* rows, std::uint8_t* out,
                                        const ConstView& view) mutable {
            const float* sums = work.row(rows, view);
            addBias(sums, work.bias, out, work.sums.size());
        });
}

bool measuresDifferences(const Matrix& matrix) {
    double sum = 0, size = 0;
    for (const double value : matrix.values) {
        sum += value;
        size += std::abs(value);
    }
    return size > 0 && std::abs(sum) <= size * 1e-9;
}

Raster applyFilter(const Raster& source, const Arguments& arguments, Task& task) {
    const Matrix& matrix = arguments.matrix(0);
    checkSize("Effects.ApplyFilter", matrix, mostRows);
    Correlation correlation = correlationOf(arguments);
    const auto middle = static_cast<std::size_t>(matrix.rows / 2) * 3 + 1;
    if (measuresDifferences(matrix)) correlation.coefficients[middle] += 1;
    return correlated(source, matrix, std::move(correlation), task);
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

std::uint8_t level(float value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0.0f, 255.0f) + 0.5f);
}

Raster applyMatrix(const Raster& picture, const Arguments& arguments, Task& task) {
    checkSize("Effects.ApplyMatrix", arguments.matrix(0), 3);
    const bool difference = arguments.boolean(3), opposed = arguments.boolean(4);
    if (!difference && !opposed)
        return correlated(picture, arguments.matrix(0), correlationOf(arguments), task);
    const Combination plain = difference ? Combination{0, 1, -1} : Combination{0, 0, 1};
    const Combination green = difference ? Combination{0, 1, 1} : Combination{255, 0, -1};
    const Combination channels[] = {plain, opposed ? green : plain, plain, plain};
    return throughWindow(
        opposed ? promotedToColor(picture, task) : picture, {1, 1, 1}, true, task,
        [&channels, work = correlationOf(arguments)](
            const std::uint8_t* const* rows, std::uint8_t* out, const ConstView& view) mutable {
            const float* sums = work.row(rows, view);
            const auto count = static_cast<std::size_t>(bytesPerPixel(view.type));
            const std::uint8_t* own = rows[1] + count;
            for (std::size_t i = 0; i < work.sums.size(); i += count)
                for (std::size_t c = 0; c < count; ++c) {
                    const Combination& k = channels[c];
                    out[i + c] = level(k.base + k.own * static_cast<float>(own[i + c]) +
                                       k.factor * (sums[i + c] + work.bias));
                }
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
    .run = applyFilter,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Weighs the pixels around every pixel by a table.",
};

const Operation applyMatrixOperation = {
    .name = "Effects.ApplyMatrix",
    .undoName = "Custom Matrix",
    .arguments = applyMatrixArguments,
    .run = applyMatrix,
    .border = 1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Weighs the nine pixels around every pixel, on their own or against the picture.",
};

const Operation edgeDetectionOperation = {
    .name = "Effects.EdgeDetection",
    .undoName = "Edge Detection",
    .arguments = edgeDetectionArguments,
    .run = edgeDetection,
    .border = 1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Bright edges on black.",
};

} // namespace kvn::imaging
