// The kernels that rebuild a picture between its pixels, and their weights for one axis.
#pragma once

#include <vector>

namespace kvn::imaging {

inline constexpr int resizeMethodCount = 22;

// How an axis is resampled.
enum class Resampling {
    Filter, // by a kernel
    Pick,   // the nearest pixel
};

struct Reconstruction {
    Resampling kind = Resampling::Filter;
    // Half the kernel's width, in source pixels when enlarging, in result pixels when reducing.
    double radius = 0;
    double (*kernel)(double x) = nullptr;
    // Where set, gives the weight in place of the kernel: x is the distance in source pixels,
    // `scale` the source pixels per result pixel.
    double (*scaled)(double x, double scale) = nullptr;
};

// The kernel for an axis that is reduced (`scale` above 1) or enlarged. `method` is from 0 to 21.
Reconstruction reconstructionFor(int method, double scale);

// The weights of an axis: result i is the sum of weight[i * width + k] * source[first[i] + k].
// Every sum of weights is 1. first[i] >= 0 and first[i] + width <= the axis' length, except for
// axes shorter than `width`, where first is 0 and the weights beyond the end are 0.
struct AxisWeights {
    int width = 0;
    std::vector<int> first;
    std::vector<float> weight;
};

// Resamples `from` pixels to `to` pixels; the centres are aligned, so that the whole length maps
// to the whole length. Beyond the ends the last pixel repeats. `padding` makes the width a
// multiple of it.
AxisWeights axisWeights(const Reconstruction& reconstruction, int from, int to, int padding = 1);

} // namespace kvn::imaging
