#include "imaging/operations/resample/reconstruction.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kvn::imaging {
namespace {

double sinc(double x) {
    const double t = std::numbers::pi * x;
    return std::abs(t) < 1e-9 ? 1 : std::sin(t) / t;
}

// A centre on the border of two result pixels belongs to the second, whatever the last bit says.
constexpr double borderSlack = 1e-9;
constexpr double boxRadius = 0.5 + borderSlack;
double box(double x) {
    return x >= -0.5 - borderSlack && x < 0.5 - borderSlack ? 1 : 0;
}

double triangle(double x) {
    return std::max(0.0, 1 - std::abs(x));
}

// The cubics of D. Mitchell and A. Netravali, Reconstruction Filters in Computer Graphics (1988).
double cubic(double x, double b, double c) {
    x = std::abs(x);
    if (x < 1)
        return ((12 - 9 * b - 6 * c) * x * x * x + (-18 + 12 * b + 6 * c) * x * x + (6 - 2 * b)) /
               6;
    if (x < 2)
        return ((-b - 6 * c) * x * x * x + (6 * b + 30 * c) * x * x + (-12 * b - 48 * c) * x +
                (8 * b + 24 * c)) /
               6;
    return 0;
}

double biCubic(double x) {
    return cubic(x, 0, 0.75);
}
double catmullRom(double x) {
    return cubic(x, 0, 0.5);
}
double sharpCubic(double x) {
    return cubic(x, 0, 1);
}
double mitchell(double x) {
    return cubic(x, 1.0 / 3, 1.0 / 3);
}
double bSpline(double x) {
    return cubic(x, 1, 0);
}
double hermite(double x) {
    return std::abs(x) < 1 ? cubic(x, 0, 0) : 0;
}

// The six-point kernel of fourth order of R. Keys, Cubic Convolution Interpolation (1981).
double keysSixPoint(double x) {
    x = std::abs(x);
    if (x < 1) return (4.0 / 3 * x - 7.0 / 3) * x * x + 1;
    if (x < 2) return ((-7.0 / 12 * x + 3) * x - 59.0 / 12) * x + 15.0 / 6;
    if (x < 3) return ((1.0 / 12 * x - 2.0 / 3) * x + 21.0 / 12) * x - 3.0 / 2;
    return 0;
}

// The quadratic B-spline.
double bell(double x) {
    x = std::abs(x);
    if (x < 0.5) return 0.75 - x * x;
    return x < 1.5 ? 0.5 * (x - 1.5) * (x - 1.5) : 0;
}

// Standard deviation half a pixel.
double gaussian(double x) {
    return std::exp(-2 * x * x);
}

template <int Lobes>
double lanczos(double x) {
    return std::abs(x) < Lobes ? sinc(x) * sinc(x / Lobes) : 0;
}
double hanning(double x) {
    return std::abs(x) < 3 ? sinc(x) * (0.5 + 0.5 * std::cos(std::numbers::pi * x / 3)) : 0;
}
double hamming(double x) {
    return std::abs(x) < 3 ? sinc(x) * (0.54 + 0.46 * std::cos(std::numbers::pi * x / 3)) : 0;
}

// The part of a source pixel that lies under the result pixel.
double coverage(double x, double scale) {
    const double half = scale / 2;
    return std::max(0.0, std::min(x + 0.5, half) - std::max(x - 0.5, -half));
}

// The integral of the triangle from minus infinity.
double triangleIntegral(double x) {
    if (x <= -1) return 0;
    if (x >= 1) return 1;
    return x < 0 ? 0.5 * (x + 1) * (x + 1) : 1 - 0.5 * (1 - x) * (1 - x);
}

// The straight lines between the pixels, averaged over the result pixel.
double bilinearMean(double x, double scale) {
    return triangleIntegral(x + scale / 2) - triangleIntegral(x - scale / 2);
}

constexpr Reconstruction triangleFilter = {.radius = 1, .kernel = triangle};
// By the row of the method list.
constexpr Reconstruction filters[resizeMethodCount] = {
    {.radius = 1, .kernel = triangle},     // Bi-Linear, enlarging
    {.radius = 2, .kernel = biCubic},      // Bi-Cubic
    {.kind = Resampling::Pick},            // Simple
    {.radius = 2, .kernel = catmullRom},   // Decimate, enlarging
    {.radius = 2, .kernel = lanczos<2>},   // Default
    {.radius = boxRadius, .kernel = box},  // Box
    triangleFilter,                        // Triangle
    {.radius = 3, .kernel = hamming},      // Hamming
    triangleFilter,                        // Triangle
    {.radius = 2, .kernel = gaussian},     // Gaussian
    {.radius = 1.5, .kernel = bell},       // Bell
    {.radius = 2, .kernel = bSpline},      // B-Spline
    {.radius = 2, .kernel = sharpCubic},   // Cubic1
    {.radius = 3, .kernel = keysSixPoint}, // Cubic2
    triangleFilter,                        // Triangle
    {.radius = 3, .kernel = lanczos<3>},   // Lanczos3
    {.radius = 2, .kernel = mitchell},     // Mitchell
    {.radius = 4, .kernel = sinc},         // Sinc
    {.radius = 1, .kernel = hermite},      // Hermite
    triangleFilter,                        // Triangle
    {.radius = 3, .kernel = hanning},      // Hanning
    {.radius = 2, .kernel = catmullRom},   // Catrom
};
constexpr int biLinearMethod = 0, decimateMethod = 3;

// The weights of one result pixel, beginning with source pixel `begin`, not yet divided by their
// sum.
std::vector<double> rawWeights(const Reconstruction& by, double centre, double scale, int begin,
                               int end) {
    const double stretch = std::max(scale, 1.0);
    std::vector<double> weights;
    for (int j = begin; j < end; ++j) {
        const double x = j - centre;
        if (by.scaled)
            weights.push_back(by.scaled(x, scale));
        else if (std::abs(x) <= by.radius * stretch)
            weights.push_back(by.kernel(x / stretch));
        else
            weights.push_back(0);
    }
    return weights;
}

// Weights of pixels beyond the ends go to the end pixels.
void store(const std::vector<double>& raw, int begin, int from, int first, int width,
           float* weight) {
    double sum = 0;
    for (const double w : raw)
        sum += w;
    std::vector<double> folded(static_cast<std::size_t>(width));
    for (std::size_t k = 0; k < raw.size(); ++k) {
        const int at = std::clamp(begin + static_cast<int>(k), 0, from - 1);
        folded[static_cast<std::size_t>(at - first)] += raw[k];
    }
    for (std::size_t k = 0; k < folded.size(); ++k)
        weight[k] = static_cast<float>(folded[k] / sum);
}

} // namespace

Reconstruction reconstructionFor(int method, double scale) {
    if (scale > 1 && method == decimateMethod) return {.radius = 0.5, .scaled = coverage};
    if (scale > 1 && method == biLinearMethod) return {.radius = 0.5, .scaled = bilinearMean};
    return filters[method];
}

AxisWeights axisWeights(const Reconstruction& by, int from, int to, int padding) {
    const double scale = static_cast<double>(from) / to;
    // Scaled weights reach over the result pixel by their own foot of at most a pixel.
    const double reach = by.radius * std::max(scale, 1.0) + (by.scaled ? 1 : 0);
    AxisWeights axis;
    const int taps = static_cast<int>(std::floor(2 * reach)) + 1;
    axis.width = (std::min(taps, from) + padding - 1) / padding * padding;
    axis.first.resize(static_cast<std::size_t>(to));
    axis.weight.resize(static_cast<std::size_t>(to) * static_cast<std::size_t>(axis.width));
    for (int i = 0; i < to; ++i) {
        const double centre = (i + 0.5) * scale - 0.5;
        const int begin = static_cast<int>(std::ceil(centre - reach));
        const int end = static_cast<int>(std::floor(centre + reach)) + 1;
        const int first = std::clamp(begin, 0, std::max(0, from - axis.width));
        axis.first[static_cast<std::size_t>(i)] = first;
        store(rawWeights(by, centre, scale, begin, end), begin, from, first, axis.width,
              &axis.weight[static_cast<std::size_t>(i) * static_cast<std::size_t>(axis.width)]);
    }
    return axis;
}

} // namespace kvn::imaging
